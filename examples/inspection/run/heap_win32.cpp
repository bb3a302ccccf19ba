#include "inspection/run/heap.h"

namespace inspection {

// The system's heap keeps what was freed by itself.
void keepFreedMemory() {}

}  // namespace inspection
