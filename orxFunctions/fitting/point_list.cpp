#include "orxFunctions/fitting/point_list.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "orxFunctions/fitting/inlier_tests_internal.h"
#include "orxFunctions/fitting/pixel_span_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

bool hasIndex(const std::vector<cv::Point>& pts, int index) {
    return index >= 0 && static_cast<std::size_t>(index) < pts.size();
}

// From the largest index down: what changes places has been looked at before.
template <class Goes>
void removeFromTheLast(std::vector<cv::Point>& pts, Goes goes) {
    std::size_t end = pts.size();
    for (std::size_t i = pts.size(); i-- > 0;) {
        if (goes(i)) std::swap(pts[i], pts[--end]);
    }
    pts.resize(end);
}

// Marks cost a pass over the list, sorting some passes over the indices.
bool isLongEnoughToMark(const std::vector<int>& idx, const std::vector<cv::Point>& pts) {
    return idx.size() > 64 && idx.size() > pts.size() / 32;
}

// False, and nothing is removed, where an index comes twice.
bool removeMarked(std::vector<cv::Point>& pts, const std::vector<int>& idx) {
    std::vector<unsigned char> marks(pts.size());
    for (const int i : idx) {
        unsigned char& mark = marks[static_cast<std::size_t>(i)];
        if (mark != 0) return false;
        mark = 1;
    }
    removeFromTheLast(pts, [&](std::size_t i) { return marks[i] != 0; });
    return true;
}

void keepInRing(std::vector<cv::Point>& pts, const inlier_kernels::CircleTest& test) {
    if (pts.empty()) return;
    pts.resize(circle_kernels::chosen().keepInRing(&pts.front().x, pts.size(),
                                                   {test.x, test.y, test.nearest, test.farthest}));
}

// The same for a radius that is negative or not a number, too.
void keepNearOutline(std::vector<cv::Point>& pts, const TCircle& circle, int tol) {
    const auto isFar = [&](const cv::Point& p) {
        const double dx = p.x - circle.x;
        const double dy = p.y - circle.y;
        return !(std::abs(std::sqrt(dx * dx + dy * dy) - circle.r) < tol);
    };
    pts.erase(std::remove_if(pts.begin(), pts.end(), isFar), pts.end());
}

}  // namespace

void getPointOnCircle(std::vector<cv::Point> pts, TCircle circle, std::vector<cv::Point>& out, int tol) {
    if (circle.r >= 0) {
        keepInRing(pts, circleCloserThan(circle.x, circle.y, circle.r, tol));
    } else {
        keepNearOutline(pts, circle, tol);
    }
    out = std::move(pts);
}

bool getPointListFromIdxList(std::vector<cv::Point> pts, std::vector<int> idx, std::vector<cv::Point>& out) {
    out.clear();
    out.reserve(idx.size());
    for (const int i : idx) {
        if (hasIndex(pts, i)) out.push_back(pts[static_cast<std::size_t>(i)]);
    }
    return true;
}

void deletePointsInList(std::vector<cv::Point>& pts, std::vector<int> idx) {
    if (idx.empty()) return;
    if (idx.size() > pts.size()) {
        refuse(rcTooMany, "deletePointsInList", "%zu indices for %zu points", idx.size(), pts.size());
        return;
    }
    idx.erase(std::remove_if(idx.begin(), idx.end(), [&](int i) { return !hasIndex(pts, i); }), idx.end());
    if (isLongEnoughToMark(idx, pts) && removeMarked(pts, idx)) return;
    std::sort(idx.begin(), idx.end());
    std::size_t end = pts.size();
    for (auto index = idx.rbegin(); index != idx.rend(); ++index) {
        --end;
        std::swap(pts[static_cast<std::size_t>(*index)], pts[end]);
    }
    pts.resize(end);
}

void deleteImageSidePoints(std::vector<cv::Point>& pts, cv::Size size, int margin) {
    const std::int64_t right = std::int64_t{size.width} - margin - 1;
    const std::int64_t bottom = std::int64_t{size.height} - margin - 1;
    const auto nearBorder = [&](const cv::Point& p) {
        return p.x < margin || p.x > right || p.y < margin || p.y > bottom;
    };
    removeFromTheLast(pts, [&](std::size_t i) { return nearBorder(pts[i]); });
}

void deletePartPoints(std::vector<cv::Point>& pts, int count) {
    if (count < 1) {
        refuse(rcOption, "deletePartPoints", "%d points to remove; at least 1 is taken", count);
        return;
    }
    if (static_cast<std::ptrdiff_t>(pts.size()) - count < 2) {
        refuse(rcTooFew, "deletePartPoints", "%d of %zu points to remove; 2 must remain", count, pts.size());
        return;
    }
    for (int removed = 0; removed < count; ++removed) {
        // Never the last point: it takes the place of the removed one. Intended.
        const int r = std::rand() % static_cast<int>(pts.size() - 1);
        std::swap(pts[static_cast<std::size_t>(r)], pts.back());
        pts.pop_back();
    }
}

}  // namespace orx
