// Pi, and degrees from radians and back.
#ifndef ORXFUNCTIONS_FOUNDATION_ANGLES_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_ANGLES_INTERNAL_H

namespace orx {

constexpr double kPi = 3.141592653589793;

constexpr double degrees(double radians) { return radians * 180 / kPi; }

// These two can differ in the last bit: a formula keeps the one that it was stated with.
constexpr double radians(double degrees) { return degrees * kPi / 180; }
constexpr double kRadiansPerDegree = kPi / 180;

}  // namespace orx

#endif
