#include "drivers/TQVisionDriver/network.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#if defined(__linux__)
#include <linux/if_ether.h>
#endif

#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace vision {
namespace {

class Socket {
  public:
    Socket(int family, int type, int protocol) : descriptor_(socket(family, type | SOCK_CLOEXEC, protocol)) {}
    ~Socket() {
        if (isOpen()) close(descriptor_);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    int descriptor() const { return descriptor_; }

  private:
    int descriptor_;
};

int option(int descriptor, int level, int name) {
    int value = 0;
    socklen_t size = sizeof(value);
    return getsockopt(descriptor, level, name, &value, &size) == 0 ? value : 0;
}

bool isUdpSocketAt(int descriptor, std::uint16_t port) {
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    return getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
           address.sin_family == AF_INET && ntohs(address.sin_port) == port &&
           option(descriptor, SOL_SOCKET, SO_TYPE) == SOCK_DGRAM;
}

// -1 when there is none.
int findUdpSocket(std::uint16_t port) {
    std::error_code failed;
    for (std::filesystem::directory_iterator entry("/proc/self/fd", failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const std::string name = entry->path().filename().string();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        if (descriptor >= 0 && isUdpSocketAt(descriptor, port)) return descriptor;
    }
    return -1;
}

}  // namespace

int pathMtu(const std::string& address) {
#if defined(IP_MTU)
    const Socket probe(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in camera{};
    camera.sin_family = AF_INET;
    camera.sin_port = htons(3956);
    if (!probe.isOpen() || inet_pton(AF_INET, address.c_str(), &camera.sin_addr) != 1) return 0;
    // Connecting a UDP socket sends nothing.
    if (connect(probe.descriptor(), reinterpret_cast<const sockaddr*>(&camera), sizeof(camera)) != 0)
        return 0;
    return std::max(0, option(probe.descriptor(), IPPROTO_IP, IP_MTU));
#else
    return address.empty() ? 0 : 0;
#endif
}

int growReceiveBuffer(std::uint16_t port, int bytes) {
    const int descriptor = findUdpSocket(port);
    if (descriptor < 0) return 0;
    setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof(bytes));
#if defined(__linux__)
    // Linux tells twice what it grants, as room for its own book-keeping.
    return option(descriptor, SOL_SOCKET, SO_RCVBUF) / 2;
#else
    return option(descriptor, SOL_SOCKET, SO_RCVBUF);
#endif
}

bool mayReadRawPackets() {
#if defined(__linux__)
    return Socket(PF_PACKET, SOCK_RAW, htons(ETH_P_ALL)).isOpen();
#else
    return false;
#endif
}

}  // namespace vision
