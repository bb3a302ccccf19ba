#include "orxFunctions/analysis/enhance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

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
    cv::Mat result;
    cv::addWeighted(grey, 1 + options.gain, smooth, -options.gain, 0, result);
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
    cv::Mat lumaColour;
    cv::cvtColor(src, lumaColour, cv::COLOR_BGR2YCrCb);
    cv::Mat luma;
    cv::extractChannel(lumaColour, luma, 0);
    cv::insertChannel(change(luma), lumaColour, 0);
    cv::Mat result;
    cv::cvtColor(lumaColour, result, cv::COLOR_YCrCb2BGR, src.channels());
    if (src.channels() == 4) {
        cv::Mat alpha;
        cv::extractChannel(src, alpha, 3);
        cv::insertChannel(alpha, result, 3);
    }
    return result;
}

// For each level of a depth the new one; shares of full scale in and out.
template <class Curve>
std::vector<ushort> levelTable(const cv::Mat& img, Curve curve) {
    const double top = fullLevel(img);
    std::vector<ushort> table(static_cast<std::size_t>(top) + 1);
    for (std::size_t level = 0; level < table.size(); ++level) {
        table[level] = cv::saturate_cast<ushort>(top * curve(static_cast<double>(level) / top));
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

cv::Mat mappedWords(const cv::Mat& img, const std::vector<ushort>& table) {
    cv::Mat result = img.clone();
    const int channels = img.channels();
    const int light = lightChannels(img);
    for (int y = 0; y < result.rows; ++y) {
        auto* pixel = result.ptr<ushort>(y);
        for (int x = 0; x < result.cols; ++x, pixel += channels) {
            for (int c = 0; c < light; ++c) pixel[c] = table[pixel[c]];
        }
    }
    return result;
}

// By the highest channel, which is mapped exactly; the others keep their ratio to it.
template <class Pixel>
void scaleByHighest(cv::Mat& img, const std::vector<ushort>& table) {
    const int channels = img.channels();
    for (int y = 0; y < img.rows; ++y) {
        Pixel* pixel = img.ptr<Pixel>(y);
        for (int x = 0; x < img.cols; ++x, pixel += channels) {
            const Pixel highest = std::max({pixel[0], pixel[1], pixel[2]});
            if (table[highest] == highest) continue;
            const double factor = static_cast<double>(table[highest]) / highest;
            for (int c = 0; c < 3; ++c) pixel[c] = cv::saturate_cast<Pixel>(pixel[c] * factor);
        }
    }
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
    cv::Mat result = src.clone();
    src.depth() == CV_8U ? scaleByHighest<uchar>(result, table) : scaleByHighest<ushort>(result, table);
    dst = result;
    return true;
}

}  // namespace orx
