// A histogram as a small picture for the report.
#ifndef EXAMPLES_INSPECTION_HISTOGRAM_PLOT_H
#define EXAMPLES_INSPECTION_HISTOGRAM_PLOT_H

#include <array>
#include <string>

namespace inspection {

// An SVG element: 256 bars on a square-root scale (so that small objects can be seen beside a large
// background), the object's side of the level filled darker, and the level marked and named.
std::string histogramSvg(const std::array<int, 256>& histogram, int level, bool brightObjects);

}  // namespace inspection

#endif
