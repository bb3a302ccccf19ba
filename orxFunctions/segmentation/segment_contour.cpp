#include "orxFunctions/segmentation/segment_contour.h"

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/segmentation/splitting/splitter.h"

namespace orx {

void TSegmentContour::segmentContour(std::vector<std::vector<cv::Point>> contours, TSegemetParams params) {
    for (const std::vector<cv::Point>& contour : contours) addPieces(contour, params);
}

std::pair<std::vector<TSegemetLine>, std::vector<TSegemetCircle>> TSegmentContour::segmentContour(
    std::vector<cv::Point> contour, TSegemetParams params) {
    if (!addPieces(contour, params)) return {};
    return {contourLines_.back(), contourCircles_.back()};
}

bool TSegmentContour::addPieces(const std::vector<cv::Point>& contour, const TSegemetParams& params) {
    if (contour.empty()) return refuse(rcTooFew, "segmentContour", "the contour is empty");
    if (contour.size() > splitting::Work::kMostPoints)
        return refuse(rcTooMany, "segmentContour", "the contour has %zu points; up to %zu are taken",
                      contour.size(), splitting::Work::kMostPoints);
    splitting::Pieces pieces = splitting::split(contour, params);
    if (pieces.isTooMuchWork)
        return refuse(rcTooMany, "segmentContour", "a contour of %zu points is too much work",
                      contour.size());
    if (pieces.lines.empty() && pieces.circles.empty())
        refuse(rcNoResult, "segmentContour", "%d key points at accuracies of %g and %g give no piece",
               pieces.keyPoints.rows, params.firstEpsilon, params.secondEpsilon);
    contourLines_.push_back(std::move(pieces.lines));
    contourCircles_.push_back(std::move(pieces.circles));
    lastKeyPoints_ = std::move(pieces.keyPoints);
    return true;
}

std::vector<std::vector<TSegemetLine>> TSegmentContour::getLines() { return contourLines_; }

std::vector<std::vector<TSegemetCircle>> TSegmentContour::getCircles() { return contourCircles_; }

}  // namespace orx
