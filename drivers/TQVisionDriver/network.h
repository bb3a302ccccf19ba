// What the operating system knows about the path to a camera.
#ifndef DRIVERS_TQVISIONDRIVER_NETWORK_H
#define DRIVERS_TQVISIONDRIVER_NETWORK_H

#include <cstdint>
#include <string>

namespace vision {

// The largest packet, in bytes with its headers, that the way to an IPv4 address carries as far as this
// machine knows; 0 when it does not.
int pathMtu(const std::string& address);

// Gives this process' UDP socket with that port a receive buffer of `bytes`. Answers what the system granted,
// 0 when there is no such socket.
int growReceiveBuffer(std::uint16_t port, int bytes);

// Whether this process may read packets below UDP, as Aravis does for speed.
bool mayReadRawPackets();

}  // namespace vision

#endif
