// Pictures with edges whose true place is known: the grey level follows the error function of the distance.
#ifndef TESTS_ANALYSIS_EDGE_PICTURES_H
#define TESTS_ANALYSIS_EDGE_PICTURES_H

#include <cmath>
#include <opencv2/core.hpp>

#include "tests/support/fit_scenes.h"

namespace edge_pictures {

struct Step {
    double low = 50;
    double high = 200;
    double blur = 1;    // standard deviation, pixels
    double noise = 0;   // standard deviation, levels
    int depth = CV_8U;  // or CV_16U, with levels 257 times as high: without the rounding of 8 bits
};

// `distance` gives the signed distance of a point from the edge, positive on the bright side.
template <class Distance>
cv::Mat picture(cv::Size size, const Step& step, Distance distance, fit_scenes::Random* random = nullptr) {
    cv::Mat_<double> levels(size);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double share = std::erfc(-distance(cv::Point2d(x, y)) / (std::sqrt(2.0) * step.blur)) / 2;
            const double disturbance = random != nullptr ? random->normal(step.noise) : 0;
            levels(y, x) = step.low + (step.high - step.low) * share + disturbance;
        }
    }
    cv::Mat img;
    levels.convertTo(img, step.depth, step.depth == CV_16U ? 257 : 1);
    return img;
}

inline cv::Mat disk(cv::Size size, const Step& step, cv::Point2d centre, double radius) {
    return picture(size, step,
                   [=](cv::Point2d p) { return radius - std::hypot(p.x - centre.x, p.y - centre.y); });
}

}  // namespace edge_pictures

#endif
