#include "orxFunctions/segmentation/splitting/contour_boxes.h"

#include <algorithm>
#include <utility>

namespace orx::splitting {
namespace {

// One box for each kFanOut items, the last one for what is left.
template <typename Item, typename BoxOf>
std::vector<Box> boxesOver(const std::vector<Item>& items, BoxOf boxOf) {
    std::vector<Box> boxes;
    boxes.reserve(items.size() / ContourBoxes::kFanOut + 1);
    for (std::size_t i = 0; i < items.size(); i += ContourBoxes::kFanOut) {
        Box box = boxOf(items[i]);
        const std::size_t end = std::min(items.size(), i + ContourBoxes::kFanOut);
        for (std::size_t k = i + 1; k < end; ++k) box.include(boxOf(items[k]));
        boxes.push_back(box);
    }
    return boxes;
}

}  // namespace

void Box::include(const Box& other) {
    left = std::min(left, other.left);
    top = std::min(top, other.top);
    right = std::max(right, other.right);
    bottom = std::max(bottom, other.bottom);
}

ContourBoxes::ContourBoxes(const std::vector<cv::Point>& contour) {
    std::vector<Box> level = boxesOver(contour, [](const cv::Point& p) { return Box{p.x, p.y, p.x, p.y}; });
    while (!level.empty()) {
        const bool isLast = level.size() == 1;
        levels_.push_back(std::move(level));
        if (isLast) return;
        level = boxesOver(levels_.back(), [](const Box& box) { return box; });
    }
}

}  // namespace orx::splitting
