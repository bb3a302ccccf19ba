#include "orxFunctions/analysis/clean_up.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kDiagonal = 1.4142135623730951;

// A value for each label; label 0 is the background.
using Measures = std::vector<double>;

// Counted run by run: pixel by pixel, each count would wait for the one before.
Measures areasOf(const cv::Mat& labels, int count) {
    Measures areas(static_cast<std::size_t>(count));
    for (int y = 0; y < labels.rows; ++y) {
        const int* label = labels.ptr<int>(y);
        for (int x = 0; x < labels.cols;) {
            const int first = x;
            while (x < labels.cols && label[x] == label[first]) ++x;
            areas[static_cast<std::size_t>(label[first])] += x - first;
        }
    }
    return areas;
}

// Each step is counted where it starts: to the right, and to the three pixels below. A diagonal step counts
// only where no detour along row and column leads the same way.
Measures lengthsOf(const cv::Mat& labels, int count) {
    Measures lengths(static_cast<std::size_t>(count));
    const std::vector<int> beyond(static_cast<std::size_t>(labels.cols), 0);
    for (int y = 0; y < labels.rows; ++y) {
        const int* row = labels.ptr<int>(y);
        const int* below = y + 1 < labels.rows ? labels.ptr<int>(y + 1) : beyond.data();
        for (int x = 0; x < labels.cols; ++x) {
            if (row[x] == 0) continue;
            const bool left = x > 0 && row[x - 1] != 0;
            const bool right = x + 1 < labels.cols && row[x + 1] != 0;
            const bool down = below[x] != 0;
            const bool diagonalLeft = x > 0 && below[x - 1] != 0 && !left && !down;
            const bool diagonalRight = x + 1 < labels.cols && below[x + 1] != 0 && !right && !down;
            lengths[static_cast<std::size_t>(row[x])] +=
                (right ? 1 : 0) + (down ? 1 : 0) +
                kDiagonal * ((diagonalLeft ? 1 : 0) + (diagonalRight ? 1 : 0));
        }
    }
    return lengths;
}

bool keepAtLeast(const cv::Mat& src, cv::Mat& dst, double least, const char* function,
                 Measures (*measure)(const cv::Mat& labels, int count)) {
    if (!takesBytes(src, function)) return false;
    if (std::isnan(least)) return refuse(rcNotFinite, function, "the limit is not a number");
    cv::Mat labels;
    const int count = cv::connectedComponents(src, labels, 8, CV_32S);
    const Measures measures = measure(labels, count);
    std::vector<uchar> mask(measures.size());  // all bits of what stays
    std::transform(measures.begin(), measures.end(), mask.begin(),
                   [=](double value) { return static_cast<uchar>(value < least ? 0 : 255); });
    cv::Mat kept = src.clone();
    for (int y = 0; y < kept.rows; ++y) {
        const int* label = labels.ptr<int>(y);
        uchar* pixel = kept.ptr(y);
        for (int x = 0; x < kept.cols; ++x) pixel[x] &= mask[static_cast<std::size_t>(label[x])];
    }
    dst = kept;
    return true;
}

double lengthOf(const cv::Vec4i& segment) {
    return std::hypot(static_cast<double>(segment[2]) - segment[0],
                      static_cast<double>(segment[3]) - segment[1]);
}

}  // namespace

bool removeSmallObjects(const cv::Mat& src, cv::Mat& dst, double minArea) {
    return keepAtLeast(src, dst, minArea, "removeSmallObjects", areasOf);
}

bool removeShortLines(const cv::Mat& src, cv::Mat& dst, double minLength) {
    return keepAtLeast(src, dst, minLength, "removeShortLines", lengthsOf);
}

void removeShortLines(std::vector<cv::Vec4i>& segments, double minLength) {
    segments.erase(std::remove_if(segments.begin(), segments.end(),
                                  [&](const cv::Vec4i& segment) { return lengthOf(segment) < minLength; }),
                   segments.end());
}

void removeSmallContours(std::vector<std::vector<cv::Point>>& contours, double minArea, double minLength) {
    const auto isSmall = [&](const std::vector<cv::Point>& contour) {
        return contour.empty() || cv::contourArea(contour) < minArea ||
               cv::arcLength(contour, true) < minLength;
    };
    contours.erase(std::remove_if(contours.begin(), contours.end(), isSmall), contours.end());
}

}  // namespace orx
