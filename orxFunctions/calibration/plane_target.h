// Flat calibration targets: chessboards and dot grids, and what pictures show of them.
//
// All functions are reentrant. Nothing throws.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_TARGET_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

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

}  // namespace orx

#endif
