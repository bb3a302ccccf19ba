#include "orxFunctions/analysis/enhance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx {
namespace {

bool takesEnhanceOptions(const TEnhanceOptions& options) {
    return takesOptions("enhanceImage", {{"clipLimit", options.clipLimit, 0, 100, true},
                                         {"tiles", static_cast<double>(options.tiles), 1, 64},
                                         {"gain", options.gain, 0, 20},
                                         {"sigma", options.sigma, 0.3, 50}});
}

bool takesHighlightOptions(const THighlightOptions& options) {
    if (isBetween(options.ceiling, 0, 1) && options.knee >= 0 && options.knee < options.ceiling) return true;
    return refuse(rcOption, "suppressHighlights",
                  "the knee is %g and the ceiling %g; a ceiling up to 1 and a knee from 0 to below are taken",
                  options.knee, options.ceiling);
}

// Calls body(rows) for stripes of rows.
template <class Body>
void forRowsOf(const cv::Mat& img, std::int64_t pixelsOfAStripe, const Body& body) {
    platform::forStripes(platform::RowStripes(img.size(), pixelsOfAStripe),
                         [&](int, const cv::Range& rows) { body(rows); });
}

cv::Mat equalised(const cv::Mat& grey, const TEnhanceOptions& options) {
    const cv::Size tiles(std::min(options.tiles, grey.cols), std::min(options.tiles, grey.rows));
    cv::Mat result;
    cv::createCLAHE(options.clipLimit, tiles)->apply(grey, result);
    return result;
}

cv::Mat sharpened(const cv::Mat& grey, const TEnhanceOptions& options) {
    cv::Mat smooth;
    cv::GaussianBlur(grey, smooth, {}, options.sigma, options.sigma,
                     cv::BORDER_REPLICATE | cv::BORDER_ISOLATED);
    cv::Mat result(grey.size(), grey.type());
    forRowsOf(grey, platform::kStripe, [&](const cv::Range& rows) {
        cv::addWeighted(grey.rowRange(rows), 1 + options.gain, smooth.rowRange(rows), -options.gain, 0,
                        cv::Mat(result.rowRange(rows)));
    });
    return result;
}

// Replaces the brightness of a picture by what `change` makes of it.
template <class Change>
cv::Mat withBrightness(const cv::Mat& src, Change change) {
    if (src.channels() == 1) return change(src);
    if (src.channels() == 2) {
        cv::Mat result = src.clone();
        cv::insertChannel(change(greyOf(src)), result, 0);
        return result;
    }
    cv::Mat lumaColour(src.size(), CV_MAKETYPE(src.depth(), 3));
    cv::Mat luma(src.size(), src.depth());
    forRowsOf(src, platform::kStripe, [&](const cv::Range& rows) {
        cv::Mat colours = lumaColour.rowRange(rows);
        cv::cvtColor(src.rowRange(rows), colours, cv::COLOR_BGR2YCrCb);
        cv::extractChannel(colours, cv::Mat(luma.rowRange(rows)), 0);
    });
    const cv::Mat changed = change(luma);
    cv::Mat result(src.size(), src.type());
    forRowsOf(src, platform::kStripe, [&](const cv::Range& rows) {
        cv::Mat colours = lumaColour.rowRange(rows);
        cv::insertChannel(changed.rowRange(rows), colours, 0);
        cv::Mat stripe = result.rowRange(rows);
        cv::cvtColor(colours, stripe, cv::COLOR_YCrCb2BGR, src.channels());
        if (src.channels() == 4) cv::mixChannels(cv::Mat(src.rowRange(rows)), stripe, {3, 3});
    });
    return result;
}

// For each level of a depth the new one; shares of full scale in and out.
template <class Curve>
std::vector<ushort> levelTable(const cv::Mat& img, Curve curve) {
    const double top = fullLevel(img);
    std::vector<ushort> table(static_cast<std::size_t>(top) + 1);
    const auto fill = [&](std::size_t from, std::size_t to) {
        for (std::size_t level = from; level < to; ++level)
            table[level] = cv::saturate_cast<ushort>(top * curve(static_cast<double>(level) / top));
    };
    // A curve of 65536 levels takes as long as mapping a picture by it.
    constexpr std::size_t kPart = 1 << 13;
    if (table.size() < kPart) {
        fill(0, table.size());
    } else {
        platform::parallelFor(static_cast<int>(table.size() / kPart), [&](int i) {
            const std::size_t from = static_cast<std::size_t>(i) * kPart;
            fill(from, from + kPart);
        });
    }
    return table;
}

// With alpha a table for each channel, that of alpha leaving it as it is; one for all channels is faster.
cv::Mat mappedBytes(const cv::Mat& img, const std::vector<ushort>& table) {
    const int light = lightChannels(img);
    const int tableChannels = light == img.channels() ? 1 : img.channels();
    cv::Mat tables(1, static_cast<int>(table.size()), CV_8UC(tableChannels));
    uchar* entry = tables.ptr();
    for (std::size_t level = 0; level < table.size(); ++level) {
        for (int c = 0; c < tableChannels; ++c) {
            *entry++ = static_cast<uchar>(c < light ? table[level] : level);
        }
    }
    cv::Mat result;
    cv::LUT(img, tables, result);
    return result;
}

struct RowOfWords {
    int cols;
    int channels;
    int light;  // channels that are mapped
};

void mapRow(const ushort* from, RowOfWords row, const ushort* table, ushort* to) {
    for (int x = 0; x < row.cols; ++x, from += row.channels, to += row.channels) {
        for (int c = 0; c < row.light; ++c) to[c] = table[from[c]];
        for (int c = row.light; c < row.channels; ++c) to[c] = from[c];
    }
}

cv::Mat mappedWords(const cv::Mat& img, const std::vector<ushort>& table) {
    cv::Mat result(img.size(), img.type());
    const RowOfWords row{img.cols, img.channels(), lightChannels(img)};
    forRowsOf(img, platform::kStripe, [&](const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y)
            mapRow(img.ptr<ushort>(y), row, table.data(), result.ptr<ushort>(y));
    });
    return result;
}

