#include "orxFunctions/analysis/largest_outline_internal.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "orxFunctions/analysis/pixel_runs_internal.h"

namespace orx {
namespace {

using Contour = std::vector<cv::Point>;

// The pixels at the sides of a part, which has some.
struct Extent {
    int left = std::numeric_limits<int>::max();
    int top = std::numeric_limits<int>::max();
    int right = -1;
    int bottom = -1;

    void operator+=(const Extent& more) {
        left = std::min(left, more.left);
        top = std::min(top, more.top);
        right = std::max(right, more.right);
        bottom = std::max(bottom, more.bottom);
    }
    cv::Rect box() const { return {left, top, right - left + 1, bottom - top + 1}; }
    // What an outline through the pixels' centres encloses at most.
    double largestArea() const { return static_cast<double>(right - left) * (bottom - top); }
};

struct Object {
    std::uint32_t piece;
    Extent extent;
};

std::vector<Object> objectsOf(const PixelRuns& runs) {
    std::vector<Extent> extents(runs.pieces());
    platform::forStripes(runs.stripes(), [&](int, const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            for (const PixelRun& run : runs.row(y)) extents[run.piece] += {run.begin, y, run.end - 1, y};
        }
    });
    runs.join(extents);
    std::vector<Object> objects;
    for (std::uint32_t piece = 0; piece < extents.size(); ++piece) {
        if (runs.firstOf(piece) == piece) objects.push_back({piece, extents[piece]});
    }
    return objects;
}

// The first one of the largest area.
Contour largestOf(std::vector<Contour> contours) {
    double largest = -1;
    Contour result;
    for (Contour& contour : contours) {
        const double area = cv::contourArea(contour);
        if (area > largest) {
            largest = area;
            result.swap(contour);
        }
    }
    return result;
}

std::vector<Contour> outerOutlines(const cv::Mat& binary, cv::Point offset = {}) {
    // Outer contours are enough: no hole and nothing inside one has a larger area than what surrounds it.
    std::vector<Contour> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE, offset);
    return contours;
}

Contour outlineOf(const Object& object, const PixelRuns& runs) {
    const cv::Rect box = object.extent.box();
    cv::Mat alone = cv::Mat::zeros(box.size(), CV_8UC1);
    for (int y = 0; y < box.height; ++y) {
        for (const PixelRun& run : runs.row(box.y + y)) {
            if (runs.firstOf(run.piece) != object.piece) continue;
            std::fill(alone.ptr(y) + (run.begin - box.x), alone.ptr(y) + (run.end - box.x), uchar{255});
        }
    }
    return largestOf(outerOutlines(alone, box.tl()));
}

}  // namespace

Contour largestOutline(const cv::Mat& binary) {
    if (binary.type() != CV_8UC1) return largestOf(outerOutlines(binary));  // which refuses it
    const PixelRuns runs(binary, RunsOf::objects, 8);
    std::vector<Object> objects = objectsOf(runs);
    // The largest boxes first, in the order of findContours where they are equal: from the last object on,
    // which are numbered in the order of their first pixels.
    constexpr std::size_t kMost = 32;
    const std::size_t count = std::min(objects.size(), kMost);
    std::partial_sort(objects.begin(), objects.begin() + static_cast<std::ptrdiff_t>(count), objects.end(),
                      [](const Object& a, const Object& b) {
                          return std::pair(a.extent.largestArea(), a.piece) >
                                 std::pair(b.extent.largestArea(), b.piece);
                      });
    // To follow it alone, an object is copied.
    const auto isTooLarge = [&](const Object& object) {
        return object.extent.largestArea() > static_cast<double>(binary.total()) / 4;
    };
    Contour largest;
    double area = -1;
    std::uint32_t piece = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (objects[i].extent.largestArea() < area) return largest;
        if (isTooLarge(objects[i])) return largestOf(outerOutlines(binary));
        Contour outline = outlineOf(objects[i], runs);
        const double own = cv::contourArea(outline);
        if (own < area || (own == area && objects[i].piece < piece)) continue;
        largest.swap(outline);
        area = own;
        piece = objects[i].piece;
    }
    return objects.size() == count ? largest : largestOf(outerOutlines(binary));
}

}  // namespace orx
