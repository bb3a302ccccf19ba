// A camera's calibration from photographs of a chessboard.
#ifndef ORX_EXAMPLES_CALIBRATION_CAMERA_CALIBRATION_H
#define ORX_EXAMPLES_CALIBRATION_CAMERA_CALIBRATION_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace calibration {

// A chessboard: its inner corners, where four squares meet, and the length of a square in any unit.
struct Board {
    cv::Size corners{9, 6};
    double square = 1;
};

struct Photograph {
    std::string file;                  // in UTF-8
    std::vector<cv::Point2f> corners;  // sub-pixel, row by row; empty where the board was not found
    double error = 0;                  // pixels, root mean square over its corners; set by calibrate
};

struct Calibration {
    bool valid = false;
    cv::Mat intrinsic;
    cv::Mat distortion;
    cv::Size imageSize;
    double error = 0;  // pixels, root mean square over all corners
};

// The corners of the board in a grey picture; empty when it is not there whole.
std::vector<cv::Point2f> findCorners(const cv::Mat& grey, const Board& board);

// Looks for the board in each file, named in UTF-8. Files that are no pictures have no corners.
std::vector<Photograph> readPhotographs(const std::vector<std::string>& files, const Board& board,
                                        cv::Size& imageSize);

// Invalid when fewer than 3 photographs show the board.
Calibration calibrate(std::vector<Photograph>& photographs, const Board& board, cv::Size imageSize);

// The inner corners of the chessboard that orx::createCalibrateImage draws.
cv::Size targetCorners(cv::Size imageSize, int squareSize, int margin);

}  // namespace calibration

#endif
