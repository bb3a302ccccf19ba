// Shapes of the objects in a prepared picture.
#ifndef EXAMPLES_INSPECTION_MEASUREMENT_H
#define EXAMPLES_INSPECTION_MEASUREMENT_H

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "inspection/measure/preparation.h"
#include "inspection/run/settings.h"

namespace inspection {

enum class Shape { kCircle, kLine, kEllipse };

const char* nameOf(Shape shape);

// Standard uncertainties: what the noise of the edges leaves open. 0 where a value has none: the length of a
// line, which counts pixels, and all that an estimator on whole pixels finds. Of a round ellipse, whose angle
// nobody can tell, that of the angle is 52 degrees.
struct Deviations {
    double x = 0.0;  // of the centre of a circle or ellipse
    double y = 0.0;
    double radius = 0.0;
    double angle = 0.0;
    double length = 0.0;
    double width = 0.0;
    double offset = 0.0;  // of a line, across it
};

// One measured contour. Pixels, the centre of the top-left pixel at (0, 0); angles in degrees.
struct Feature {
    Shape shape = Shape::kCircle;
    cv::Point2d center;   // of the circle or ellipse; of a line the middle of the measured stretch
    double radius = 0.0;  // of a circle; of an ellipse that of the circle with its area

    // Lines and ellipses. The two long sides of an object make one axis; when just one side was found, the
    // line is that side and the width 0.
    double angle = 0.0;   // of the line or the longer axis: [0, 180), from the x axis towards the y axis
    double length = 0.0;  // extent of the contour along the line; longer axis of the ellipse
    double width = 0.0;   // distance of the two sides; shorter axis of the ellipse

    Deviations deviations;

    double area = 0.0;            // of the contour, square pixels
    int contourPoints = 0;        // without those on the picture's border
    double inlierRatio = 0.0;     // part of the contour points within the tolerance
    double meanResidual = 0.0;    // mean distance of all contour points from the shape
    double inlierResidual = 0.0;  // the same of the inliers alone
    bool weak = false;            // the inlier ratio is below the limit

    std::vector<cv::Point> contour;

    bool isRound() const { return shape != Shape::kLine; }
};

// Measures every outer contour of at least the least area, in reading order. Contours that elongate at least
// 2.5 times are measured as lines, others as circles, unless the settings choose the shape. A shape is found
// by consensus among the contour's pixels and then fitted to its inliers, each moved to where the grey
// profile of `grey` (the picture as it came) crosses the edge, or else half a pixel outwards. A contour
// with fewer than 8 points off the picture's border, or on which the search finds nothing, is left out.
//
// Where the settings name an estimator of the library (fit_estimators.h) it takes the place of the search;
// circles and lines are then the estimator's own result on whole pixels, set half a pixel outwards. Ellipses
// (ellipse_measure.h) go through edges in any case. Inlier ratio and residuals are counted alike for all, so
// that they can be compared. Equal input gives equal results. Draws from rand(): one thread at a time.
std::vector<Feature> measure(const cv::Mat& grey, const Preparation& prepared, const Settings& settings);

}  // namespace inspection

#endif
