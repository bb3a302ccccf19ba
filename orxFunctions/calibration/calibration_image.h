// Pictures to print or show as calibration targets. Reentrant.
#ifndef ORXFUNCTIONS_CALIBRATION_CALIBRATION_IMAGE_H
#define ORXFUNCTIONS_CALIBRATION_CALIBRATION_IMAGE_H

#include <opencv2/core.hpp>

#include "orxFunctions/api.h"

namespace orx {

// A checkerboard of cells of cellSize x cellSize pixels: colour0 in the top-left cell, colour1 beside it
// (both taken modulo 256). 8-bit with 1 channel, with 3 (BGR) or 4 (BGRA, opaque) when `channels` says so. An
// empty matrix for a cell size of 0 (rcOption), sizes below 1 and pictures above 1 GiB (rcImageSize), and
// where there is no memory for it (rcMemory).
ORX_API cv::Mat createBackgroundImg(int width, int height, int channels, int cellSize, int colour0,
                                    int colour1);

// A chessboard of black squares on white, 8-bit with 1 channel: as many squares of squareSize pixels as fit
// inside the image less the margin on each side, centred. They touch at their corners only. A square that
// does not fit inside the margins is not drawn at all: a large squareSize, or one below 1, leaves the image
// white. With margin 0 the last square may reach one pixel beyond the image, where it is cut off. An empty
// matrix for sizes below 1 and pictures above 1 GiB (rcImageSize), and without memory for it (rcMemory).
ORX_API cv::Mat createCalibrateImage(cv::Size imageSize, int squareSize, int margin);

}  // namespace orx

#endif
