#include "orxFunctions/calibration/plane/grid_order.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace orx::plane {
namespace {

void mirror(Grid& grid) {
    for (int row = 0; row < grid.rows; ++row) {
        const std::ptrdiff_t begin = static_cast<std::ptrdiff_t>(row) * grid.columns;
        std::reverse(grid.points.begin() + begin, grid.points.begin() + begin + grid.columns);
        std::reverse(grid.origins.begin() + begin, grid.origins.begin() + begin + grid.columns);
    }
}

// By a quarter; columns become rows.
void turn(Grid& grid) {
    Grid turned{grid.rows, grid.columns, {}, {}};
    for (int row = 0; row < turned.rows; ++row) {
        for (int column = 0; column < turned.columns; ++column) {
            turned.points.push_back(grid.at(row, turned.columns - 1 - column));
            turned.origins.push_back(grid.origins[grid.index(row, turned.columns - 1 - column)]);
        }
    }
    grid = std::move(turned);
}

// From the first point of the rows to the last, on average.
cv::Point2d rowDirection(const Grid& grid) {
    cv::Point2d sum;
    for (int row = 0; row < grid.rows; ++row) sum += grid.at(grid.columns - 1, row) - grid.at(0, row);
    return sum * (1.0 / cv::norm(sum));
}

cv::Point2d columnDirection(const Grid& grid) {
    cv::Point2d sum;
    for (int column = 0; column < grid.columns; ++column)
        sum += grid.at(column, grid.rows - 1) - grid.at(column, 0);
    return sum;
}

}  // namespace

cv::Point2d stepAlong(const Grid& grid, int column, int row) {
    const int before = std::max(0, column - 1);
    const int after = std::min(grid.columns - 1, column + 1);
    return (grid.at(after, row) - grid.at(before, row)) * (1.0 / (after - before));
}

cv::Point2d stepAcross(const Grid& grid, int column, int row) {
    const int before = std::max(0, row - 1);
    const int after = std::min(grid.rows - 1, row + 1);
    return (grid.at(column, after) - grid.at(column, before)) * (1.0 / (after - before));
}

void turnAround(Grid& grid) {
    std::reverse(grid.points.begin(), grid.points.end());
    std::reverse(grid.origins.begin(), grid.origins.end());
}

void order(Grid& grid) {
    grid.origins.resize(grid.points.size());
    std::iota(grid.origins.begin(), grid.origins.end(), 0);
    if (rowDirection(grid).cross(columnDirection(grid)) < 0.0) mirror(grid);
    if (rowDirection(grid).x < 0.0) turnAround(grid);
    if (grid.columns != grid.rows) return;
    Grid other = grid;
    turn(other);
    if (rowDirection(other).x < 0.0) turnAround(other);
    if (rowDirection(other).x > rowDirection(grid).x) grid = std::move(other);
}

}  // namespace orx::plane
