// The picture with what was measured in it.
#ifndef EXAMPLES_INSPECTION_ANNOTATE_H
#define EXAMPLES_INSPECTION_ANNOTATE_H

#include <opencv2/core.hpp>
#include <vector>

#include "inspection/measure/measurement.h"

namespace inspection {

// A colour copy of a grey picture, enlarged by a whole factor when it is small, with each feature's shape at
// its sub-pixel position (green, weak ones amber), the pixels of its contour that do not lie on the shape
// (magenta; the ends of a line's object excepted), its centre and its number. Reentrant.
cv::Mat annotate(const cv::Mat& grey, const std::vector<Feature>& features, double tolerance);

}  // namespace inspection

#endif
