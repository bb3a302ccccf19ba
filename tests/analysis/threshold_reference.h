// The threshold methods as plain loops, each class summed anew for each level: what the library's faster
// searches are held to.
#ifndef ORXFUNCTIONS_TESTS_ANALYSIS_THRESHOLD_REFERENCE_H
#define ORXFUNCTIONS_TESTS_ANALYSIS_THRESHOLD_REFERENCE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>

namespace reference {

// One value for each grey level; at() takes the level as an int, and checks it.
template <typename T>
struct PerLevel : std::array<T, 256> {
    T& at(int level) { return std::array<T, 256>::at(static_cast<std::size_t>(level)); }
    const T& at(int level) const { return std::array<T, 256>::at(static_cast<std::size_t>(level)); }
};

using Counts = PerLevel<std::uint32_t>;

// Every level that occurs in the bytes of the image, row by row or as one long row.
Counts directCounts(const cv::Mat& img, bool oneLongRow = false);
// What cv::calcHist makes of channel 0 with 256 bins for [0, 255).
Counts libraryCounts(const cv::Mat& img);

// The level for the method of that number (TThresholdMethod).
int level(const Counts& direct, const Counts& library, int method);
int otsu(const Counts& h, double& score);
int triangle(Counts h);
int requiredNumber(const Counts& h, int required);

}  // namespace reference

#endif
