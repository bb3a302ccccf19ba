#include "inspection/measure/contour_pieces.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/segmentation/segment_contour.h"
#include "support/angles.h"

namespace inspection {
namespace {

// The library's own values suit arcs of 60 pixels and more. Of a smaller part both polygons must be finer, or
// two chords would have to stand for a whole quarter of a circle.
orx::TSegemetParams paramsFor(const std::vector<cv::Point>& contour) {
    const cv::Rect box = cv::boundingRect(contour);
    const double extent = std::max(box.width, box.height);
    orx::TSegemetParams params;
    params.firstEpsilon = std::clamp(extent / 40.0, 1.5, 8.0);
    params.secondEpsilon = std::clamp(extent / 80.0, 1.2, 2.0);
    params.minRadius = 3.0;
    params.maxRadius = 2.0 * extent;
    params.mergeCenterDist = std::clamp(extent / 10.0, 3.0, 50.0);
    params.errThreshold = std::clamp(extent / 100.0, 1.0, 3.5);
    return params;
}

StraightPiece straightPiece(const orx::TSegemetLine& line) {
    StraightPiece piece;
    piece.deviation = line.maxDist;
    const bool isFitted = line.fitA != 0.0 || line.fitB != 0.0;
    if (!isFitted) {
        piece.from = cv::Point(line.startPoint[0], line.startPoint[1]);
        piece.to = cv::Point(line.endPoint[0], line.endPoint[1]);
        return piece;
    }
    const auto foot = [&](cv::Point p) {
        return orx::TSegemetLine::findCrossPoint(p, line.fitA, line.fitB, line.fitC);
    };
    piece.from = foot(line.fitStartPoint);
    piece.to = foot(line.fitEndPoint);
    piece.deviation = 0.0;
    for (const cv::Point& p : line.fitPoints)
        piece.deviation = std::max(piece.deviation,
                                   orx::TSegemetLine::point2LineDistAbs(p, line.fitA, line.fitB, line.fitC));
    return piece;
}

}  // namespace

double StraightPiece::length() const { return cv::norm(to - from); }

double StraightPiece::angle() const {
    const double degrees = std::atan2(to.y - from.y, to.x - from.x) * (180.0 / scenes::kPi);
    return std::fmod(degrees + 360.0, 180.0);
}

std::vector<SplitContour> splitContours(const std::vector<Feature>& features) {
    std::vector<SplitContour> results;
    for (std::size_t i = 0; i < features.size(); ++i) {
        orx::TSegmentContour splitter;
        const auto [lines, arcs] =
            splitter.segmentContour(features[i].contour, paramsFor(features[i].contour));
        SplitContour result;
        result.feature = i;
        for (const orx::TSegemetLine& line : lines)
            if (!line.usedByCircle) result.lines.push_back(straightPiece(line));
        for (const orx::TSegemetCircle& arc : arcs)
            if (arc.isCircle)
                result.arcs.push_back({{arc.center, arc.radius}, arc.startAngle, arc.endAngle, arc.fitError});
        results.push_back(std::move(result));
    }
    return results;
}

}  // namespace inspection
