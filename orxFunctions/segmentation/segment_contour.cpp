#include "orxFunctions/segmentation/segment_contour.h"

#include "orxFunctions/segmentation/splitting/splitter.h"

namespace orx {

void TSegmentContour::segmentContour(std::vector<std::vector<cv::Point>> contours, TSegemetParams params) {
    for (const std::vector<cv::Point>& contour : contours) addPieces(contour, params);
}

std::pair<std::vector<TSegemetLine>, std::vector<TSegemetCircle>> TSegmentContour::segmentContour(
    std::vector<cv::Point> contour, TSegemetParams params) {
    if (contour.empty()) return {};
    addPieces(contour, params);
    return {contourLines_.back(), contourCircles_.back()};
}

void TSegmentContour::addPieces(const std::vector<cv::Point>& contour, const TSegemetParams& params) {
    if (contour.empty()) return;
    splitting::Pieces pieces = splitting::split(contour, params);
    contourLines_.push_back(std::move(pieces.lines));
    contourCircles_.push_back(std::move(pieces.circles));
    lastKeyPoints_ = std::move(pieces.keyPoints);
}

std::vector<std::vector<TSegemetLine>> TSegmentContour::getLines() { return contourLines_; }

std::vector<std::vector<TSegemetCircle>> TSegmentContour::getCircles() { return contourCircles_; }

}  // namespace orx
