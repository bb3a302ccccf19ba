#include "orxFunctions/matching/model/outline_map.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/matching/model/bounds.h"

namespace orx::matching {
namespace {

constexpr double kMostCellsOfASide = 1024;

}  // namespace

OutlineMap::OutlineMap(const std::vector<OutlinePoint>& outline, double cell, int reach)
    : outline_(outline), cell_(cell) {
    if (outline.empty()) return;
    const Bounds bounds = boundsOf(outline);
    cell_ = std::max(cell_, bounds.extent() / kMostCellsOfASide);
    origin_ = bounds.low - cv::Point2d((reach + 1) * cell_, (reach + 1) * cell_);
    const cv::Point2d size = (bounds.high - bounds.low) * (1 / cell_);
    const cv::Size cells(static_cast<int>(size.x) + 2 * reach + 3, static_cast<int>(size.y) + 2 * reach + 3);
    indices_ = cv::Mat(cells, CV_32S, cv::Scalar(-1));
    distances_ = cv::Mat(cells, CV_32F, cv::Scalar(std::numeric_limits<float>::max()));
    // The other points of a chain are reached from these.
    for (std::size_t i = 0; i < outline.size(); i += 2) enter(static_cast<int>(i), reach);
}

void OutlineMap::enter(int index, int reach) {
    const cv::Point2d place =
        (outline_[static_cast<std::size_t>(index)].position - origin_) * (1 / cell_);  // in cells
    const int column = static_cast<int>(place.x);
    const int row = static_cast<int>(place.y);
    for (int y = std::max(0, row - reach); y <= std::min(indices_.rows - 1, row + reach); ++y) {
        float* distances = distances_.ptr<float>(y);
        int* indices = indices_.ptr<int>(y);
        const double dy = y + 0.5 - place.y;
        for (int x = std::max(0, column - reach); x <= std::min(indices_.cols - 1, column + reach); ++x) {
            const double dx = x + 0.5 - place.x;
            const auto squared = static_cast<float>(dx * dx + dy * dy);
            if (squared >= distances[x]) continue;
            distances[x] = squared;
            indices[x] = index;
        }
    }
}

double OutlineMap::squaredDistance(int index, cv::Point2d place) const {
    const cv::Point2d d = outline_[static_cast<std::size_t>(index)].position - place;
    return d.dot(d);
}

bool OutlineMap::isNearer(int index, int than, cv::Point2d place) const {
    if (index < 0 || index >= static_cast<int>(outline_.size())) return false;
    return outline_[static_cast<std::size_t>(index)].chain ==
               outline_[static_cast<std::size_t>(than)].chain &&
           squaredDistance(index, place) < squaredDistance(than, place);
}

int OutlineMap::nearest(cv::Point2d place) const {
    const double x = (place.x - origin_.x) / cell_;
    const double y = (place.y - origin_.y) / cell_;
    // Also false for not-a-number and for an empty map.
    if (!(x >= 0 && y >= 0 && x < indices_.cols && y < indices_.rows)) return -1;
    int found = indices_.at<int>(static_cast<int>(y), static_cast<int>(x));
    if (found < 0) return found;
    while (isNearer(found + 1, found, place)) ++found;
    while (isNearer(found - 1, found, place)) --found;
    return found;
}

}  // namespace orx::matching
