// Edges between pixels, seen closely.
#ifndef EXAMPLES_INSPECTION_CLOSEUP_PLOT_H
#define EXAMPLES_INSPECTION_CLOSEUP_PLOT_H

#include <opencv2/core.hpp>
#include <string>

#include "inspection/measure/edge_chains.h"

namespace inspection {

// The crop of `edges` out of the grey picture as an SVG element: every pixel a square, its levels stretched
// to the full range, the edge points as dots at their sub-pixel places with their chains as lines. The units
// of the SVG are the picture's pixels.
std::string closeupSvg(const cv::Mat& grey, const EdgeChains& edges);

}  // namespace inspection

#endif
