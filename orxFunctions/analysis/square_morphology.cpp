#include "orxFunctions/analysis/square_morphology_internal.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/platform/parallel_internal.h"

namespace orx {
namespace {

// Up to here OpenCV's vectors are faster.
constexpr int kSmall = 31;

// A stretch around each pixel, on both axes; what lies outside of the image has no part in it.
struct Reach {
    int before;
    int after;
};

// Whether the stretch around x holds the level, for each x of a row.
void findInRow(const uchar* row, uchar level, Reach reach, std::vector<uchar>& found) {
    const int cols = static_cast<int>(found.size());
    int last = -1 - reach.before;  // where the level was seen last
    const auto see = [&](int x) { last = row[x] == level ? x : last; };
    for (int x = 0; x < std::min(cols, reach.after); ++x) see(x);
    for (int x = 0; x < cols; ++x) {
        if (x < cols - reach.after) see(x + reach.after);
        found[static_cast<std::size_t>(x)] = last >= x - reach.before ? 1 : 0;
    }
}

// Sets every pixel to the level whose square holds it. A row is written when the rows of its square are read.
void spread(cv::Mat& binary, uchar level, Reach reach) {
    const auto cols = static_cast<std::size_t>(binary.cols);
    std::vector<uchar> found(cols);
    std::vector<int> last(cols, -1 - reach.before);  // the last row that held the level
    const auto see = [&](int y) {
        findInRow(binary.ptr(y), level, reach, found);
        for (std::size_t x = 0; x < cols; ++x) last[x] = found[x] != 0 ? y : last[x];
    };
    for (int y = 0; y < std::min(binary.rows, reach.after); ++y) see(y);
    for (int y = 0; y < binary.rows; ++y) {
        if (y < binary.rows - reach.after) see(y + reach.after);
        uchar* row = binary.ptr(y);
        for (std::size_t x = 0; x < cols; ++x)
            row[x] = static_cast<uchar>(last[x] >= y - reach.before ? level : 255 - level);
    }
}

// A step by OpenCV, in stripes that are high beside the square: the rows around each are looked at, too.
void filter(cv::Mat& image, cv::Mat& spare, int operation, const cv::Mat& square) {
    const std::int64_t fewest = std::int64_t{8} * square.rows * image.cols;
    const auto step = operation == cv::MORPH_ERODE ? cv::erode : cv::dilate;
    spare.create(image.size(), image.type());
    platform::forStripes({image.size(), std::max(platform::kStripe, fewest)},
                         [&](int, const cv::Range& rows) {
                             step(image.rowRange(rows), cv::Mat(spare.rowRange(rows)), square, {-1, -1}, 1,
                                  cv::BORDER_CONSTANT, cv::morphologyDefaultBorderValue());
                         });
    cv::swap(image, spare);
}

// `step` erodes or dilates an image in place.
template <class Step>
void compose(cv::Mat& binary, int operation, const Step& step) {
    const cv::Mat original = operation >= cv::MORPH_GRADIENT ? binary.clone() : cv::Mat();
    const bool dilatesFirst =
        operation == cv::MORPH_DILATE || operation == cv::MORPH_CLOSE || operation == cv::MORPH_BLACKHAT;
    step(binary, dilatesFirst ? cv::MORPH_DILATE : cv::MORPH_ERODE);
    if (operation == cv::MORPH_OPEN || operation == cv::MORPH_TOPHAT) step(binary, cv::MORPH_DILATE);
    if (operation == cv::MORPH_CLOSE || operation == cv::MORPH_BLACKHAT) step(binary, cv::MORPH_ERODE);
    if (operation == cv::MORPH_TOPHAT) cv::subtract(original, binary, binary);
    if (operation == cv::MORPH_BLACKHAT) cv::subtract(binary, original, binary);
    if (operation == cv::MORPH_GRADIENT) {
        cv::Mat dilated = original;
        step(dilated, cv::MORPH_DILATE);
        cv::subtract(dilated, binary, binary);
    }
}

}  // namespace

void squareMorphology(cv::Mat& binary, cv::Mat& spare, int operation, int size) {
    const bool known = operation >= cv::MORPH_ERODE && operation <= cv::MORPH_HITMISS;
    if (!known || size < 1) {
        const int side = std::min(size, kSmall);
        cv::morphologyEx(binary, binary, operation, cv::getStructuringElement(cv::MORPH_RECT, {side, side}));
    } else if (size <= kSmall) {
        const cv::Mat square = cv::getStructuringElement(cv::MORPH_RECT, {size, size});
        compose(binary, operation, [&](cv::Mat& image, int step) { filter(image, spare, step, square); });
    } else {
        // A square that covers the image from wherever it stands acts like any larger one.
        const int longest = std::max(binary.rows, binary.cols);
        const Reach reach{std::min(size / 2, longest), std::min((size - 1) / 2, longest)};
        compose(binary, operation,
                [&](cv::Mat& image, int step) { spread(image, step == cv::MORPH_ERODE ? 0 : 255, reach); });
    }
}

}  // namespace orx
