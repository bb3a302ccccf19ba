#include "orxFunctions/segmentation/splitting/drawn_steps.h"

namespace orx::splitting {

TSegemetParams developmentParams(int smoothSize, double epsilon, double secondFlag, double radiusLimit) {
    constexpr double kNoArcs = 5.0;
    TSegemetParams params;
    params.smoothSize = smoothSize;
    params.firstEpsilon = epsilon;
    if (radiusLimit != 0) params.maxRadius = radiusLimit;
    if (radiusLimit == kNoArcs) params.useCircles = false;
    if (secondFlag == 0.0) params.useSecondPass = false;
    return params;
}

std::vector<Pieces> splitDrawn(const std::vector<std::vector<cv::Point>>& contours,
                               const TSegemetParams& params, const cv::Mat& background, DrawnSteps& steps) {
    const auto draw = [&](const Pieces& pieces) {
        steps = {background.clone(), background.clone(), background.clone()};
        TSegmentContour::disPlayKeyPointsForTest(steps.keyPoints, pieces.keyPoints, true);
        TSegmentContour::disPlayLinesForTest(steps.lines, pieces.lines);
        TSegmentContour::disPlayCircleForTest(steps.circles, pieces.circles);
    };
    std::vector<Pieces> results;
    for (const std::vector<cv::Point>& contour : contours) {
        if (!contour.empty()) results.push_back(split(contour, params, draw));
    }
    return results;
}

}  // namespace orx::splitting
