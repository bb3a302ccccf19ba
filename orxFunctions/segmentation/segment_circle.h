// A circular piece of a contour, built from points, lines and smaller arcs.
#ifndef ORXFUNCTIONS_SEGMENTATION_SEGMENT_CIRCLE_H
#define ORXFUNCTIONS_SEGMENTATION_SEGMENT_CIRCLE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/segmentation/segment_line.h"

namespace orx {

// Coordinates are pixels, x to the right and y down; angles are degrees from the x axis towards the y axis
// (clockwise on the screen). A plain value; one thread at a time.
//
// An arc fitted to its parts by weighted least squares is declared a true circle (`isCircle`) by an
// acceptance rule, which also marks the parts as absorbed: lines get `usedByCircle`, arcs lose `isCircle`.
// Rejected arcs leave their parts untouched; to be rejected is an answer, no refusal. Parts without points
// leave the angles that would need them as they were.
//
// Constructors and fits say through lastRefusal() when their points determine no circle: fewer than three
// (rcTooFew), or all on a line or in one place (rcDegenerate). Centre and radius are of no use then, mostly
// not-a-number.
class ORX_API TSegemetCircle {  // the spelling is part of the interface
  public:
    TSegemetCircle() = default;
    // The circle through three points; neither points nor angles are set.
    TSegemetCircle(cv::Vec2i p1, cv::Vec2i p2, cv::Vec2i p3);
    explicit TSegemetCircle(TSegemetLine& line);
    // In the next three: the radius bounds replace the defaults only when greater than 0, the error bound
    // always does, which is intended.
    TSegemetCircle(TSegemetLine& l1, TSegemetLine& l2, double maxRadiusBound, double minRadiusBound,
                   double errorBound);
    TSegemetCircle(TSegemetCircle& c1, TSegemetCircle& c2, double maxRadiusBound, double minRadiusBound,
                   double errorBound, bool flag);
    TSegemetCircle(TSegemetCircle& c, TSegemetLine& l, double maxRadiusBound, double minRadiusBound,
                   double errorBound, bool reversed);

    // The circle through three points. Collinear ones (determinant below 1e-5) give centre (-1, -1) and
    // radius -1 (rcDegenerate).
    void generateCircle(cv::Vec2i p1, cv::Vec2i p2, cv::Vec2i p3);
    // The circle through both ends of l1 and the end of l2; accepted when no point of the two deviates more
    // than the smaller of the lines' own deviations.
    void generateCircle(TSegemetLine& l1, TSegemetLine& l2);

    // Least-squares arcs. Accepted when
    // (line)       the line's deviation is not below the fit error;
    // (l1, l2)     the fit error is below the error bound, or below 4.0 and not above the parts' deviation;
    // and the
    //              radius lies strictly between its bounds;
    // (c1, c2)     the radius lies strictly between its bounds; the flag is ignored, intended;
    // (c, l)       as (l1, l2), with inclusive bounds and 4.5; `reversed` puts the line in front of the arc.
    void generateCircleWithTurkey(TSegemetLine& line);
    void generateCircleWithTurkey(TSegemetLine& l1, TSegemetLine& l2);
    void generateCircleWithTurkey(TSegemetCircle& c1, TSegemetCircle& c2, bool flag);
    void generateCircleWithTurkey(TSegemetCircle& c, TSegemetLine& l, bool reversed);

    // Sets the angles of the arc that runs from `first` through `middle` to `last`, in either direction:
    // startAngle <= endAngle, and startAngle may be negative.
    void getCircleAngle(cv::Vec2i first, cv::Vec2i middle, cv::Vec2i last);
    // Sets the angles to the directions of the chords from l1's start to l1's end and to l2's end, y taken
    // upwards; they are not angles about the centre.
    void getAngle2(TSegemetLine& l1, TSegemetLine& l2);
    // The direction of p from the centre, (0, 360]: exactly to the right is 360.
    double getPointAngle(cv::Vec2i p);

    // The distance of p from the outline.
    double point2CircleDist(cv::Point2d p);
    // The largest such distance; 0 for no points (rcTooFew), not-a-number for a degenerate circle
    // (rcNotFinite).
    double point2CircleDistacne(std::vector<cv::Point> pts);

    // Draws each point as a small circle; the colour is blue, green, red. An image that is empty
    // (rcEmptyImage), of more than two dimensions (rcImageDimensions) or 4 channels (rcImageType) stays as it
    // is.
    void displayPionts(cv::Mat& image, cv::Vec3b colour);

    cv::Point2d center;
    double radius = 0.0;         // pixels
    cv::Vec2i startPoint;        // set by the three-point constructions only
    cv::Vec2i endPoint;          // likewise
    double startAngle = 0.0;     // degrees
    double endAngle = 0.0;       // degrees
    double fitError = 0.0;       // largest deviation of a point from the outline, pixels
    double partMaxDist = 0.0;    // deviation bound of the parts, pixels
    double firstMaxDist = 0.0;   // deviation of the first part
    double secondMaxDist = 0.0;  // deviation of the second part
    std::vector<cv::Point> points;
    bool isCircle = false;  // accepted, and not absorbed by a larger arc since
    std::vector<cv::Point> firstPoints;
    std::vector<cv::Point> secondPoints;
    double errThreshold = 3.5;  // pixels
    double maxRadius = 300.0;   // exclusive, pixels
    double minRadius = 60.0;    // exclusive, pixels
};

}  // namespace orx

#endif
