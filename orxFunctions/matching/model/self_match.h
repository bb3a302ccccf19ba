// How far an outline that is moved still lies on itself.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_SELF_MATCH_H
#define ORXFUNCTIONS_MATCHING_MODEL_SELF_MATCH_H

#include <cmath>
#include <complex>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/outline_map.h"

namespace orx::matching {

// p -> factor * p + shift, in complex numbers: a turn and a scale about the origin, then a shift.
struct Motion {
    std::complex<double> factor = 1;
    std::complex<double> shift = 0;

    cv::Point2d apply(cv::Point2d p) const {
        return {factor.real() * p.x - factor.imag() * p.y + shift.real(),
                factor.imag() * p.x + factor.real() * p.y + shift.imag()};
    }
    double scale() const { return std::sqrt(std::norm(factor)); }
    // Of a vector; its length grows with the scale.
    cv::Point2d turn(cv::Point2d v) const {
        return {factor.real() * v.x - factor.imag() * v.y, factor.imag() * v.x + factor.real() * v.y};
    }
};

// When a moved point counts as lying on the outline.
struct MatchTolerance {
    double across = 0.5;  // pixels
    double along = 3.0;   // pixels: bridges small gaps
    double cosine = 0.7;  // of the angle between the normals: noise turns them, too
};

struct SelfMatch {
    double share = 0;       // of the length that lies on the outline
    double longestGap = 0;  // longest stretch of a chain that does not, pixels
    double meanSquare = 0;  // of the distances across, of what does
};

// The outline with what all tests of it share.
class MatchedOutline {
  public:
    // `outline` must outlive it.
    MatchedOutline(const std::vector<OutlinePoint>& outline, bool signsAreKnown);

    const std::vector<OutlinePoint>& points() const { return outline_; }
    cv::Point2d centroid() const { return centroid_; }  // of the outline's length
    double rmsRadius() const { return rmsRadius_; }     // about the centroid, by length
    double noise() const { return noise_; }             // median deviation of a point
    double length() const { return length_; }
    double lengthAt(std::size_t i) const { return lengths_[i]; }
    double cell() const { return map_.cell(); }

    // The point of the outline on which point i, moved, comes to lie; -1 for none.
    int partner(std::size_t i, const Motion& motion, const MatchTolerance& tolerance) const;
    // Stops at a gap of `longestGap` pixels: what it tells then is that gap alone.
    SelfMatch match(const Motion& motion, const MatchTolerance& tolerance,
                    double longestGap = std::numeric_limits<double>::infinity()) const;

  private:
    const std::vector<OutlinePoint>& outline_;
    bool signsAreKnown_;
    OutlineMap map_;
    std::vector<double> lengths_;  // that each point stands for
    double length_ = 0;
    cv::Point2d centroid_;
    double rmsRadius_ = 0;
    double noise_ = 0;
};

}  // namespace orx::matching

#endif
