// Windows gives a stream's socket its buffer only through the socket itself, which Aravis keeps, and reads no
// raw packets: Aravis' own choices hold there.
#include "drivers/TQVisionDriver/network.h"

namespace vision {

int pathMtu(const std::string& /*address*/) { return 0; }

int growReceiveBuffer(std::uint16_t /*port*/, int /*bytes*/) { return 0; }

bool mayReadRawPackets() { return false; }

}  // namespace vision
