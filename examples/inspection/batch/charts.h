// Histogram and run chart of one value, as small pictures for the report.
#ifndef EXAMPLES_INSPECTION_BATCH_CHARTS_H
#define EXAMPLES_INSPECTION_BATCH_CHARTS_H

#include <string>

#include "orxFunctions/orxfunctions.h"

namespace inspection {

// SVG elements of bounded size, with the limits of the tolerance marked; "" without values.
std::string toleranceHistogramSvg(const orx::TRunStatistics& statistics);
std::string runChartSvg(const orx::TRunStatistics& statistics);

}  // namespace inspection

#endif
