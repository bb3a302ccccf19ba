#include "orxFunctions/segmentation/segment_contour.h"

#include <cstddef>
#include <utility>

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/parallel_internal.h"
#include "orxFunctions/segmentation/splitting/splitter.h"

namespace orx {
namespace {

using Contour = std::vector<cv::Point>;

splitting::Pieces piecesOf(const Contour& contour, const TSegemetParams& params) {
    if (contour.size() > splitting::Work::kMostPoints) return {};
    return splitting::split(contour, params);
}

// Where the results of a splitter go.
struct Results {
    std::vector<std::vector<TSegemetLine>>& lines;
    std::vector<std::vector<TSegemetCircle>>& circles;
    cv::Mat& keyPoints;
};

// Appends the pieces of a contour; false, and nothing added, for what is refused.
bool append(const Contour& contour, const TSegemetParams& params, splitting::Pieces&& pieces,
            const Results& results) {
    if (contour.empty()) return refuse(rcTooFew, "segmentContour", "the contour is empty");
    if (contour.size() > splitting::Work::kMostPoints)
        return refuse(rcTooMany, "segmentContour", "the contour has %zu points; up to %zu are taken",
                      contour.size(), splitting::Work::kMostPoints);
    if (pieces.isTooMuchWork)
        return refuse(rcTooMany, "segmentContour", "a contour of %zu points is too much work",
                      contour.size());
    if (pieces.lines.empty() && pieces.circles.empty())
        refuse(rcNoResult, "segmentContour", "%d key points at accuracies of %g and %g give no piece",
               pieces.keyPoints.rows, params.firstEpsilon, params.secondEpsilon);
    results.lines.push_back(std::move(pieces.lines));
    results.circles.push_back(std::move(pieces.circles));
    results.keyPoints = std::move(pieces.keyPoints);
    return true;
}

// Cuts a list of contours into stretches of about as many points, a millisecond or so each: where they begin,
// and the end.
std::vector<std::size_t> stretchesOf(const std::vector<Contour>& contours) {
    constexpr std::size_t kPointsOfAStretch = 2048;
    std::vector<std::size_t> starts = {0};
    std::size_t points = 0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        points += contours[i].size();
        if (points < kPointsOfAStretch && i + 1 < contours.size()) continue;
        starts.push_back(i + 1);
        points = 0;
    }
    return starts;
}

}  // namespace

void TSegmentContour::segmentContour(std::vector<std::vector<cv::Point>> contours, TSegemetParams params) {
    std::vector<splitting::Pieces> pieces(contours.size());
    const std::vector<std::size_t> starts = stretchesOf(contours);
    const auto split = [&](int stretch) {
        const auto number = static_cast<std::size_t>(stretch);
        for (std::size_t i = starts[number]; i < starts[number + 1]; ++i)
            pieces[i] = piecesOf(contours[i], params);
    };
    const int stretches = static_cast<int>(starts.size()) - 1;
    if (stretches == 1) {
        split(0);
    } else {
        platform::parallelFor(stretches, split);
    }
    // What is refused is told on this thread, in the order of the contours.
    for (std::size_t i = 0; i < contours.size(); ++i)
        append(contours[i], params, std::move(pieces[i]), {contourLines_, contourCircles_, lastKeyPoints_});
}

std::pair<std::vector<TSegemetLine>, std::vector<TSegemetCircle>> TSegmentContour::segmentContour(
    std::vector<cv::Point> contour, TSegemetParams params) {
    if (!addPieces(contour, params)) return {};
    return {contourLines_.back(), contourCircles_.back()};
}

bool TSegmentContour::addPieces(const std::vector<cv::Point>& contour, const TSegemetParams& params) {
    return append(contour, params, piecesOf(contour, params),
                  {contourLines_, contourCircles_, lastKeyPoints_});
}

std::vector<std::vector<TSegemetLine>> TSegmentContour::getLines() { return contourLines_; }

std::vector<std::vector<TSegemetCircle>> TSegmentContour::getCircles() { return contourCircles_; }

}  // namespace orx
