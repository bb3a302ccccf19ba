// Outlines of parts: polygons with holes whose arcs are so fine that no picture tells them from arcs.
#ifndef EXAMPLES_SUPPORT_PART_SHAPES_H
#define EXAMPLES_SUPPORT_PART_SHAPES_H

#include <array>
#include <vector>

#include "support/polygon_coverage.h"

namespace scenes {

enum class PartKind {
    plate,        // rounded, with three holes
    gear,         // twelve teeth about a bore: looks the same after a twelfth of a turn
    bracket,      // L-shaped, with a hole
    key,          // a bow with a hole, and a blade with cuts
    notchedRing,  // all but the same at every angle
    keyedGear     // the gear with a keyway in its bore, which alone tells the angle
};

constexpr std::array<PartKind, 5> kFiveParts{PartKind::plate, PartKind::gear, PartKind::bracket,
                                             PartKind::key, PartKind::notchedRing};

const char* partName(PartKind kind);

// In part coordinates: the origin in the middle, everything within kPartRadius of it.
constexpr double kPartRadius = 60;

struct PartShape {
    std::vector<Loop> loops;  // the outline, then its holes, which run the other way round
    int symmetry = 1;         // looks the same after 1/symmetry of a turn
};

const PartShape& partShape(PartKind kind);

struct ScenePose {
    double x = 0;  // of the part's origin, pixels
    double y = 0;
    double angle = 0;  // degrees, from the x axis towards the y axis
    double scale = 1;
};

cv::Point2d placed(const ScenePose& pose, cv::Point2d point);

// Points along all loops, `step` apart.
Loop outlinePoints(const PartShape& shape, double step);

}  // namespace scenes

#endif
