// The analyses of a picture as parts of the reports.
#ifndef EXAMPLES_INSPECTION_ANALYSES_SECTIONS_H
#define EXAMPLES_INSPECTION_ANALYSES_SECTIONS_H

#include <opencv2/core.hpp>
#include <vector>

#include "inspection/analyse/analyses.h"
#include "inspection/report/section.h"

namespace inspection {

// One section for each analysis that was made. `grey` is the picture. Reentrant.
std::vector<Section> sectionsOf(const cv::Mat& grey, const Analyses& analyses);

}  // namespace inspection

#endif
