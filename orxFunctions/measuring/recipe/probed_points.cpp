#include "orxFunctions/measuring/recipe/edge_points.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/analysis/contour_edges.h"

namespace orx::recipes {
namespace {

constexpr double kReach = 3.0;
constexpr double kMostReach = 12.0;
// Of the blur: the ends of the profile are off the edge then.
constexpr double kReachOfBlur = 3.0;

}  // namespace

EdgePoints probedPoints(const Picture& picture, const FeatureSpec& asked, const Curve& curve,
                        const ToImage& toImage, double blur) {
    EdgePoints edges;
    const std::vector<TEdgeProbe> probes = probesAlong(curve, toImage, 1.0);
    TContourEdgeOptions options;
    options.reach = std::clamp(kReachOfBlur * blur, kReach, kMostReach);
    options.minContrast = asked.minContrast;
    options.polarity = asked.polarity;
    options.noise = picture.noise;
    edges.searched = static_cast<int>(probes.size());
    edges.noise = pnEdgeChain;
    edges.smoothing = kContourEdgeSmoothing;
    edges.closed = curve.closed;
    edges.weighted = true;
    edges.blur = blur;
    for (const TContourEdge& edge : edgesAcross(picture.grey, probes, options)) {
        if (!edge.found) continue;
        edges.points.push_back(edge.position);
        edges.normals.push_back(edge.normal);
        edges.deviations.push_back(edge.deviation);
    }
    return edges;
}

}  // namespace orx::recipes
