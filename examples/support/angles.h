// Pi and the degree in radians.
#ifndef EXAMPLES_SUPPORT_ANGLES_H
#define EXAMPLES_SUPPORT_ANGLES_H

namespace scenes {

constexpr double kPi = 3.141592653589793;
constexpr double kDegree = kPi / 180.0;

}  // namespace scenes

#endif
