#include "orxFunctions/foundation/rect.h"

#include "orxFunctions/foundation/quadrilateral.h"
#include "orxFunctions/foundation/wrapping_internal.h"

namespace orx {
namespace {

std::int32_t farEdge(std::int32_t start, std::int32_t size) { return (Wrap32(start) + Wrap32(size)).value(); }

}  // namespace

TORXRect::TORXRect(int left, int top, int columns, int rows)
    : x(left), y(top), width(columns), height(rows) {}

bool TORXRect::checkROI(cv::Mat img) {
    return x >= 0 && y >= 0 && width > 0 && height > 0 && farEdge(x, width) <= img.cols &&
           farEdge(y, height) <= img.rows;
}

bool TORXRect::isContainRect(TORXRect other) {
    struct Corners {
        cv::Point p[4];
    };
    const auto corners = [](const TORXRect& r) {
        const int right = farEdge(r.x, r.width);
        const int bottom = farEdge(r.y, r.height);
        return Corners{{{r.x, r.y}, {right, r.y}, {right, bottom}, {r.x, bottom}}};
    };
    const Corners mine = corners(*this);
    for (const cv::Point& corner : corners(other).p) {
        if (!isPointInRect(corner, mine.p[0], mine.p[1], mine.p[2], mine.p[3])) return false;
    }
    return true;
}

cv::Rect TORXRect::toCVRect() { return {x, y, width, height}; }

}  // namespace orx
