#include "orxFunctions/analysis/square_morphology_internal.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <vector>

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

}  // namespace

void squareMorphology(cv::Mat& binary, int operation, int size) {
    const bool known = operation >= cv::MORPH_ERODE && operation <= cv::MORPH_HITMISS;
    if (!known || size <= kSmall) {
        const int side = std::min(size, kSmall);
        cv::morphologyEx(binary, binary, operation, cv::getStructuringElement(cv::MORPH_RECT, {side, side}));
        return;
    }
    // A square that covers the image from wherever it stands acts like any larger one.
    const int longest = std::max(binary.rows, binary.cols);
    const Reach reach{std::min(size / 2, longest), std::min((size - 1) / 2, longest)};
    const auto erode = [&](cv::Mat& image) { spread(image, 0, reach); };
    const auto dilate = [&](cv::Mat& image) { spread(image, 255, reach); };
    const cv::Mat original = operation >= cv::MORPH_GRADIENT ? binary.clone() : cv::Mat();
    const bool dilatesFirst =
        operation == cv::MORPH_DILATE || operation == cv::MORPH_CLOSE || operation == cv::MORPH_BLACKHAT;
    if (dilatesFirst) {
        dilate(binary);
    } else {
        erode(binary);
    }
    if (operation == cv::MORPH_OPEN || operation == cv::MORPH_TOPHAT) dilate(binary);
    if (operation == cv::MORPH_CLOSE || operation == cv::MORPH_BLACKHAT) erode(binary);
    if (operation == cv::MORPH_TOPHAT) cv::subtract(original, binary, binary);
    if (operation == cv::MORPH_BLACKHAT) cv::subtract(binary, original, binary);
    if (operation == cv::MORPH_GRADIENT) {
        cv::Mat dilated = original;
        dilate(dilated);
        cv::subtract(dilated, binary, binary);
    }
}

}  // namespace orx
