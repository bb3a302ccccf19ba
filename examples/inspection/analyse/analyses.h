// What is found in a picture beside its features, as far as the settings ask for it.
#ifndef EXAMPLES_INSPECTION_ANALYSES_H
#define EXAMPLES_INSPECTION_ANALYSES_H

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "inspection/measure/calipers.h"
#include "inspection/measure/contour_pieces.h"
#include "inspection/measure/edge_chains.h"
#include "inspection/measure/measurement.h"
#include "inspection/parts/part_search.h"
#include "inspection/run/settings.h"

namespace inspection {

// The library's focus measures of the whole picture (orxFunctions/analysis/focus.h).
struct FocusValues {
    double greyDifference = 0.0;
    double brenner = 0.0;
    double tenengrad = 0.0;
    double laplacianVariance = 0.0;
};

struct Analyses {
    std::optional<std::vector<SplitContour>> contours;
    std::optional<EdgeChains> edges;
    std::vector<BoxCaliper> boxCalipers;
    std::vector<CircleCaliper> circleCalipers;
    std::optional<FocusValues> focus;
    // Not of analyse(): a run adds them (run.cpp).
    std::optional<TaughtPart> taught;
    std::optional<FoundParts> parts;
};

// `grey` is the 8-bit picture as it came. One thread at a time.
Analyses analyse(const cv::Mat& grey, const std::vector<Feature>& features, const Settings& settings);

}  // namespace inspection

#endif
