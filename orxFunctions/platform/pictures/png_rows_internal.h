// The filters of PNG's rows (ISO/IEC 15948, 9), undone.
#ifndef ORXFUNCTIONS_PLATFORM_PICTURES_PNG_ROWS_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_PICTURES_PNG_ROWS_INTERNAL_H

#include <cstddef>

namespace orx::platform {

// Undoes filter 0 to 4 in `row`; `above` is the row above without its filter, zeros for the first one.
// `bytes` of a row, a multiple of `pixel`, which is 1, 2 or 3 bytes. False for other filters.
bool unfilterPngRow(int filter, unsigned char* row, const unsigned char* above, std::size_t bytes,
                    std::size_t pixel);

}  // namespace orx::platform

#endif
