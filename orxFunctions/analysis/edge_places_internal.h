// Where calipers and probes may lie.
#ifndef ORXFUNCTIONS_ANALYSIS_EDGE_PLACES_INTERNAL_H
#define ORXFUNCTIONS_ANALYSIS_EDGE_PLACES_INTERNAL_H

#include <opencv2/core.hpp>

namespace orx {

constexpr double kFarthestEdge = 1e6;  // from the origin, pixels

// Whether a place is finite (or else rcNotFinite) and within kFarthestEdge on both axes (or else rcOption),
// refused in the name of the public function. `name` is what the function calls the place.
bool takesPlace(const char* function, const char* name, cv::Point2d place) noexcept;

// Whether an angle is finite, or else rcNotFinite.
bool takesAngle(const char* function, const char* name, double angle) noexcept;

}  // namespace orx

#endif
