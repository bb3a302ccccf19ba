// A plane calibration without a lens, as small as one that can be written and read again.
#ifndef ORXFUNCTIONS_TESTS_SUPPORT_FLAT_PLANE_H
#define ORXFUNCTIONS_TESTS_SUPPORT_FLAT_PLANE_H

#include "orxFunctions/calibration/plane_calibration.h"

namespace test {

inline orx::TPlaneCalibration flatPlane() {
    orx::TPlaneCalibration plane;
    plane.status = orx::plOk;
    plane.lens = false;
    plane.imageSize = {640, 480};
    plane.degreesOfFreedom = 10;
    plane.views = 1;
    return plane;
}

}  // namespace test

#endif
