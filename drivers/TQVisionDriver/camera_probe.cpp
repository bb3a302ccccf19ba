#include "drivers/TQVisionDriver/camera_probe.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <vector>

#include "drivers/TQVisionDriver/glib_object.h"

namespace vision {
namespace {

// The control protocol of GigE Vision: a header of 8 bytes (key and flags, command, length, request number;
// big endian), answered by status, command + 1, length and the request number.
constexpr guint16 kControlPort = 3956;
constexpr std::size_t kHeaderSize = 8;
constexpr std::uint16_t kDiscover = 0x0002;
constexpr std::uint16_t kReadRegister = 0x0080;
constexpr std::uint32_t kControlPrivilegeRegister = 0x0A00;
constexpr std::uint32_t kControlBits = 0x3;  // exclusive access, control access
constexpr std::size_t kSerialOffset = 0xD8;
constexpr std::size_t kSerialLength = 16;

using Bytes = std::vector<unsigned char>;

void append16(Bytes& bytes, std::uint16_t value) {
    bytes.push_back(static_cast<unsigned char>(value >> 8U));
    bytes.push_back(static_cast<unsigned char>(value & 0xFFU));
}

std::uint32_t read(const Bytes& bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) value = (value << 8U) | bytes[at + i];
    return value;
}

// Never 0, which the protocol forbids.
std::uint16_t nextRequest() {
    static std::atomic<unsigned> count{0};
    return static_cast<std::uint16_t>(count++ % 0xFFFFU + 1U);
}

Bytes command(std::uint16_t code, const Bytes& payload, std::uint16_t request) {
    Bytes bytes = {0x42, 0x01};
    append16(bytes, code);
    append16(bytes, static_cast<std::uint16_t>(payload.size()));
    append16(bytes, request);
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

// Connected, so that only the camera itself is heard.
Ref<GSocket> connectedTo(const std::string& address) {
    const Ref<GInetAddress> host(g_inet_address_new_from_string(address.c_str()));
    if (!host) return nullptr;
    const Ref<GSocketAddress> target(g_inet_socket_address_new(host.get(), kControlPort));
    Ref<GSocket> socket(
        g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_DATAGRAM, G_SOCKET_PROTOCOL_UDP, nullptr));
    if (!socket || g_socket_connect(socket.get(), target.get(), nullptr, nullptr) == FALSE) return nullptr;
    g_socket_set_blocking(socket.get(), FALSE);
    return socket;
}

// The whole answer, with its header; empty when none comes in time.
Bytes answerTo(const std::string& address, std::uint16_t code, const Bytes& payload,
               std::chrono::milliseconds wait) {
    const Ref<GSocket> socket = connectedTo(address);
    const std::uint16_t request = nextRequest();
    const Bytes sent = command(code, payload, request);
    if (!socket || g_socket_send(socket.get(), reinterpret_cast<const gchar*>(sent.data()), sent.size(),
                                 nullptr, nullptr) < 0) {
        return {};
    }
    const auto deadline = std::chrono::steady_clock::now() + wait;
    std::array<gchar, 1024> buffer{};
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 ||
            g_socket_condition_timed_wait(socket.get(), G_IO_IN, left.count(), nullptr, nullptr) == FALSE) {
            return {};
        }
        const gssize size = g_socket_receive(socket.get(), buffer.data(), buffer.size(), nullptr, nullptr);
        // Refused: nobody listens there.
        if (size < 0) return {};
        Bytes answer(buffer.begin(), buffer.begin() + size);
        if (answer.size() >= kHeaderSize && read(answer, 2, 2) == code + 1U &&
            read(answer, 6, 2) == request) {
            return answer;
        }
    }
}

}  // namespace

ProbeAnswer probeCamera(const std::string& address, std::chrono::milliseconds wait) {
    Bytes payload;
    append16(payload, kControlPrivilegeRegister >> 16U);
    append16(payload, kControlPrivilegeRegister & 0xFFFFU);
    const Bytes answer = answerTo(address, kReadRegister, payload, wait);
    if (answer.empty()) return ProbeAnswer::kSilent;
    constexpr std::uint32_t kSuccess = 0;
    const bool tells = read(answer, 0, 2) == kSuccess && answer.size() >= kHeaderSize + 4;
    return tells && (read(answer, kHeaderSize, 4) & kControlBits) == 0 ? ProbeAnswer::kFree
                                                                       : ProbeAnswer::kControlled;
}

std::optional<std::string> serialAt(const std::string& address, std::chrono::milliseconds wait) {
    const Bytes answer = answerTo(address, kDiscover, {}, wait);
    if (answer.size() < kHeaderSize + kSerialOffset + kSerialLength) return std::nullopt;
    const auto begin = answer.begin() + static_cast<std::ptrdiff_t>(kHeaderSize + kSerialOffset);
    const auto end = begin + static_cast<std::ptrdiff_t>(kSerialLength);
    return std::string(begin, std::find(begin, end, static_cast<unsigned char>('\0')));
}

}  // namespace vision
