// Pyramids of halved pictures, and where their pixels lie.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_PYRAMID_H
#define ORXFUNCTIONS_MATCHING_MODEL_PYRAMID_H

#include <opencv2/core.hpp>
#include <vector>

namespace orx::matching {

// [0] is the picture (8 bits, one channel; shared), each next level the mean of 2 x 2 pixels; an odd last row
// or column is left out. Ends before a level would be empty.
std::vector<cv::Mat> makePyramid(const cv::Mat& grey, int levels);

// Pixel (0, 0) of level k is the square of the picture's pixels 0 to 2^k - 1, so its centre is not at (0, 0).
inline double toLevel(double coordinate, int level) { return (coordinate + 0.5) / (1 << level) - 0.5; }
inline double fromLevel(double coordinate, int level) { return (coordinate + 0.5) * (1 << level) - 0.5; }
inline cv::Point2d toLevel(cv::Point2d p, int level) { return {toLevel(p.x, level), toLevel(p.y, level)}; }
inline cv::Point2d fromLevel(cv::Point2d p, int level) {
    return {fromLevel(p.x, level), fromLevel(p.y, level)};
}

}  // namespace orx::matching

#endif
