#include "orxFunctions/camera/turn_image_internal.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <opencv2/core/hal/intrin.hpp>
#include <utility>

#include "orxFunctions/camera/turning/kernels.h"

namespace orx {
namespace {

// As many columns of the image are exchanged with rows at a time: more rows of the result would fall into the
// same few sets of the processor's cache where a row's length is a power of two.
constexpr int kStrip = 16;

// The rows of an image, from the first or from the last on.
template <class Byte>
class Rows {
  public:
    Rows(Byte* first, int count, std::size_t step, bool fromLast)
        : start_(fromLast ? first + static_cast<std::size_t>(count - 1) * step : first),
          step_(fromLast ? -static_cast<std::ptrdiff_t>(step) : static_cast<std::ptrdiff_t>(step)) {}

    Byte* operator[](int row) const { return start_ + row * step_; }

  private:
    Byte* start_;
    std::ptrdiff_t step_;
};

using SourceRows = Rows<const uchar>;
using TargetRows = Rows<uchar>;

#if CV_SIMD128
// Four rounds in which the first half of the rows is interleaved with the second transpose 16 by 16 bytes.
// With OpenCV's vectors, not as a family of kernels: rows of 16 bytes fill those of the baseline.
void exchangeBlock(const SourceRows& from, int y, int x, const TargetRows& to) {
    cv::v_uint8x16 a[kStrip];
    cv::v_uint8x16 b[kStrip];
    for (int i = 0; i < kStrip; ++i) a[i] = cv::v_load(from[y + i] + x);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < kStrip / 2; ++i) cv::v_zip(a[i], a[i + kStrip / 2], b[2 * i], b[2 * i + 1]);
        for (int i = 0; i < kStrip / 2; ++i) cv::v_zip(b[i], b[i + kStrip / 2], a[2 * i], a[2 * i + 1]);
    }
    for (int i = 0; i < kStrip; ++i) cv::v_store(to[x + i] + y, a[i]);
}
#endif

template <int kBytes>
void exchangeRow(const SourceRows& from, int y, int x, int columns, const TargetRows& to) {
    const uchar* const source = from[y] + static_cast<std::ptrdiff_t>(x) * kBytes;
    for (int i = 0; i < columns; ++i)
        std::memcpy(to[x + i] + static_cast<std::ptrdiff_t>(y) * kBytes, source + i * kBytes, kBytes);
}

// `size` is that of the image.
template <int kBytes>
void exchange(const SourceRows& from, cv::Size size, const TargetRows& to) {
    for (int x = 0; x < size.width; x += kStrip) {
        const int columns = std::min(kStrip, size.width - x);
        int y = 0;
#if CV_SIMD128
        if (kBytes == 1 && columns == kStrip) {
            for (; y + kStrip <= size.height; y += kStrip) exchangeBlock(from, y, x, to);
        }
#endif
        for (; y < size.height; ++y) exchangeRow<kBytes>(from, y, x, columns, to);
    }
}

template <int kBytes>
void reverseRow(const turning_kernels::Kernels& kernels, const uchar* from, int columns, uchar* to) {
    if (kBytes == 1) return kernels.reverseBytes(from, static_cast<std::size_t>(columns), to);
    for (int x = 0; x < columns; ++x)
        std::memcpy(to + static_cast<std::ptrdiff_t>(x) * kBytes,
                    from + static_cast<std::ptrdiff_t>(columns - 1 - x) * kBytes, kBytes);
}

template <int kBytes>
void turn(const cv::Mat& image, const Orientation& orientation, cv::Mat& out) {
    if (orientation.transposed) {
        const TargetRows to(out.data, out.rows, out.step, orientation.upsideDown);
        // Left and right of the result are top and bottom of the image.
        exchange<kBytes>(SourceRows(image.data, image.rows, image.step, orientation.leftRight), image.size(),
                         to);
        return;
    }
    const std::size_t bytes = static_cast<std::size_t>(image.cols) * kBytes;
    const turning_kernels::Kernels& kernels = turning_kernels::chosen();
    // The result is written from its first row on, and the image read from one end to the other: both are
    // streams that the processor fetches ahead.
    const SourceRows from(image.data, image.rows, image.step, orientation.upsideDown);
    for (int y = 0; y < image.rows; ++y) {
        if (orientation.leftRight)
            reverseRow<kBytes>(kernels, from[y], image.cols, out.ptr(y));
        else
            std::memcpy(out.ptr(y), from[y], bytes);
    }
}

}  // namespace

void turnImage(const cv::Mat& image, const Orientation& orientation, cv::Mat& out) {
    if (orientation.asItIs()) return image.copyTo(out);
    out.create(orientation.transposed ? cv::Size(image.rows, image.cols) : image.size(), image.type());
    switch (image.channels()) {
        case 1:
            return turn<1>(image, orientation, out);
        case 3:
            return turn<3>(image, orientation, out);
        default:
            return turn<4>(image, orientation, out);
    }
}

}  // namespace orx
