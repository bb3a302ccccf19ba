// What lies around, on and over the parts of a scene, and what its pieces are drawn with.
#ifndef EXAMPLES_SUPPORT_PART_SURROUNDINGS_INTERNAL_H
#define EXAMPLES_SUPPORT_PART_SURROUNDINGS_INTERNAL_H

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "support/polygon_coverage.h"
#include "support/random_source_internal.h"

namespace scenes {

inline cv::Point2d unit(double radians) { return {std::cos(radians), std::sin(radians)}; }

inline bool oneIn(double times, RandomSource& random) { return random.uniform(0, times) < 1; }

inline int wholeNumber(int low, int high, RandomSource& random) {
    return std::min(high, static_cast<int>(random.uniform(low, high + 1)));
}

// In all of these, `fineness` is that of paint().

// Rough ground; its grey levels deviate by so much.
void roughen(cv::Mat& image, double deviation, int fineness, RandomSource& random);

// Bright and dark things, so many for each 640 x 480 pixels. Of each part, given by points along its outline,
// they take a tenth of the points at the most.
void paintClutter(cv::Mat& image, double number, const std::vector<Loop>& parts, int fineness,
                  RandomSource& random);

// Curved lines, so many for each 640 x 480 pixels.
void paintThreads(cv::Mat& image, double number, int fineness, RandomSource& random);

}  // namespace scenes

#endif
