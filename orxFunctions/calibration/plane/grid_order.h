// How a target's points are numbered, whichever way a finder met them.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_GRID_ORDER_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_GRID_ORDER_H

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

namespace orx::plane {

// Points in rows and columns, row by row.
struct Grid {
    int columns = 0;
    int rows = 0;
    std::vector<cv::Point2d> points;
    std::vector<int> origins;  // the index that each point had before it was ordered

    std::size_t index(int column, int row) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
               static_cast<std::size_t>(column);
    }
    cv::Point2d at(int column, int row) const { return points[index(column, row)]; }
};

// From a point to its neighbours on either side (at the rim twice to the one there is).
cv::Point2d stepAlong(const Grid& grid, int column, int row);
cv::Point2d stepAcross(const Grid& grid, int column, int row);

// Numbers the points so that x turns to y clockwise on the screen, and the rows lead to the right: of the two
// ways (four of a square grid) that leave the shape, the one most nearly so.
void order(Grid& grid);

// Turns it by half.
void turnAround(Grid& grid);

}  // namespace orx::plane

#endif
