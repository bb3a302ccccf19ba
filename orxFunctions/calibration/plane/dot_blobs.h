// Dark ellipses in a picture, and those of them that lie in a grid.
#ifndef ORXFUNCTIONS_CALIBRATION_PLANE_DOT_BLOBS_H
#define ORXFUNCTIONS_CALIBRATION_PLANE_DOT_BLOBS_H

#include <opencv2/core.hpp>
#include <vector>

namespace orx::plane {

// To within a pixel, from the moments of its area.
struct Blob {
    cv::Point2d middle;
    double major = 0.0;  // half axes, pixels
    double minor = 0.0;
    double angle = 0.0;  // of the major one, radians
};

// What is darker than its surroundings of `block` pixels a side, and an ellipse. Largest first, at most
// 100,000.
std::vector<Blob> darkBlobs(const cv::Mat& bytes, int block);

// Grows a lattice from blob to blob, beginning in their middle. The indices of a full rectangle of columns x
// rows, row by row, or of rows x columns where that is what there is; none where the lattice is another one.
// `count` is how many blobs the largest lattice had.
std::vector<int> growGrid(const std::vector<Blob>& blobs, int columns, int rows, std::size_t& count);

}  // namespace orx::plane

#endif
