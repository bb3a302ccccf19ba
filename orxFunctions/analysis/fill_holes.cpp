#include "orxFunctions/analysis/fill_holes.h"

#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// 255 where the background does not reach the border: what a flood from a frame around the image leaves. The
// frame is still there, and 0.
cv::Mat enclosedBackground(const cv::Mat& src, int connectivity) {
    cv::Mat framed(src.rows + 2, src.cols + 2, CV_8UC1);
    cv::rectangle(framed, {0, 0, framed.cols, framed.rows}, cv::Scalar(255));
    cv::compare(src, 0, framed({1, 1, src.cols, src.rows}), cv::CMP_EQ);
    cv::floodFill(framed, {0, 0}, cv::Scalar(0), nullptr, {}, {}, connectivity);
    return framed;
}

// Sweeps over the holes of a picture in a frame of zeros, one at a time.
class HoleSweep {
  public:
    HoleSweep(cv::Mat& framed, int connectivity)
        : pixels_(framed.data),
          step_(static_cast<std::ptrdiff_t>(framed.step)),
          connectivity_(connectivity) {}

    // Turns the hole's pixels from one value into another and counts them.
    std::size_t turn(std::ptrdiff_t first, uchar from, uchar to) {
        const std::ptrdiff_t around[] = {-1, 1, -step_, step_, -step_ - 1, -step_ + 1, step_ - 1, step_ + 1};
        std::size_t count = 1;
        pixels_[first] = to;
        front_.assign(1, first);
        // Ring by ring: the front of a large hole is far smaller than the hole.
        while (!front_.empty()) {
            next_.clear();
            for (const std::ptrdiff_t pixel : front_) {
                for (int i = 0; i < connectivity_; ++i) {
                    uchar& neighbour = pixels_[pixel + around[i]];
                    if (neighbour != from) continue;
                    neighbour = to;
                    next_.push_back(pixel + around[i]);
                }
            }
            count += next_.size();
            front_.swap(next_);
        }
        return count;
    }

  private:
    uchar* pixels_;
    std::ptrdiff_t step_;
    int connectivity_;
    std::vector<std::ptrdiff_t> front_;
    std::vector<std::ptrdiff_t> next_;
};

void dropLargerThan(double maxArea, cv::Mat& framed, int connectivity) {
    constexpr uchar kUnseen = 255;
    constexpr uchar kSeen = 254;
    HoleSweep sweep(framed, connectivity);
    for (int y = 1; y + 1 < framed.rows; ++y) {
        const uchar* row = framed.ptr(y);
        for (int x = 1; x + 1 < framed.cols; ++x) {
            if (row[x] != kUnseen) continue;
            const std::ptrdiff_t first = row + x - framed.data;
            const std::size_t area = sweep.turn(first, kUnseen, kSeen);
            if (static_cast<double>(area) > maxArea) sweep.turn(first, kSeen, 0);
        }
    }
    cv::threshold(framed, framed, 0, 255, cv::THRESH_BINARY);
}

}  // namespace

bool fillHoles(const cv::Mat& src, cv::Mat& dst, const TFillHolesOptions& options) {
    if (!takesBytes(src, "fillHoles")) return false;
    if (std::isnan(options.maxArea)) return refuse(rcNotFinite, "fillHoles", "maxArea is not a number");
    if (options.objects != cnFour && options.objects != cnEight)
        return refuse(rcOption, "fillHoles", "there is no connectivity %d; 4 or 8 is taken",
                      static_cast<int>(options.objects));
    const int connectivity = options.objects == cnEight ? 4 : 8;
    cv::Mat holes = enclosedBackground(src, connectivity);
    const bool limited = options.maxArea < static_cast<double>(src.total());
    if (limited) dropLargerThan(options.maxArea, holes, connectivity);
    dst = src | holes(cv::Rect(1, 1, src.cols, src.rows));
    return true;
}

}  // namespace orx
