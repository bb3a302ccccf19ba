#include "orxFunctions/platform/pictures/png_rows_internal.h"

#include <cstdlib>

namespace orx::platform {
namespace {

using Byte = unsigned char;

void addAbove(Byte* row, const Byte* above, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) row[i] = static_cast<Byte>(row[i] + above[i]);
}

template <std::size_t Pixel>
void addLeft(Byte* row, std::size_t bytes) {
    for (std::size_t i = Pixel; i < bytes; ++i) row[i] = static_cast<Byte>(row[i] + row[i - Pixel]);
}

// The values to the left stay in registers: each pixel waits for the one before it, and should not for
// memory.
template <std::size_t Pixel>
void addMean(Byte* row, const Byte* above, std::size_t bytes) {
    unsigned left[Pixel] = {};
    for (std::size_t i = 0; i < bytes; i += Pixel) {
        for (std::size_t k = 0; k < Pixel; ++k) {
            left[k] = (row[i + k] + ((left[k] + above[i + k]) >> 1U)) & 0xFFU;
            row[i + k] = static_cast<Byte>(left[k]);
        }
    }
}

// What of left, above and above left is nearest to left + above - above left; in doubt in this order.
inline int predicted(int left, int above, int corner) {
    const int toLeft = std::abs(above - corner);
    const int toAbove = std::abs(left - corner);
    const int toCorner = std::abs(left + above - 2 * corner);
    const int better = toAbove <= toCorner ? above : corner;
    return toLeft <= toAbove && toLeft <= toCorner ? left : better;
}

template <std::size_t Pixel>
void addPredicted(Byte* row, const Byte* above, std::size_t bytes) {
    int left[Pixel] = {};
    int corner[Pixel] = {};
    for (std::size_t i = 0; i < bytes; i += Pixel) {
        for (std::size_t k = 0; k < Pixel; ++k) {
            const int up = above[i + k];
            left[k] = (row[i + k] + predicted(left[k], up, corner[k])) & 0xFF;
            corner[k] = up;
            row[i + k] = static_cast<Byte>(left[k]);
        }
    }
}

template <std::size_t Pixel>
bool unfilter(int filter, Byte* row, const Byte* above, std::size_t bytes) {
    switch (filter) {
        case 0:
            return true;
        case 1:
            addLeft<Pixel>(row, bytes);
            return true;
        case 2:
            addAbove(row, above, bytes);
            return true;
        case 3:
            addMean<Pixel>(row, above, bytes);
            return true;
        case 4:
            addPredicted<Pixel>(row, above, bytes);
            return true;
        default:
            return false;
    }
}

}  // namespace

bool unfilterPngRow(int filter, Byte* row, const Byte* above, std::size_t bytes, std::size_t pixel) {
    switch (pixel) {
        case 1:
            return unfilter<1>(filter, row, above, bytes);
        case 2:
            return unfilter<2>(filter, row, above, bytes);
        case 3:
            return unfilter<3>(filter, row, above, bytes);
        default:
            return false;
    }
}

}  // namespace orx::platform
