// The circles through two points, and which of them hold a third: on the line of their centres both are
// linear.
#ifndef ORXFUNCTIONS_MEASURING_ZONES_BISECTOR_H
#define ORXFUNCTIONS_MEASURING_ZONES_BISECTOR_H

#include <cmath>
#include <limits>
#include <opencv2/core.hpp>

namespace orx::zones {

// A stretch of a bisector, and what rounding may have moved its ends by.
struct Stretch {
    double from;
    double to;
    double fromSlack = 0.0;
    double toSlack = 0.0;

    bool empty() const { return from > to; }
    bool beyondHealing() const { return from - to > fromSlack + toSlack; }
    // What only rounding has made empty becomes the one place that it is.
    void heal() {
        if (empty() && !beyondHealing()) from = to = (from + to) / 2.0;
    }
};

// The circle of parameter t has its centre at middle + t * normal; its squared radius is half2 + t^2.
class Bisector {
  public:
    Bisector(cv::Point2d p, cv::Point2d q) : middle_((p + q) / 2.0) {
        const cv::Point2d side = q - p;
        const double length = std::sqrt(side.dot(side));
        half2_ = length * length / 4.0;
        normal_ = length > 0.0 ? cv::Point2d(-side.y, side.x) / length : cv::Point2d(0.0, 0.0);
    }

    bool isPoint() const { return half2_ == 0.0; }
    double half2() const { return half2_; }
    cv::Point2d at(double t) const { return middle_ + t * normal_; }
    double radius2(double t) const { return half2_ + t * t; }
    double radius(double t) const { return std::sqrt(radius2(t)); }

    // The squared distance of a point from the centre less t^2: base + slope * t.
    struct Linear {
        double base;
        double slope;
        double at(double t) const { return base + slope * t; }
    };
    Linear distance2(cv::Point2d p) const {
        const cv::Point2d arm = p - middle_;
        return {arm.dot(arm), -2.0 * arm.dot(normal_)};
    }

    // Cuts off the circles that do not hold the point (sign 1), or that do hold it within (sign -1).
    void cut(cv::Point2d p, double sign, Stretch& stretch) const {
        const Linear d = distance2(p);
        const double excess = sign * (d.base - half2_);  // excess + slope * t must not be above 0
        const double slope = sign * d.slope;
        constexpr double kParallel = 1e-15;
        constexpr double kRounding = 32.0 * std::numeric_limits<double>::epsilon();
        if (std::abs(slope) <= kParallel) {
            if (excess > 10.0 * kParallel) stretch = {1.0, -1.0};
            return;
        }
        const double end = -excess / slope;
        const double slack = kRounding * ((1.0 + d.base) / std::abs(slope) + std::abs(end));
        if (slope > 0.0 && end < stretch.to) {
            stretch.to = end;
            stretch.toSlack = slack;
        } else if (slope < 0.0 && end > stretch.from) {
            stretch.from = end;
            stretch.fromSlack = slack;
        }
    }

  private:
    cv::Point2d middle_;
    cv::Point2d normal_;
    double half2_ = 0.0;
};

}  // namespace orx::zones

#endif
