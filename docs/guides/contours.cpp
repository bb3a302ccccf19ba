// Guide "contours to lines and arcs": from a thresholded part to its sides, and to measured ones.
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

// [outline]
// The outline of the largest object, every pixel of it; empty where there is none.
std::vector<cv::Point> outlineOf(const cv::Mat& grey) {
    const int level = orx::getThresholdValue(grey, orx::tmOtsu);
    if (level < 0) return {};
    const cv::Mat binary = grey > level;
    const auto contours = orx::getContours(binary, orx::ctLargest);
    return contours.empty() ? std::vector<cv::Point>() : contours[0];
}
// [outline end]

// [pieces]
struct Pieces {
    std::vector<orx::TSegemetLine> lines;
    std::vector<orx::TSegemetCircle> arcs;
};

Pieces piecesOf(const std::vector<cv::Point>& outline) {
    orx::TSegemetParams params;
    params.firstEpsilon = 4;  // how far the outline may leave the first polygon
    params.minRadius = 20;
    params.maxRadius = 200;
    orx::TSegmentContour splitter;
    const auto pieces = splitter.segmentContour(outline, params);
    return {pieces.first, pieces.second};
}
// [pieces end]

constexpr double kFromCorners = 6;  // pixels that a side loses at each end

// [line]
// Not valid() where the side is too short, or its edge is not found.
orx::TMeasuredLine measured(const cv::Mat& grey, const orx::TSegemetLine& piece) {
    const cv::Point2d start(piece.startPoint[0], piece.startPoint[1]);
    const cv::Point2d end(piece.endPoint[0], piece.endPoint[1]);
    if (cv::norm(end - start) <= 2 * kFromCorners) return {};
    const cv::Point2d inwards = kFromCorners * (end - start) / cv::norm(end - start);
    const auto edges = orx::edgesAcross(grey, orx::probesAlongLine(start + inwards, end - inwards));
    orx::TFitOptions options;
    options.noise = orx::pnEdgeChain;
    options.smoothing = orx::kContourEdgeSmoothing;
    options.loss = orx::flTukey;
    return orx::fitLineGeometric(orx::pointsOf(edges), options);
}
// [line end]

// [arc]
orx::TMeasuredArc measured(const cv::Mat& grey, const orx::TSegemetCircle& piece) {
    const double margin = kFromCorners / piece.radius * 180 / CV_PI;  // degrees
    const double sweep = piece.endAngle - piece.startAngle;
    if (sweep <= 2 * margin) return {};
    const auto probes = orx::probesAlongCircle(piece.center, piece.radius, 1.0, piece.startAngle + margin,
                                               sweep - 2 * margin);
    orx::TFitOptions options;
    options.noise = orx::pnEdgeChain;
    options.smoothing = orx::kContourEdgeSmoothing;
    options.loss = orx::flTukey;
    return orx::fitArcGeometric(orx::pointsOf(orx::edgesAcross(grey, probes)), options);
}
// [arc end]

// A plate that ends in half a disk.
const scenes::Disk kEnd{{186.4, 118.7}, 62.3};
constexpr double kAngle = 14;
constexpr double kLength = 130;

cv::Mat plate() {
    const cv::Point2d along(std::cos(kAngle * CV_PI / 180), std::sin(kAngle * CV_PI / 180));
    cv::Mat ideal(220, 280, CV_32F, cv::Scalar(50.0));
    scenes::paint(ideal, scenes::Bar{kEnd.center - kLength / 2 * along, kAngle, kLength, 2 * kEnd.radius},
                  180.0);
    scenes::paint(ideal, kEnd, 180.0);
    return scenes::expose(ideal, {0.2, 0.8, 3, 4});
}

void drawPieces(const cv::Mat& grey, const Pieces& pieces) {
    guide::Enlarged panel(grey, 3);
    for (const orx::TSegemetLine& line : pieces.lines) {
        for (const cv::Point& p : line.points) panel.dot(p, 1.5, guide::kBlue);
        for (const cv::Vec2i& end : {line.startPoint, line.endPoint})
            panel.dot({double(end[0]), double(end[1])}, 5, guide::kRed);
    }
    for (const orx::TSegemetCircle& arc : pieces.arcs) {
        for (const cv::Point& p : arc.points) panel.dot(p, 1.5, guide::kGreen);
        panel.dot(arc.center, 4, guide::kGreen);
    }
    guide::save("contours-pieces", panel.canvas());
}

void make() {
    const cv::Mat grey = plate();
    const std::vector<cv::Point> outline = outlineOf(grey);
    const Pieces pieces = piecesOf(outline);
    drawPieces(grey, pieces);
    guide::expect(pieces.lines.size() == 3 && pieces.arcs.size() == 1, "three lines and an arc");
    if (pieces.lines.size() != 3 || pieces.arcs.size() != 1) return;
    for (const orx::TSegemetLine& line : pieces.lines) {
        const orx::TMeasuredLine side = measured(grey, line);
        std::printf("line at %.3f degrees, standard uncertainty %.3f\n", side.angle, side.angleDeviation);
        const double off = std::remainder(side.angle - kAngle, 90);
        guide::expectAbout(off, 0, 3 * side.angleDeviation, "angle of a side off the truth");
    }
    orx::TSegemetLine point = pieces.lines[0];
    point.endPoint = point.startPoint;
    guide::expect(!measured(grey, point).valid(), "a side without length is not measured");
    const orx::TSegemetCircle& arc = pieces.arcs[0];
    orx::TSegemetCircle tip = arc;
    tip.endAngle = tip.startAngle + 5;
    guide::expect(!measured(grey, tip).valid(), "nor is an arc that loses all of it");
    const orx::TMeasuredArc end = measured(grey, arc);
    std::printf("arc of radius %.2f by its pixels, %.3f measured, standard uncertainty %.3f\n", arc.radius,
                end.radius, end.radiusDeviation);
    guide::expectAbout(arc.radius, 61.72, 0.1, "radius by pixels");
    guide::expectAbout(end.radius, kEnd.radius, 3 * end.radiusDeviation, "radius off the truth");

    // [relations]
    const orx::TMeasuredLine left = measured(grey, pieces.lines[0]);
    const orx::TMeasuredLine lower = measured(grey, pieces.lines[1]);
    const orx::TMeasuredValue corner = orx::angle(left, lower);
    if (corner.valid())  // not where one of the lines is not
        std::printf("the corner has %.3f degrees, standard uncertainty %.3f\n", corner.value,
                    corner.deviation);
    // [relations end]
    guide::expect(corner.valid(), "both sides are measured");
    guide::expectAbout(corner.value, 90, 3 * corner.deviation, "the corner is square");

    orx::TSegemetParams chords;
    chords.firstEpsilon = 4;
    chords.useCircles = false;
    const std::size_t count = orx::TSegmentContour().segmentContour(outline, chords).first.size();
    std::printf("%zu chords without arcs\n", count);
    guide::expectAbout(static_cast<double>(count), 13, 2, "chords without arcs");
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
