// Memory that one picture gave back and the next one asks for again.
#ifndef EXAMPLES_INSPECTION_HEAP_H
#define EXAMPLES_INSPECTION_HEAP_H

namespace inspection {

// Keeps freed memory in the process, up to 256 MiB, for the pictures to come. Otherwise the C library gives
// blocks of the size of a picture back to the system and asks for them anew, page by page: a tenth of the
// processor time of a batch at VGA, and the threads of a process do it one after the other. For the whole
// process.
void keepFreedMemory();

}  // namespace inspection

#endif
