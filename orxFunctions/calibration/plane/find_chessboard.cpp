#include "orxFunctions/calibration/plane/find_chessboard.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/calibration/plane/saddle.h"
#include "orxFunctions/foundation/median_internal.h"

namespace orx::plane {
namespace {

constexpr int kLargeSide = 1600;        // pictures beyond are searched at this size first
constexpr double kWidestWindow = 10.0;  // pixels to each side
constexpr double kShareOfSquare = 0.6;  // of the way to the next edges, which must not be seen
constexpr double kAstray = 0.12;        // of a square, from where its neighbours let one expect a corner
constexpr double kNarrowestWindow = 3.0;

// Where OpenCV sees the corners in a picture that was shrunk; none where it does not. Not by its older
// findChessboardCorners: a board that reaches out of the picture keeps that one busy for minutes.
std::vector<cv::Point2f> search(const cv::Mat& bytes, cv::Size corners, double shrink, int flags) {
    cv::Mat small = bytes;
    if (shrink < 1.0) cv::resize(bytes, small, cv::Size(), shrink, shrink, cv::INTER_AREA);
    std::vector<cv::Point2f> found;
    if (!cv::findChessboardCornersSB(small, corners, found, flags)) return {};
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
    std::vector<cv::Point2f> found = search(bytes, corners, fit, cv::CALIB_CB_NORMALIZE_IMAGE);
    if (found.empty()) found = search(bytes, corners, fit, 0);
    if (found.empty()) found = search(bytes, corners, 0.5 * fit, cv::CALIB_CB_NORMALIZE_IMAGE);
    if (found.empty() && fit < 1.0) found = search(bytes, corners, 1.0, cv::CALIB_CB_NORMALIZE_IMAGE);
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

// How the line of corners bends at `here`, from the corners before and behind.
double bendAt(cv::Point2d before, cv::Point2d here, cv::Point2d after) {
    const cv::Point2d step = 0.5 * (after - before);
    const double length = cv::norm(step);
    return step.cross(before + after - 2.0 * here) / (length * length * length);
}

// At the rim as at the next corner on the line.
EdgeCourse courseAlong(const Grid& grid, int column, int row) {
    const int inner = std::clamp(column, 1, grid.columns - 2);
    return {stepAlong(grid, column, row),
            bendAt(grid.at(inner - 1, row), grid.at(inner, row), grid.at(inner + 1, row))};
}

EdgeCourse courseAcross(const Grid& grid, int column, int row) {
    const int inner = std::clamp(row, 1, grid.rows - 2);
    return {stepAcross(grid, column, row),
            bendAt(grid.at(column, inner - 1), grid.at(column, inner), grid.at(column, inner + 1))};
}

// Where most of the pairs of corners around let one expect it: those on both sides, and those behind one
// another.
cv::Point2d expected(const Grid& grid, int column, int row) {
    std::vector<double> x;
    std::vector<double> y;
    const auto add = [&](int nearColumn, int nearRow, int farColumn, int farRow, double weight) {
        const cv::Rect all(0, 0, grid.columns, grid.rows);
        if (!all.contains({nearColumn, nearRow}) || !all.contains({farColumn, farRow})) return;
        const cv::Point2d p =
            weight * grid.at(nearColumn, nearRow) + (1.0 - weight) * grid.at(farColumn, farRow);
        x.push_back(p.x);
        y.push_back(p.y);
    };
    for (const auto& way : {cv::Point(1, 0), cv::Point(0, 1)}) {
        add(column - way.x, row - way.y, column + way.x, row + way.y, 0.5);
        add(column - way.x, row - way.y, column - 2 * way.x, row - 2 * way.y, 2.0);
        add(column + way.x, row + way.y, column + 2 * way.x, row + 2 * way.y, 2.0);
    }
    return {medianOf(x), medianOf(y)};
}

// OpenCV's corners are off by a third of a square here and there.
void putBack(Grid& grid) {
    Grid put = grid;
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            const cv::Point2d there = expected(grid, column, row);
            const double step =
                std::min(cv::norm(stepAlong(grid, column, row)), cv::norm(stepAcross(grid, column, row)));
            if (cv::norm(there - grid.at(column, row)) > kAstray * step)
                put.points[grid.index(column, row)] = there;
        }
    }
    grid = put;
}

// Fits every corner. What a lens bends is told by the corners around once they are known well: corners that
// come from OpenCV may be off by pixels, and their bends are left out.
bool refine(const cv::Mat& levels, bool bent, Grid& grid, std::vector<double>& deviations,
            std::string& problem) {
    std::vector<cv::Point2d> refined;
    deviations.clear();
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            EdgeCourse along = courseAlong(grid, column, row);
            EdgeCourse across = courseAcross(grid, column, row);
            if (!bent) along.curvature = across.curvature = 0.0;
            const double radius = std::clamp(kShareOfSquare * roomAround(along.direction, across.direction),
                                             kNarrowestWindow, kWidestWindow);
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
    putBack(grid);
    cv::Mat levels;
    grey.convertTo(levels, CV_32F, 1.0 / levelUnit(grey));
    return refine(levels, false, grid, deviations, problem) &&
           refine(levels, true, grid, deviations, problem);
}

}  // namespace orx::plane
