// The points of a form, checked, about their centre and scaled to about 1; and the extreme ones among them.
#ifndef ORXFUNCTIONS_MEASURING_ZONES_ZONE_POINTS_H
#define ORXFUNCTIONS_MEASURING_ZONES_ZONE_POINTS_H

#include <cstddef>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/fitting/fit_report.h"

namespace orx::zones {

using Points = std::vector<cv::Point2d>;

// pixel = center + scale * point. The scale is a power of two, so that scaling rounds nothing; points reach
// to between 0.5 and 1.
struct ZonePoints {
    Points points;
    cv::Point2d center;
    double scale = 1.0;

    cv::Point2d toPixels(cv::Point2d p) const { return center + scale * p; }
    cv::Point2d fromPixels(cv::Point2d p) const { return (p - center) / scale; }
};

// fsOk, or why the points have no form.
template <class Point>
TFitStatus take(const std::vector<Point>& given, std::size_t least, ZonePoints& taken);

// What rounding may do to the distances of points that reach to 1 from a centre, where it has come from
// points that lie close together.
inline double roundingAt(cv::Point2d center, double radius) {
    return 1e-13 * (1.0 + cv::norm(center) + radius);
}

// Indices of the corners of the convex hull, counterclockwise in a system whose y axis points up, without
// points on its sides; fewer than three where all points lie on a line.
std::vector<int> hullOf(const Points& points);

// Of points seen from a centre: the index of the farthest and of the nearest in each sector, -1 in an empty
// one.
class SectorExtremes {
  public:
    static constexpr std::size_t kSectors = 64;

    SectorExtremes(const Points& points, cv::Point2d center);

    // Indices of those farther than `outer` or nearer than `inner`.
    std::vector<int> beyond(double outer, double inner) const;

  private:
    struct Extreme {
        double far2 = -1.0;
        double near2 = std::numeric_limits<double>::infinity();
        int farthest = -1;
        int nearest = -1;
    };
    Extreme sectors_[kSectors];
};

// Indices without those that are already among the chosen; true where some are left, which then are chosen.
bool choose(const std::vector<int>& indices, std::vector<unsigned char>& isChosen, std::vector<int>& chosen);

// The points of these indices.
Points pick(const Points& points, const std::vector<int>& indices);

}  // namespace orx::zones

#endif
