#include "inspection/analyse/analyses.h"

#include "orxFunctions/analysis/focus.h"

namespace inspection {

Analyses analyse(const cv::Mat& grey, const std::vector<Feature>& features, const Settings& settings) {
    Analyses result;
    if (settings.split) result.contours = splitContours(features);
    if (settings.edges) result.edges = findEdgeChains(grey);
    for (const cv::Rect& box : settings.calipers) result.boxCalipers.push_back(searchBox(grey, box));
    for (const Circle& circle : settings.circleCalipers)
        result.circleCalipers.push_back(searchCircleEdges(grey, circle));
    if (settings.focus)
        result.focus = FocusValues{AutoFocus::calcGrayDifference(grey), AutoFocus::calcBrenner(grey),
                                   AutoFocus::calcTenengrad(grey), AutoFocus::calcLaplacianVariance(grey)};
    return result;
}

}  // namespace inspection
