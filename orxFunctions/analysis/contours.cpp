#include "orxFunctions/analysis/contours.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

using Contour = std::vector<cv::Point>;
using Contours = std::vector<Contour>;

// Outlines of holes turn the other way than those of objects; only these can enclose nothing.
bool isHole(const Contour& outline) { return cv::contourArea(outline, true) > 0; }

// Outlines that belong to one object, joined step by step.
class Objects {
  public:
    explicit Objects(std::size_t outlines) : joined_(outlines) {
        std::iota(joined_.begin(), joined_.end(), std::size_t{0});
    }

    // One outline stands for all of its object.
    std::size_t of(std::size_t outline) {
        while (joined_[outline] != outline) outline = joined_[outline] = joined_[joined_[outline]];
        return outline;
    }
    void join(std::size_t a, std::size_t b) { joined_[of(a)] = of(b); }

  private:
    std::vector<std::size_t> joined_;
};

// For each hole a pixel of its object that lies on another outline of the object: above the hole's first row
// where the run of pixels begins, at the background that encloses the hole or at another hole that begins
// further up. A run is walked through once: holes below one run are asked for from left to right.
class RunStarts {
  public:
    explicit RunStarts(const cv::Mat& binary) : binary_(binary) {}

    cv::Point of(cv::Point pixel) {
        const uchar* row = binary_.ptr(pixel.y);
        const int known = pixel.y == row_ ? asked_ : -1;
        int x = pixel.x;
        while (x > 0 && x != known && row[x - 1] != 0) --x;
        start_ = x == known ? start_ : x;
        row_ = pixel.y;
        asked_ = pixel.x;
        return {start_, pixel.y};
    }

  private:
    const cv::Mat& binary_;
    int row_ = -1;
    int asked_ = -1;
    int start_ = 0;
};

bool isAbove(const cv::Point& a, const cv::Point& b) { return a.y != b.y ? a.y < b.y : a.x < b.x; }

// Which outlines belong to one object. `all` has every pixel of the outlines.
Objects objectsOf(const cv::Mat& binary, const Contours& all, const std::vector<std::size_t>& holes) {
    std::vector<std::pair<cv::Point, std::size_t>> tops;
    tops.reserve(holes.size());
    for (const std::size_t hole : holes)
        tops.emplace_back(*std::min_element(all[hole].begin(), all[hole].end(), isAbove), hole);
    std::sort(tops.begin(), tops.end(),
              [](const auto& a, const auto& b) { return isAbove(a.first, b.first); });
    // Ascending still: runs begin in the order of the pixels in them.
    RunStarts starts(binary);
    for (auto& top : tops) top.first = starts.of(top.first);
    Objects objects(all.size());
    std::vector<std::uint64_t> wanted((binary.total() + 63) / 64);
    const auto bitOf = [&](cv::Point p) {
        return static_cast<std::size_t>(p.y) * static_cast<std::size_t>(binary.cols) +
               static_cast<std::size_t>(p.x);
    };
    for (std::size_t i = 0; i < tops.size(); ++i) {
        const std::size_t bit = bitOf(tops[i].first);
        wanted[bit / 64] |= std::uint64_t{1} << bit % 64;
        if (i > 0 && tops[i].first == tops[i - 1].first) objects.join(tops[i].second, tops[i - 1].second);
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (const cv::Point& p : all[i]) {
            const std::size_t bit = bitOf(p);
            if ((wanted[bit / 64] >> bit % 64 & 1) == 0) continue;
            const auto top = std::lower_bound(tops.begin(), tops.end(), p,
                                              [](const auto& a, cv::Point b) { return isAbove(a.first, b); });
            objects.join(i, top->second);
        }
    }
    return objects;
}

