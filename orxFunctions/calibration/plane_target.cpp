#include "orxFunctions/calibration/plane_target.h"

#include <algorithm>
#include <cstddef>
#include <exception>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/calibration/plane/find_chessboard.h"
#include "orxFunctions/calibration/plane/find_dots.h"
#include "orxFunctions/calibration/plane/target_check.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr int kShortestSide = 20;
constexpr int kLongestSide = 32767;

bool isTargetPicture(const cv::Mat& img) {
    if (!takesPicture(img, "findTarget")) return false;
    if (std::min(img.cols, img.rows) >= kShortestSide && std::max(img.cols, img.rows) <= kLongestSide)
        return true;
    return refuse(rcImageSize, "findTarget", "the picture has %d x %d pixels; %d to %d a side are taken",
                  img.cols, img.rows, kShortestSide, kLongestSide);
}

TTargetView notFound(cv::Size size, const std::string& problem) {
    TTargetView view;
    view.imageSize = size;
    view.problem = problem;
    return view;
}

}  // namespace

TTargetView findTarget(const cv::Mat& img, const TTarget& target) {
    if (!isTargetPicture(img)) return notFound({}, "it is no picture");
    if (!plane::isTarget(target, "findTarget"))
        return notFound(img.size(), "an option of the target is outside its range");
    plane::Grid grid;
    grid.columns = target.columns;
    grid.rows = target.rows;
    TTargetView view;
    view.imageSize = img.size();
    try {
        const cv::Mat grey = greyOf(img);
        const bool isBoard = target.kind == tkChessboard;
        if (!(isBoard ? plane::findChessboard : plane::findDots)(grey, grid, view.deviations, view.problem)) {
            refuse(rcNoResult, "findTarget", "%s", view.problem.c_str());
            return notFound(img.size(), view.problem);
        }
        view.dotDiameter = isBoard ? 0.0 : target.diameter;
    } catch (const std::exception& error) {  // OpenCV's, for want of memory
        refuse(rcFailed, "findTarget", "%s", error.what());
        return notFound(img.size(), error.what());
    }
    view.found = true;
    view.pixels = grid.points;
    for (int row = 0; row < target.rows; ++row) {
        for (int column = 0; column < target.columns; ++column)
            view.plane.emplace_back(column * target.pitch, row * target.pitch);
    }
    return view;
}

}  // namespace orx
