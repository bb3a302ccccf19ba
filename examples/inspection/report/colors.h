// The colours that the pictures share; blue, green, red.
#ifndef EXAMPLES_INSPECTION_REPORT_COLORS_H
#define EXAMPLES_INSPECTION_REPORT_COLORS_H

#include <opencv2/core.hpp>

namespace inspection {

inline const cv::Scalar kGreen(90, 230, 60);
inline const cv::Scalar kYellow(40, 225, 255);
inline const cv::Scalar kLightBlue(255, 200, 40);

}  // namespace inspection

#endif