// The holes among outlines that have every pixel: those of one object together, objects in the order of their
// outer outlines. The library's two-level retrieval gives the same, but looks for each hole's object among
// the outlines in turn; here the pixels tell it.
std::vector<std::size_t> holesByObject(const cv::Mat& binary, const Contours& all) {
    std::vector<std::size_t> holes;
    std::vector<std::size_t> outer;
    for (std::size_t i = 0; i < all.size(); ++i) (isHole(all[i]) ? holes : outer).push_back(i);
    Objects objects = objectsOf(binary, all, holes);
    std::vector<std::size_t> placeOf(all.size());
    for (std::size_t i = 0; i < outer.size(); ++i) placeOf[objects.of(outer[i])] = i;
    std::vector<std::size_t> placeOfHole(all.size());
    for (const std::size_t hole : holes) placeOfHole[hole] = placeOf[objects.of(hole)];
    std::stable_sort(holes.begin(), holes.end(),
                     [&](std::size_t a, std::size_t b) { return placeOfHole[a] < placeOfHole[b]; });
    return holes;
}

Contours found(const cv::Mat& binary, int mode, int approximation) {
    Contours contours;
    cv::findContours(binary, contours, mode, approximation);
    return contours;
}

Contours outlinesOfHoles(const cv::Mat& binary, int approximation) {
    Contours all = found(binary, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    const std::vector<std::size_t> holes = holesByObject(binary, all);
    // The same outlines in the same order, less their straight pixels.
    if (approximation != cv::CHAIN_APPROX_NONE) all = found(binary, cv::RETR_LIST, approximation);
    Contours sorted;
    sorted.reserve(holes.size());
    for (const std::size_t hole : holes) sorted.push_back(std::move(all[hole]));
    return sorted;
}

Contours traced(const cv::Mat& binary, TContourType type, int approximation) {
    if (type == ctHoles) return outlinesOfHoles(binary, approximation);
    return found(binary, type == ctAll ? cv::RETR_LIST : cv::RETR_EXTERNAL, approximation);
}

void replaceByHulls(Contours& contours) {
    for (Contour& contour : contours) {
        Contour hull;
        // "Clockwise" is meant with y running up there: on the screen the hull turns as its outline does.
        cv::convexHull(contour, hull, true);
        contour.swap(hull);
    }
}

// No area and no length is below 0, and no picture has 1e300 pixels: such limits need not be looked at.
bool isWithinLimits(const Contour& contour, const TContourOptions& options) {
    if (options.minArea > 0 || options.maxArea < 1e300) {
        const double area = cv::contourArea(contour);
        if (!(area >= options.minArea && area <= options.maxArea)) return false;
    }
    return !(options.minLength > 0) || cv::arcLength(contour, true) >= options.minLength;
}

void keepLargest(Contours& contours) {
    const auto smaller = [](const Contour& a, const Contour& b) {
        return cv::contourArea(a) < cv::contourArea(b);
    };
    const auto largest = std::max_element(contours.begin(), contours.end(), smaller);
    if (largest == contours.end()) return;
    contours.front().swap(*largest);
    contours.resize(1);
}

bool takesOptions(const cv::Mat& binary, TContourType type, const TContourOptions& options) {
    if (!takesBytes(binary, "getContours")) return false;
    if (type < ctExternal || type > ctConvexHull)
        return refuse(rcOption, "getContours", "there is no type %d", static_cast<int>(type));
    if (std::isnan(options.minLength) || std::isnan(options.minArea) || std::isnan(options.maxArea))
        return refuse(rcNotFinite, "getContours", "a limit is not a number");
    return true;
}

}  // namespace

std::vector<std::vector<cv::Point>> getContours(const cv::Mat& binary, TContourType type,
                                                const TContourOptions& options) {
    if (!takesOptions(binary, type, options)) return {};
    const bool everyPoint = options.points == cpAll && type != ctConvexHull;
    Contours contours = traced(binary, type, everyPoint ? cv::CHAIN_APPROX_NONE : cv::CHAIN_APPROX_SIMPLE);
    if (type == ctConvexHull) replaceByHulls(contours);
    contours.erase(std::remove_if(contours.begin(), contours.end(),
                                  [&](const Contour& contour) { return !isWithinLimits(contour, options); }),
                   contours.end());
    if (type == ctLargest) keepLargest(contours);
    if (contours.empty()) refuse(rcNoResult, "getContours", "no outline of this type is within the limits");
    return contours;
}

}  // namespace orx
