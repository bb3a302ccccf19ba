#include "inspection/run/heap.h"

#include <cstdlib>  // says which C library this is

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace inspection {

void keepFreedMemory() {
#ifdef __GLIBC__
    mallopt(M_MMAP_THRESHOLD, 32 << 20);  // the most that it takes
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
#endif
}

}  // namespace inspection
