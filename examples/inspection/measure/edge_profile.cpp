#include "inspection/measure/edge_profile.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace inspection {
namespace {

// The profile reaches this far to either side, in steps of a quarter of a pixel.
constexpr double kReach = 3.0;
constexpr double kStep = 0.25;
constexpr int kSamples = 25;
// Samples at either end that make up the levels inside and outside.
constexpr int kPlateau = 5;
constexpr double kLeastContrast = 8.0;
// The window is moved onto the edge it found, so that both its ends lie equally far from the edge: a few
// moves are enough, and the last ones are tiny.
constexpr int kMoves = 3;
// A contour point is the centre of an object's pixel; the edge lies half a pixel further out on average.
constexpr double kHalfPixel = 0.5;

double bilinear(const cv::Mat& grey, cv::Point2d p) {
    const int x = std::min(static_cast<int>(p.x), grey.cols - 2);
    const int y = std::min(static_cast<int>(p.y), grey.rows - 2);
    const double u = p.x - x;
    const double v = p.y - y;
    const auto* upper = grey.ptr<uchar>(y) + x;
    const auto* lower = grey.ptr<uchar>(y + 1) + x;
    return (1.0 - v) * ((1.0 - u) * upper[0] + u * upper[1]) + v * ((1.0 - u) * lower[0] + u * lower[1]);
}

bool isInside(const cv::Mat& grey, cv::Point2d p) {
    return p.x >= 0.0 && p.y >= 0.0 && p.x <= grey.cols - 1 && p.y <= grey.rows - 1;
}

// The crossing nearest to `middle`, as a distance along `outward`.
std::optional<double> crossingNear(const cv::Mat& grey, cv::Point2d middle, cv::Point2d outward,
                                   bool brightObject) {
    if (!isInside(grey, middle - kReach * outward) || !isInside(grey, middle + kReach * outward))
        return std::nullopt;
    std::array<double, kSamples> profile{};
    for (int i = 0; i < kSamples; ++i)
        profile[static_cast<std::size_t>(i)] = bilinear(grey, middle + (i * kStep - kReach) * outward);
    double inside = 0.0;
    double outside = 0.0;
    for (std::size_t i = 0; i < kPlateau; ++i) {
        inside += profile[i] / kPlateau;
        outside += profile[kSamples - 1 - i] / kPlateau;
    }
    if ((brightObject ? inside - outside : outside - inside) < kLeastContrast) return std::nullopt;

    const double level = 0.5 * (inside + outside);
    std::optional<double> nearest;
    for (std::size_t i = 0; i + 1 < kSamples; ++i) {
        const double before = profile[i] - level;
        const double after = profile[i + 1] - level;
        if (brightObject ? !(before > 0.0 && after <= 0.0) : !(before < 0.0 && after >= 0.0)) continue;
        const double place = (static_cast<double>(i) + before / (before - after)) * kStep - kReach;
        if (!nearest || std::abs(place) < std::abs(*nearest)) nearest = place;
    }
    return nearest;
}

}  // namespace

std::optional<cv::Point2d> edgeAcross(const cv::Mat& grey, cv::Point2d contourPoint, cv::Point2d outward,
                                      bool brightObject) {
    if (grey.cols < 2 || grey.rows < 2) return std::nullopt;
    double place = kHalfPixel;
    for (int move = 0; move < kMoves; ++move) {
        const auto crossing = crossingNear(grey, contourPoint + place * outward, outward, brightObject);
        if (!crossing) return std::nullopt;
        place += *crossing;
        if (std::abs(place - kHalfPixel) > kReach) return std::nullopt;
    }
    return contourPoint + place * outward;
}

}  // namespace inspection