// By the highest channel, which is mapped exactly; the others keep their ratio to it.
template <class Pixel>
void scaleRow(Pixel* pixel, int cols, int channels, const ushort* table) {
    for (int x = 0; x < cols; ++x, pixel += channels) {
        const Pixel highest = std::max({pixel[0], pixel[1], pixel[2]});
        if (table[highest] == highest) continue;
        const double factor = static_cast<double>(table[highest]) / highest;
        for (int c = 0; c < 3; ++c) pixel[c] = cv::saturate_cast<Pixel>(pixel[c] * factor);
    }
}

template <class Pixel>
cv::Mat scaledByHighest(const cv::Mat& img, const std::vector<ushort>& table) {
    cv::Mat result(img.size(), img.type());
    forRowsOf(img, platform::kStripe, [&](const cv::Range& rows) {
        img.rowRange(rows).copyTo(result.rowRange(rows));
        for (int y = rows.start; y < rows.end; ++y)
            scaleRow(result.ptr<Pixel>(y), img.cols, img.channels(), table.data());
    });
    return result;
}

template <class Curve>
bool applyCurve(const cv::Mat& src, cv::Mat& dst, Curve curve) {
    const std::vector<ushort> table = levelTable(src, curve);
    dst = src.depth() == CV_8U ? mappedBytes(src, table) : mappedWords(src, table);
    return true;
}

}  // namespace

bool enhanceImage(const cv::Mat& src, cv::Mat& dst, TEnchanceMethod method, const TEnhanceOptions& options) {
    if (!takesPicture(src, "enhanceImage") || !takesEnhanceOptions(options)) return false;
    const auto change = [&](const cv::Mat& grey) {
        return method == emEqualize ? equalised(grey, options) : sharpened(grey, options);
    };
    dst = withBrightness(src, change);
    return true;
}

bool correctGamma(const cv::Mat& src, cv::Mat& dst, double gamma) {
    if (!takesPicture(src, "correctGamma") || !takesOptions("correctGamma", {{"gamma", gamma, 0.01, 100}}))
        return false;
    return applyCurve(src, dst, [=](double level) { return std::pow(level, gamma); });
}

bool stretchLog(const cv::Mat& src, cv::Mat& dst, double gain) {
    if (!takesPicture(src, "stretchLog") || !takesOptions("stretchLog", {{"gain", gain, 0, 1e6, true}}))
        return false;
    return applyCurve(src, dst, [=](double level) { return std::log1p(gain * level) / std::log1p(gain); });
}

bool suppressHighlights(const cv::Mat& src, cv::Mat& dst, const THighlightOptions& options) {
    if (!takesPicture(src, "suppressHighlights") || !takesHighlightOptions(options)) return false;
    const double range = options.ceiling - options.knee;
    const auto curve = [=](double level) {
        if (level <= options.knee) return level;
        return options.ceiling - range * std::exp(-(level - options.knee) / range);
    };
    if (lightChannels(src) == 1) return applyCurve(src, dst, curve);
    const std::vector<ushort> table = levelTable(src, curve);
    dst = src.depth() == CV_8U ? scaledByHighest<uchar>(src, table) : scaledByHighest<ushort>(src, table);
    return true;
}

}  // namespace orx
