#include "orxFunctions/analysis/clean_up.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/pixel_runs_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kDiagonal = 1.4142135623730951;

// Steps from a pixel to its neighbours, each counted once.
struct Steps {
    std::int64_t straight = 0;  // along a row or a column
    std::int64_t diagonal = 0;  // where no detour along row and column leads the same way

    void operator+=(const Steps& more) {
        straight += more.straight;
        diagonal += more.diagonal;
    }
};

double areaOf(std::int64_t pixels) { return static_cast<double>(pixels); }

double lengthOf(const Steps& steps) {
    return static_cast<double>(steps.straight) + kDiagonal * static_cast<double>(steps.diagonal);
}

// For each piece the number of pixels of its object.
std::vector<std::int64_t> pixelsOf(const PixelRuns& objects) {
    std::vector<std::int64_t> pixels(objects.pieces());
    platform::forStripes(objects.stripes(), [&](int, const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            for (const PixelRun& run : objects.row(y)) pixels[run.piece] += run.end - run.begin;
        }
    });
    objects.join(pixels);
    return pixels;
}

// For each piece the steps of its object. A run steps down in each column that it shares with one below, and
// where they touch at corners only, once diagonally.
std::vector<Steps> stepsOf(const PixelRuns& objects) {
    std::vector<Steps> steps(objects.pieces());
    platform::forStripes(objects.stripes(), [&](int, const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            for (const PixelRun& run : objects.row(y)) steps[run.piece].straight += run.end - run.begin - 1;
            if (y + 1 == objects.rows()) break;
            forTouchingRuns(objects.row(y), objects.row(y + 1), 0,
                            [&](const PixelRun& upper, const PixelRun&, int columns) {
                                steps[upper.piece] += {columns, columns == 0 ? 1 : 0};
                            });
        }
    });
    objects.join(steps);
    return steps;
}

// A copy in which the runs are 0 whose piece has a measure that `isSmall`.
template <class Measure, class IsSmall>
cv::Mat withoutSmall(const cv::Mat& src, const PixelRuns& objects, const std::vector<Measure>& measures,
                     const IsSmall& isSmall) {
    cv::Mat kept(src.size(), src.type());
    platform::forStripes(objects.stripes(), [&](int, const cv::Range& rows) {
        src.rowRange(rows).copyTo(kept.rowRange(rows));
        for (int y = rows.start; y < rows.end; ++y) {
            for (const PixelRun& run : objects.row(y)) {
                if (isSmall(measures[run.piece]))
                    std::fill(kept.ptr(y) + run.begin, kept.ptr(y) + run.end, uchar{0});
            }
        }
    });
    return kept;
}

// `measure` gives a value for each piece, sizeOf its size.
template <class Measure, class SizeOf>
bool keepAtLeast(const cv::Mat& src, cv::Mat& dst, double least, const char* function, Measure measure,
                 SizeOf sizeOf) {
    if (!takesBytes(src, function)) return false;
    if (std::isnan(least)) return refuse(rcNotFinite, function, "the limit is not a number");
    const PixelRuns objects(src, RunsOf::objects, 8);
    dst = withoutSmall(src, objects, measure(objects),
                       [&](const auto& value) { return sizeOf(value) < least; });
    return true;
}

double extentOf(const cv::Vec4i& segment) {
    return std::hypot(static_cast<double>(segment[2]) - segment[0],
                      static_cast<double>(segment[3]) - segment[1]);
}

}  // namespace

bool removeSmallObjects(const cv::Mat& src, cv::Mat& dst, double minArea) {
    return keepAtLeast(src, dst, minArea, "removeSmallObjects", pixelsOf, areaOf);
}

bool removeShortLines(const cv::Mat& src, cv::Mat& dst, double minLength) {
    return keepAtLeast(src, dst, minLength, "removeShortLines", stepsOf, lengthOf);
}

void removeShortLines(std::vector<cv::Vec4i>& segments, double minLength) {
    segments.erase(std::remove_if(segments.begin(), segments.end(),
                                  [&](const cv::Vec4i& segment) { return extentOf(segment) < minLength; }),
                   segments.end());
}

void removeSmallContours(std::vector<std::vector<cv::Point>>& contours, double minArea, double minLength) {
    const auto isSmall = [&](const std::vector<cv::Point>& contour) {
        return contour.empty() || cv::contourArea(contour) < minArea ||
               cv::arcLength(contour, true) < minLength;
    };
    contours.erase(std::remove_if(contours.begin(), contours.end(), isSmall), contours.end());
}

}  // namespace orx
