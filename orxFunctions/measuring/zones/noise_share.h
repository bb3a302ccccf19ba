// What noise adds to zones: their mean over simulated outlines of a form with this noise, less the form's
// own.
#ifndef ORXFUNCTIONS_MEASURING_ZONES_NOISE_SHARE_H
#define ORXFUNCTIONS_MEASURING_ZONES_NOISE_SHARE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/measuring/form.h"

namespace orx::zones {

enum ZoneKind : int { zkLeastWidth = 0, zkAround = 1, zkWithin = 2 };

// One point of an outline: how far it departs from the shape, and what the departure changes by when the
// shape moves. For rings the departure is the distance from the centre, and the shift the direction from
// there; for strips the distance from the middle line, and (place along it, 0).
struct OutlinePoint {
    double departure = 0.0;
    cv::Point2d shift;
    double place = 0.0;  // along the outline: radians, or pixels along the strip
};

struct Outline {
    std::vector<OutlinePoint> points;  // as given
    bool closed = false;               // the last place is followed by the first
    double length = 0.0;               // along the outline, in the unit of the noise's smoothing
};

// Means of what the noise adds, and the standard deviations that it gives.
struct NoiseShare {
    double width = 0.0;
    double inner = 0.0;
    double outer = 0.0;
    double widthDeviation = 0.0;
    double innerDeviation = 0.0;
    double outerDeviation = 0.0;
};

// `noise` of the options above 0.
NoiseShare noiseShare(const Outline& outline, ZoneKind kind, const TFormOptions& options);

}  // namespace orx::zones

#endif
