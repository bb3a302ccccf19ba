// The control protocol of GigE Vision from another program's socket: registers read and written.
#ifndef ORX_TESTS_GIGE_CONTROL_SOCKET_H
#define ORX_TESTS_GIGE_CONTROL_SOCKET_H

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <string>

namespace gige {

class ControlSocket {
  public:
    static constexpr std::uint32_t kControlPrivilege = 0x0A00;
    static constexpr std::uint32_t kHeartbeatTimeout = 0x0938;  // milliseconds

    explicit ControlSocket(const std::string& address) : socket_(::socket(AF_INET, SOCK_DGRAM, 0)) {
        const timeval longest{2, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof(longest));
        camera_.sin_family = AF_INET;
        camera_.sin_port = htons(3956);
        inet_pton(AF_INET, address.c_str(), &camera_.sin_addr);
    }
    ~ControlSocket() { ::close(socket_); }
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    // The camera is free again when its heartbeat has not come for 3 s, unless that time is set.
    bool takeControl() const { return write(kControlPrivilege, 2); }

    bool write(std::uint32_t at, std::uint32_t value) const { return ask(0x82, {at, value}, 8) >= 0; }

    // -1 where no answer comes.
    std::int64_t read(std::uint32_t at) const { return ask(0x80, {at, 0}, 4); }

  private:
    // The last four bytes of the answer.
    std::int64_t ask(std::uint8_t command, const std::array<std::uint32_t, 2>& words,
                     std::uint8_t size) const {
        const std::uint8_t request = ++requests_;
        std::array<std::uint8_t, 16> sent = {0x42, 0x01, 0x00, command, 0x00, size, 0x00, request};
        for (std::size_t i = 0; i < 8; ++i)
            sent[8 + i] = static_cast<std::uint8_t>(words[i / 4] >> (24 - 8 * (i % 4)));
        sendto(socket_, sent.data(), 8U + size, 0, reinterpret_cast<const sockaddr*>(&camera_),
               sizeof(camera_));
        std::array<std::uint8_t, 16> answer{};
        do {
            if (recv(socket_, answer.data(), answer.size(), 0) < 12) return -1;
        } while (answer[7] != request);
        if (answer[0] != 0 || answer[1] != 0) return -1;
        std::int64_t value = 0;
        for (std::size_t i = 8; i < 12; ++i) value = 256 * value + answer[i];
        return value;
    }

    mutable std::uint8_t requests_ = 0;
    const int socket_;
    sockaddr_in camera_{};
};

}  // namespace gige

#endif
