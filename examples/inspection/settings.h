// What is measured and how; the defaults are those of the command line.
#ifndef EXAMPLES_INSPECTION_SETTINGS_H
#define EXAMPLES_INSPECTION_SETTINGS_H

#include <cstdint>
#include <string>

namespace inspection {

enum class Polarity { kAuto, kBright, kDark };
enum class ShapeChoice { kAuto, kCircle, kLine };

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
    double tolerance = 2.0;   // a contour point within this distance of a shape supports it, pixels
    int trials = 200;         // random samples drawn for a contour
    std::uint32_t seed = 1;   // of the random samples; equal seeds give equal results
    double minInliers = 0.5;  // shapes with a smaller inlier ratio are marked weak
    bool subPixel = true;     // place the edge between pixels by the grey profile across it
};

}  // namespace inspection

#endif
