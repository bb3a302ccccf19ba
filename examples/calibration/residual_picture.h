// A picture of how a calibration fits: where the points of all views lay, and how far each is off, enlarged.
#ifndef ORX_EXAMPLES_CALIBRATION_RESIDUAL_PICTURE_H
#define ORX_EXAMPLES_CALIBRATION_RESIDUAL_PICTURE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace calibration {

// In BGR, 1200 pixels wide. The field that the targets covered is light; a vector begins at each found point
// and leads the way that it lies off, in a colour of its view, `orange` for the view of the plane. A line
// below tells the scale.
cv::Mat drawResiduals(const orx::TPlaneCalibration& calibration, const std::vector<orx::TTargetView>& views,
                      std::size_t planeView);

}  // namespace calibration

#endif
