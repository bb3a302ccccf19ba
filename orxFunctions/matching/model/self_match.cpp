#include "orxFunctions/matching/model/self_match.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/matching/model/bounds.h"

namespace orx::matching {
namespace {

// Cells about the outline in which partners are found.
constexpr int kReach = 3;
// Points of a chain are about a pixel apart; farther ones leave a gap.
constexpr double kLongestStep = 2.0;
// Matched stretches shorter than this do not end a gap: something else may cross there.
constexpr double kEndsAGap = 2.0;

// About as many cells as a part of this radius has with cells of one pixel.
constexpr double kRadiusInCells = 128;

double cellFor(const std::vector<OutlinePoint>& outline) {
    return outline.empty() ? 1 : std::max(1.0, boundsOf(outline).extent() / 2 / kRadiusInCells);
}

std::vector<double> lengthsOf(const std::vector<OutlinePoint>& outline) {
    std::vector<double> lengths(outline.size(), 0.0);
    for (std::size_t i = 1; i < outline.size(); ++i) {
        if (outline[i].chain != outline[i - 1].chain) continue;
        const cv::Point2d step = outline[i].position - outline[i - 1].position;
        const double half = std::min(std::hypot(step.x, step.y), kLongestStep) / 2;
        lengths[i - 1] += half;
        lengths[i] += half;
    }
    return lengths;
}

double medianDeviation(const std::vector<OutlinePoint>& outline) {
    std::vector<double> deviations;
    deviations.reserve(outline.size());
    for (const OutlinePoint& point : outline) deviations.push_back(point.deviation);
    if (deviations.empty()) return 0;
    const auto middle = deviations.begin() + static_cast<std::ptrdiff_t>(deviations.size() / 2);
    std::nth_element(deviations.begin(), middle, deviations.end());
    return *middle;
}

}  // namespace

MatchedOutline::MatchedOutline(const std::vector<OutlinePoint>& outline, bool signsAreKnown)
    : outline_(outline),
      signsAreKnown_(signsAreKnown),
      map_(outline, cellFor(outline), kReach),
      lengths_(lengthsOf(outline)),
      noise_(medianDeviation(outline)) {
    for (std::size_t i = 0; i < outline.size(); ++i) {
        length_ += lengths_[i];
        centroid_ += lengths_[i] * outline[i].position;
    }
    if (length_ <= 0) return;
    centroid_ *= 1 / length_;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const cv::Point2d d = outline[i].position - centroid_;
        rmsRadius_ += lengths_[i] * d.dot(d);
    }
    rmsRadius_ = std::sqrt(rmsRadius_ / length_);
}

int MatchedOutline::partner(std::size_t i, const Motion& motion, const MatchTolerance& tolerance) const {
    const cv::Point2d place = motion.apply(outline_[i].position);
    const int found = map_.nearest(place);
    if (found < 0) return -1;
    const OutlinePoint& other = outline_[static_cast<std::size_t>(found)];
    const cv::Point2d d = place - other.position;
    const double across = d.dot(other.normal);
    if (std::abs(across) > tolerance.across) return -1;
    if (d.dot(d) - across * across > tolerance.along * tolerance.along) return -1;
    const double agreement = motion.turn(outline_[i].normal).dot(other.normal);
    const double cosine = signsAreKnown_ ? agreement : std::abs(agreement);
    return cosine >= tolerance.cosine * motion.scale() ? found : -1;
}

SelfMatch MatchedOutline::match(const Motion& motion, const MatchTolerance& tolerance,
                                double longestGap) const {
    SelfMatch result;
    double matched = 0;
    double gap = 0;
    double bridge = 0;  // matched length since the gap
    for (std::size_t i = 0; i < outline_.size(); ++i) {
        if (i > 0 && outline_[i].chain != outline_[i - 1].chain) gap = 0;
        const int found = partner(i, motion, tolerance);
        if (found < 0) {
            gap += lengths_[i];
            bridge = 0;
            result.longestGap = std::max(result.longestGap, gap);
            if (gap >= longestGap) return result;
            continue;
        }
        bridge += lengths_[i];
        if (bridge > kEndsAGap) gap = 0;
        matched += lengths_[i];
        const OutlinePoint& other = outline_[static_cast<std::size_t>(found)];
        const double across = (motion.apply(outline_[i].position) - other.position).dot(other.normal);
        result.meanSquare += lengths_[i] * across * across;
    }
    if (matched > 0) result.meanSquare /= matched;
    if (length_ > 0) result.share = matched / length_;
    return result;
}

}  // namespace orx::matching
