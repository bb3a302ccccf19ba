// What is measured and how; the defaults are those of the command line.
#ifndef EXAMPLES_INSPECTION_SETTINGS_H
#define EXAMPLES_INSPECTION_SETTINGS_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "inspection/measure/shapes.h"
#include "inspection/parts/part_settings.h"

namespace inspection {

enum class Polarity { kAuto, kBright, kDark };
enum class ShapeChoice { kAuto, kCircle, kLine };
// What finds a shape among the pixels of a contour: this program's own search, or an estimator of the
// library.
enum class CircleEstimator { kSearch, kRansac, kRobust, kWeighted };
enum class LineEstimator { kSearch, kRansac, kRobust };
enum class EllipseEstimator { kNone, kNorm, kRansac };  // kNone: round objects are circles

struct Settings {
    // Finding the objects.
    std::string method = "otsu";  // a name of methods.h
    Polarity polarity = Polarity::kAuto;
    double smooth = 1.0;   // sigma of the Gaussian before the threshold, pixels; 0 is none
    int background = 0;    // side of the window that flattens uneven light, pixels; 0 is none
    int close = 0;         // side of the window that closes gaps in objects, pixels; 0 is none
    double minArea = 100;  // smaller contours are left out, square pixels

    // Measuring them.
    ShapeChoice shape = ShapeChoice::kAuto;
    CircleEstimator circle = CircleEstimator::kSearch;
    LineEstimator line = LineEstimator::kSearch;
    EllipseEstimator ellipse = EllipseEstimator::kNone;
    double tolerance = 2.0;   // a contour point within this distance of a shape supports it, pixels
    int trials = 200;         // random samples drawn for a contour at the most
    std::uint32_t seed = 1;   // of the random samples; equal seeds give equal results
    double minInliers = 0.5;  // shapes with a smaller inlier ratio are marked weak
    bool subPixel = true;     // place the edge between pixels by the grey profile across it

    // Looking at the picture in other ways.
    bool split = false;  // contours into lines and arcs
    bool edges = false;  // sub-pixel edges of the whole picture
    bool focus = false;  // how sharp it is
    std::vector<cv::Rect> calipers;
    std::vector<Circle> circleCalipers;

    PartSettings parts;
};

}  // namespace inspection

#endif
