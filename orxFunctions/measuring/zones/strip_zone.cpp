#include "orxFunctions/measuring/zones/strip_zone.h"

#include <cmath>

namespace orx::zones {

Strip narrowestStrip(const Points& points) {
    const std::vector<int> hull = hullOf(points);
    const Points corners = pick(points, hull);
    const std::size_t count = corners.size();
    const auto next = [count](std::size_t i) { return i + 1 < count ? i + 1 : 0; };
    const cv::Point2d across = corners[1] - corners[0];
    if (count == 2) return {corners[0], across / cv::norm(across), 0.0, hull};

    // One side lies along a side of the hull; the corner opposite goes round with it.
    Strip best;
    best.width = std::numeric_limits<double>::infinity();
    std::size_t opposite = 1;
    for (std::size_t i = 0; i < count; ++i) {
        const cv::Point2d side = corners[next(i)] - corners[i];
        const auto height = [&](std::size_t k) { return side.cross(corners[k] - corners[i]); };
        while (height(next(opposite)) > height(opposite)) opposite = next(opposite);
        const double length = cv::norm(side);
        const double width = height(opposite) / length;
        if (!(width < best.width)) continue;
        const cv::Point2d direction = side / length;
        const cv::Point2d inwards(-direction.y, direction.x);
        best = {
            corners[i] + width / 2.0 * inwards, direction, width, {hull[i], hull[next(i)], hull[opposite]}};
    }
    return best;
}

}  // namespace orx::zones
