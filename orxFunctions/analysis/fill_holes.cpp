#include "orxFunctions/analysis/fill_holes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orxFunctions/analysis/pixel_runs_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// What is known of a part of the background.
struct Gap {
    std::int64_t area = 0;
    bool isOutside = false;  // reaches the border of the image

    void operator+=(const Gap& more) {
        area += more.area;
        isOutside = isOutside || more.isOutside;
    }
};

// For each piece of the background that of its connected part.
std::vector<Gap> gapsOf(const PixelRuns& background, cv::Size size) {
    std::vector<Gap> gaps(background.pieces());
    platform::forStripes(background.stripes(), [&](int, const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            const bool isOuterRow = y == 0 || y + 1 == size.height;
            for (const PixelRun& run : background.row(y))
                gaps[run.piece] +=
                    {run.end - run.begin, isOuterRow || run.begin == 0 || run.end == size.width};
        }
    });
    background.join(gaps);
    return gaps;
}

// Whether stripes of one can be written while others are read: they share all pixels, or none.
bool areApart(const cv::Mat& src, const cv::Mat& dst) {
    return (src.data == dst.data && src.step == dst.step) || src.dataend <= dst.datastart ||
           dst.dataend <= src.datastart;
}

}  // namespace

bool fillHoles(const cv::Mat& src, cv::Mat& dst, const TFillHolesOptions& options) {
    if (!takesBytes(src, "fillHoles")) return false;
    if (std::isnan(options.maxArea)) return refuse(rcNotFinite, "fillHoles", "maxArea is not a number");
    if (options.objects != cnFour && options.objects != cnEight)
        return refuse(rcOption, "fillHoles", "there is no connectivity %d; 4 or 8 is taken",
                      static_cast<int>(options.objects));
    const PixelRuns background(src, RunsOf::background, options.objects == cnEight ? 4 : 8);
    const std::vector<Gap> gaps = gapsOf(background, src.size());
    const bool apart = areApart(src, dst);
    if (apart) dst.create(src.size(), src.type());
    cv::Mat filled = apart ? dst : cv::Mat(src.size(), src.type());
    platform::forStripes(background.stripes(), [&](int, const cv::Range& rows) {
        src.rowRange(rows).copyTo(filled.rowRange(rows));
        for (int y = rows.start; y < rows.end; ++y) {
            for (const PixelRun& run : background.row(y)) {
                const Gap& gap = gaps[run.piece];
                const bool isHole = !gap.isOutside && !(static_cast<double>(gap.area) > options.maxArea);
                if (isHole) std::fill(filled.ptr(y) + run.begin, filled.ptr(y) + run.end, uchar{255});
            }
        }
    });
    if (!apart) filled.copyTo(dst);
    return true;
}

}  // namespace orx
