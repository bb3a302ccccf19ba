#include "orxFunctions/analysis/edge_places_internal.h"

#include <cmath>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

bool takesPlace(const char* function, const char* name, cv::Point2d place) noexcept {
    if (!std::isfinite(place.x) || !std::isfinite(place.y))
        return refuse(rcNotFinite, function, "%s is %g, %g", name, place.x, place.y);
    if (std::fabs(place.x) <= kFarthestEdge && std::fabs(place.y) <= kFarthestEdge) return true;
    return refuse(rcOption, function, "%s is %g, %g; up to %g pixels from the origin is taken", name, place.x,
                  place.y, kFarthestEdge);
}

bool takesAngle(const char* function, const char* name, double angle) noexcept {
    return std::isfinite(angle) || refuse(rcNotFinite, function, "%s is %g", name, angle);
}

}  // namespace orx
