// Flat calibration targets: chessboards and dot grids, found in pictures between the pixels, and printed to
// scale.
//
// All functions are reentrant. Nothing throws.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"

namespace orx {

enum TTargetKind : int {
    tkChessboard = 0,  // its points are the inner corners, where four squares meet
    tkDotGrid = 1      // its points are the centres of dots in rows and columns; dots dark on a bright ground
};

struct TTarget {
    TTargetKind kind = tkChessboard;
    // [9 x 6] Points across and down, 3 to 200 each.
    int columns = 9;
    int rows = 6;
    // [10] Millimetres from one to the next, 0.001 to 10,000.
    double pitch = 10.0;
    // [5] Of a dot, millimetres, 0.1 to 0.9 of the pitch.
    double diameter = 5.0;
};

// A target as a picture shows it.
struct TTargetView {
    bool found = false;
    std::string problem;             // why not, in English; empty where it is found
    cv::Size imageSize;              // of the picture
    std::vector<cv::Point2d> plane;  // millimetres, row by row: (0, 0), (pitch, 0), ...
    // Where they lie in the picture, pixels: corners, or the centres of the dots' outlines. In perspective
    // the centre of an outline is not the picture of the dot's centre; calibratePlane takes that into
    // account.
    std::vector<cv::Point2d> pixels;
    // The standard uncertainty of each in x and in y (the root of their mean square), pixels.
    std::vector<double> deviations;
    double dotDiameter = 0.0;  // millimetres; 0 for corners
};

// Looks for the whole target. Pictures are 8- or 16-bit unsigned with 1 to 4 channels, 20 to 32,767 pixels a
// side; anything else, options outside of their ranges among it, is answered by a view that is not found
// (rcEmptyImage, rcImageType, rcImageDimensions, rcImageSize, rcOption; rcNoResult where the target is not
// seen, rcFailed where OpenCV gives up).
//
// Rows and columns are numbered so that the millimetres' axes turn as the pixels' do (x to y clockwise on the
// screen), and that the rows lead to the right as far as the target allows: a board that looks the same half
// turned has no upper side of its own.
//
// Corners by A. Duda and U. Frese, "Accurate detection and localization of checkerboard corners for
// calibration", BMVC 2018 (OpenCV's findChessboardCornersSB), then where the grey levels are a saddle. Dots
// by their outlines: an ellipse through the edges along calipers across each (fitting/ellipse_geometric.h).
ORX_API TTargetView findTarget(const cv::Mat& img, const TTarget& target);

// A page to print without scaling, and where the target lies on it.
struct TTargetPage {
    // [297 x 210] Millimetres: A4 across. 10 to 10,000 each.
    double width = 297.0;
    double height = 210.0;
    // [true] A line of 100 mm (10 mm on small pages) below the target, by which to check the print.
    bool scaleBar = true;
};

// The page as a file of SVG, or of PDF, to scale; the target in its middle. Empty where options are outside
// of their ranges or the target, with a white margin of a pitch around it (of a quarter for dots), does not
// fit (rcOption).
ORX_API std::string targetToSvg(const TTarget& target, const TTargetPage& page = {});
ORX_API std::string targetToPdf(const TTarget& target, const TTargetPage& page = {});

}  // namespace orx

#endif
