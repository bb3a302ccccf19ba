// A straight piece of a contour: the chord between two key points, the contour points along it, and a robust
// line.
#ifndef ORXFUNCTIONS_SEGMENTATION_SEGMENT_LINE_H
#define ORXFUNCTIONS_SEGMENTATION_SEGMENT_LINE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// Coordinates are pixels, x to the right and y down. A plain value; one thread at a time. Fewer than three
// points leave the fitted line as it was (rcTooFew), also in constructors.
class ORX_API TSegemetLine {  // the spelling is part of the interface
  public:
    TSegemetLine() = default;
    // A chord whose points are known.
    TSegemetLine(cv::Vec2i start, cv::Vec2i end, std::vector<cv::Point> points);
    // A chord that collects its points from the whole contour: see findLinePoints.
    TSegemetLine(cv::Vec2i start, cv::Vec2i end, std::vector<cv::Point> contour, double tolerance);
    // Only the robust line; the chord's coefficients stay 0, intended. The ends are the first and the last
    // point.
    explicit TSegemetLine(std::vector<cv::Point> points);

    // The chord line through two points, its normal of unit length; two points in one column give x = p2.x.
    void generateLine(cv::Vec2i p1, cv::Vec2i p2);

    // Appends to `points` the contour points between `startPoint` and `endPoint` (the end itself excluded)
    // that lie within `tolerance` pixels of the chord line, inclusively, and whose foot on it lies in the
    // chord's bounding box; `maxDist` becomes the largest of their distances. The search begins at the first
    // contour point that equals `startPoint`; a piece that runs off the contour's end goes on at its
    // beginning. There are none in an empty contour (rcTooFew), nor within a tolerance that is negative or
    // not a number (rcOption).
    void findLinePoints(std::vector<cv::Point>& contour, double tolerance);

    // Fits a line to `points` (Huber weights, accuracy 0.01), directed from start to end, and appends the
    // points closer than 3 pixels to `fitPoints`. P. J. Huber, "Robust estimation of a location parameter",
    // Ann. Math. Statist. 35 (1964).
    void fitLineWithContoursWithTurkey();

    // The foot of the perpendicular from p on the line a x + b y + c = 0. Here and below a = b = 0 gives
    // what is not a number, or infinite.
    static cv::Point2d findCrossPoint(cv::Point p, double a, double b, double c);
    // The distance of p from the line a x + b y + c = 0; both names give the absolute distance.
    static double point2LineDist(cv::Point p, double a, double b, double c);
    static double point2LineDistAbs(cv::Point p, double a, double b, double c);

    cv::Vec2i startPoint;     // a key point of the contour
    cv::Vec2i endPoint;       // the next one
    cv::Point fitStartPoint;  // first and last inlier of the fitted line
    cv::Point fitEndPoint;
    double chordA = 0.0;  // chord line a x + b y + c = 0, unit normal
    double chordB = 0.0;
    double chordC = 0.0;
    double fitA = 0.0;  // fitted line, unit normal
    double fitB = 0.0;
    double fitC = 0.0;
    std::vector<cv::Point> points;     // the contour points of this piece
    std::vector<cv::Point> fitPoints;  // those of them near the fitted line, in the same order
    bool usedByCircle = false;         // an accepted arc stands for this piece
    double maxDist = 0.0;              // largest distance of a point from the chord line, pixels
};

}  // namespace orx

#endif
