#include "orxFunctions/analysis/threshold.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <utility>
#include <vector>

#include "orxFunctions/analysis/contour_center.h"
#include "orxFunctions/analysis/histogram_internal.h"
#include "orxFunctions/analysis/largest_outline_internal.h"
#include "orxFunctions/analysis/square_morphology_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx {
namespace {

constexpr std::size_t kParts = 4;
using Parts = std::array<cv::Rect, kParts>;

// An image cut at a row and a column; parts may be empty.
Parts partsOf(cv::Size size, cv::Point centre) {
    const cv::Size rest(size.width - centre.x, size.height - centre.y);
    return {cv::Rect(0, 0, centre.x, centre.y), cv::Rect(centre.x, 0, rest.width, centre.y),
            cv::Rect(0, centre.y, centre.x, rest.height), cv::Rect(centre, rest)};
}

// Calls body(i, piece) for what each of the parts has in the rows.
template <class Body>
void forPartsIn(const Parts& parts, const cv::Range& rows, const Body& body) {
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const cv::Rect& part = parts[i];
        const int top = std::max(part.y, rows.start);
        const int bottom = std::min(part.br().y, rows.end);
        if (part.width > 0 && top < bottom) body(i, cv::Rect(part.x, top, part.width, bottom - top));
    }
}

using Histograms = std::array<Histogram, kParts>;

Histograms histogramsOf(const cv::Mat& bytes, const Parts& parts) {
    const auto ofRows = [&](const cv::Range& rows) {
        Histograms counts{};
        forPartsIn(parts, rows,
                   [&](std::size_t i, const cv::Rect& piece) { counts[i] = directHistogram(bytes(piece)); });
        return counts;
    };
    const auto add = [](Histograms& sum, const Histograms& part) {
        for (std::size_t i = 0; i < sum.size(); ++i) platform::addEach(sum[i], part[i]);
    };
    return platform::sumOfStripes({bytes.size(), platform::kLightStripe}, ofRows, add);
}

// The level that cv::threshold chooses with THRESH_OTSU, from its sums in its order, so that levels which
// are equally good are told apart as there. N. Otsu, IEEE Trans. Syst. Man Cybern. 9 (1979).
int otsuLevelOf(const Histogram& histogram, double pixels) {
    const double share = 1.0 / pixels;
    double mean = 0;
    for (std::size_t i = 0; i < histogram.size(); ++i) mean += static_cast<double>(i) * histogram[i];
    mean *= share;
    double lower = 0;  // share of the pixels up to the level
    double lowerMean = 0;
    double best = 0;
    int level = 0;
    for (int i = 0; i < kLevels; ++i) {
        const double own = histogram[static_cast<std::size_t>(i)] * share;
        const double lowerSum = lowerMean * lower;
        lower += own;
        const double upper = 1.0 - lower;
        lowerMean = lowerSum;
        if (std::min(lower, upper) < FLT_EPSILON || std::max(lower, upper) > 1.0 - FLT_EPSILON) continue;
        lowerMean = (lowerSum + i * own) / lower;
        const double upperMean = (mean - lower * lowerMean) / upper;
        const double variance = lower * upper * (lowerMean - upperMean) * (lowerMean - upperMean);
        if (variance > best) {
            best = variance;
            level = i;
        }
    }
    return level;
}

// Each part by its own level, 255 above.
void binariseBytes(const cv::Mat& src, const Parts& parts, cv::Mat& dst) {
    const Histograms histograms = histogramsOf(src, parts);
    std::array<int, kParts> levels{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const double pixels = static_cast<double>(parts[i].width) * parts[i].height;
        levels[i] = otsuLevelOf(histograms[i], std::max(1.0, pixels));
    }
    platform::forStripes({src.size(), platform::kStripe}, [&](int, const cv::Range& rows) {
        forPartsIn(parts, rows, [&](std::size_t i, const cv::Rect& piece) {
            cv::threshold(src(piece), cv::Mat(dst(piece)), levels[i], 255, cv::THRESH_BINARY);
        });
    });
}

void binarise(const cv::Mat& src, cv::Point centre, cv::Mat& dst) {
    dst.create(src.size(), src.type());
    if (src.type() == CV_8UC1 && !src.empty()) {
        binariseBytes(src, partsOf(src.size(), centre), dst);
    } else {
        // Refused here or further on. With Otsu the level passed is ignored.
        cv::threshold(src, dst, 100, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
    }
}

}  // namespace

void OTSUfourPartsThreshold(const cv::Mat& src, cv::Mat& dst, int morphOp, int kernelSize) {
    if (src.dims > 2) {
        refuse(rcImageDimensions, "OTSUfourPartsThreshold", "the image has %d dimensions; two are taken",
               src.dims);
        return;
    }
    cv::Mat binary;
    cv::Mat spare;
    binarise(src, {0, 0}, binary);
    squareMorphology(binary, spare, morphOp, kernelSize);
    const std::vector<cv::Point> outline = largestOutline(binary);
    // Where the four quadrants meet; the first pixel when no object shows.
    const cv::Point centre = outline.empty() ? cv::Point(0, 0) : getContourCenterPt(outline, 0);
    binarise(src, centre, binary);
    dst = binary;
}

void OTSUfourPartsThreshold(cv::Mat& src, cv::Mat& dst, int morphOp, int kernelSize) {
    OTSUfourPartsThreshold(std::as_const(src), dst, morphOp, kernelSize);
}

}  // namespace orx
