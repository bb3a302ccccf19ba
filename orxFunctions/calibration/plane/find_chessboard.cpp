#include "orxFunctions/calibration/plane/find_chessboard.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/calibration/plane/saddle.h"

namespace orx::plane {
namespace {

constexpr int kLargeSide = 1600;        // pictures beyond are searched at this size first
constexpr double kWidestWindow = 10.0;  // pixels to each side
constexpr double kShareOfSquare = 0.6;  // of the way to the next edges, which must not be seen
constexpr double kNarrowestWindow = 3.0;

// Where OpenCV sees the corners in a picture that was shrunk; none where it does not. Not by its older
// findChessboardCorners: a board that reaches out of the picture keeps that one busy for minutes.
std::vector<cv::Point2f> search(const cv::Mat& bytes, cv::Size corners, double shrink, int flags) {
    cv::Mat small = bytes;
    if (shrink < 1.0) cv::resize(bytes, small, cv::Size(), shrink, shrink, cv::INTER_AREA);
    std::vector<cv::Point2f> found;
    if (!cv::findChessboardCornersSB(small, corners, found, cv::CALIB_CB_NORMALIZE_IMAGE | flags)) return {};
    const double x = static_cast<double>(bytes.cols) / small.cols;
    const double y = static_cast<double>(bytes.rows) / small.rows;
    for (cv::Point2f& p : found) {
        p = cv::Point2f(static_cast<float>((p.x + 0.5) * x - 0.5), static_cast<float>((p.y + 0.5) * y - 0.5));
    }
    return found;
}

// Large pictures are searched at a smaller size first, blurred ones are seen better at half of that.
std::vector<cv::Point2f> searchBySize(const cv::Mat& bytes, cv::Size corners) {
    const double fit = std::min(1.0, static_cast<double>(kLargeSide) / std::max(bytes.cols, bytes.rows));
    std::vector<cv::Point2f> found = search(bytes, corners, fit, 0);
    if (found.empty()) found = search(bytes, corners, 0.5 * fit, 0);
    if (found.empty() && fit < 1.0) found = search(bytes, corners, 1.0, 0);
    if (found.empty()) found = search(bytes, corners, fit, cv::CALIB_CB_EXHAUSTIVE);
    return found;
}

double meanAround(const cv::Mat& bytes, cv::Point2d middle, double radius) {
    const int r = std::max(1, static_cast<int>(radius));
    const cv::Rect window(static_cast<int>(std::lround(middle.x)) - r,
                          static_cast<int>(std::lround(middle.y)) - r, 2 * r + 1, 2 * r + 1);
    const cv::Rect inside = window & cv::Rect(0, 0, bytes.cols, bytes.rows);
    return inside.empty() ? 128.0 : cv::mean(bytes(inside))[0];
}

// A board of an odd and an even number of corners has one corner whose outer square is dark: the first.
void turnToDarkSquare(const cv::Mat& bytes, Grid& grid) {
    if ((grid.columns + grid.rows) % 2 == 0) return;
    const cv::Point2d along = 0.5 * stepAlong(grid, 0, 0);
    const cv::Point2d across = 0.5 * stepAcross(grid, 0, 0);
    const double radius = 0.2 * std::min(cv::norm(along), cv::norm(across));
    const double diagonal = meanAround(bytes, grid.at(0, 0) + along + across, radius);
    const double beside = meanAround(bytes, grid.at(0, 0) + along - across, radius);
    if (diagonal > beside) turnAround(grid);
}

// How far the next parallel edges are.
double roomAround(cv::Point2d along, cv::Point2d across) {
    return std::abs(along.cross(across)) / std::max(cv::norm(along), cv::norm(across));
}

}  // namespace

bool findChessboard(const cv::Mat& grey, Grid& grid, std::vector<double>& deviations, std::string& problem) {
    cv::Mat bytes;
    grey.convertTo(bytes, CV_8U, 1.0 / levelUnit(grey));
    const std::vector<cv::Point2f> found = searchBySize(bytes, cv::Size(grid.columns, grid.rows));
    if (found.size() != static_cast<std::size_t>(grid.columns) * static_cast<std::size_t>(grid.rows)) {
        problem = "the picture does not show the whole board";
        return false;
    }
    grid.points.assign(found.begin(), found.end());
    order(grid);
    turnToDarkSquare(bytes, grid);

    cv::Mat levels;
    grey.convertTo(levels, CV_32F, 1.0 / levelUnit(grey));
    std::vector<cv::Point2d> refined;
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            const cv::Point2d along = stepAlong(grid, column, row);
            const cv::Point2d across = stepAcross(grid, column, row);
            const double radius =
                std::clamp(kShareOfSquare * roomAround(along, across), kNarrowestWindow, kWidestWindow);
            const Saddle saddle = fitSaddle(levels, grid.at(column, row), along, across, radius);
            if (!saddle.found) {
                problem = "corner " + std::to_string(column) + ", " + std::to_string(row) +
                          " is blurred, covered or too near to the border";
                return false;
            }
            refined.push_back(saddle.place);
            deviations.push_back(saddle.deviation);
        }
    }
    grid.points = refined;
    return true;
}

}  // namespace orx::plane
