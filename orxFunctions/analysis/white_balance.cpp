#include "orxFunctions/analysis/white_balance.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx {
namespace {

using ChannelCounts = std::array<std::vector<std::uint64_t>, 3>;

ChannelCounts noCounts(const cv::Mat& img) {
    ChannelCounts counts;
    counts.fill(std::vector<std::uint64_t>(static_cast<std::size_t>(fullLevel(img)) + 1));
    return counts;
}

template <class Pixel>
ChannelCounts countRows(const cv::Mat& img, const cv::Range& rows) {
    ChannelCounts counts = noCounts(img);
    const int channels = img.channels();
    for (int y = rows.start; y < rows.end; ++y) {
        const Pixel* pixel = img.ptr<Pixel>(y);
        for (int x = 0; x < img.cols; ++x, pixel += channels) {
            for (std::size_t c = 0; c < 3; ++c) ++counts[c][pixel[c]];
        }
    }
    return counts;
}

// Neighbours of equal level would wait for each other's update of one table.
template <>
ChannelCounts countRows<uchar>(const cv::Mat& img, const cv::Range& rows) {
    constexpr std::size_t kTables = 4;
    std::array<std::array<std::array<std::uint32_t, 256>, 3>, kTables> tables{};
    ChannelCounts counts = noCounts(img);
    const auto channels = static_cast<std::size_t>(img.channels());
    const auto cols = static_cast<std::size_t>(img.cols);
    const auto count = [&](const uchar* pixel, std::size_t table) {
        for (std::size_t c = 0; c < 3; ++c) ++tables[table][c][pixel[c]];
    };
    for (int y = rows.start; y < rows.end; ++y) {
        const uchar* pixel = img.ptr(y);
        std::size_t x = 0;
        for (; x + kTables <= cols; x += kTables, pixel += kTables * channels) {
            for (std::size_t table = 0; table < kTables; ++table) count(pixel + table * channels, table);
        }
        for (; x < cols; ++x, pixel += channels) count(pixel, 0);
    }
    for (const auto& table : tables) {
        for (std::size_t c = 0; c < 3; ++c) {
            for (std::size_t i = 0; i < table[c].size(); ++i) counts[c][i] += table[c][i];
        }
    }
    return counts;
}

// The counters of 16 bits take as much memory as a million pixels: one set of them, on one thread.
platform::RowStripes stripesToCount(const cv::Mat& img) {
    const bool deep = img.depth() == CV_16U;
    return {img.size(), deep ? static_cast<std::int64_t>(img.total()) : platform::kStripe};
}

template <class Pixel>
ChannelCounts countLevels(const cv::Mat& img) {
    const auto ofRows = [&](const cv::Range& rows) { return countRows<Pixel>(img, rows); };
    const auto addChannels = [](ChannelCounts& sum, const ChannelCounts& part) {
        for (std::size_t c = 0; c < sum.size(); ++c) platform::addEach(sum[c], part[c]);
    };
    return platform::sumOfStripes(stripesToCount(img), ofRows, addChannels);
}

cv::Vec3d whiteLevels(const cv::Mat& img, double share) {
    const ChannelCounts counts = img.depth() == CV_8U ? countLevels<uchar>(img) : countLevels<ushort>(img);
    cv::Vec3d white;
    for (int c = 0; c < 3; ++c) {
        const std::vector<std::uint64_t>& count = counts[static_cast<std::size_t>(c)];
        const double required = share * static_cast<double>(img.total());
        std::size_t level = 0;
        double reached = static_cast<double>(count[0]);
        while (reached < required && level + 1 < count.size()) reached += static_cast<double>(count[++level]);
        white[c] = static_cast<double>(level);
    }
    return white;
}

cv::Vec3d meanLevels(const cv::Mat& img) {
    // Whole numbers, in doubles: exact in any order.
    const auto ofRows = [&](const cv::Range& rows) { return cv::sum(img.rowRange(rows)); };
    const cv::Scalar sum =
        platform::sumOfStripes({img.size(), platform::kStripe}, ofRows, platform::addNumbers);
    const cv::Scalar mean = sum * (1.0 / static_cast<double>(img.total()));
    return {mean[0], mean[1], mean[2]};
}

cv::Vec3d gainsTo(double wanted, const cv::Vec3d& levels) {
    cv::Vec3d gains;
    for (int c = 0; c < 3; ++c) gains[c] = levels[c] > 0 ? wanted / levels[c] : 1.0;
    return gains;
}

bool isUsable(const cv::Mat& img, const TWhiteBalanceOptions& options, const char* function) {
    return takesPicture(img, function) &&
           takesOptions(function, {{"method", static_cast<double>(options.method), wbGreyWorld, wbWhitePatch},
                                   {"whiteShare", options.whiteShare, 0, 1, true}});
}

// Of a picture and options that are usable.
TWhiteBalance balanceOf(const cv::Mat& img, const TWhiteBalanceOptions& options) {
    TWhiteBalance balance;
    balance.valid = true;
    if (lightChannels(img) == 1) return balance;
    if (options.method == wbGreyWorld) {
        const cv::Vec3d mean = meanLevels(img);
        balance.gains = gainsTo((mean[0] + mean[1] + mean[2]) / 3, mean);
    } else {
        const cv::Vec3d white = whiteLevels(img, options.whiteShare);
        balance.gains = gainsTo(std::max({white[0], white[1], white[2]}), white);
    }
    return balance;
}

// Where a gain is too large, it is refused with the code of the one who gave the gains.
bool takesGains(const cv::Vec3d& gains, TRefusalCode code, const char* function) {
    if (isBetween(gains[0], 0, 1e6) && isBetween(gains[1], 0, 1e6) && isBetween(gains[2], 0, 1e6))
        return true;
    return refuse(code, function, "the gains are %g, %g and %g; 0 to 1e6 are taken", gains[0], gains[1],
                  gains[2]);
}

// What cv::multiply makes of each level of 8 bits, channel by channel.
using Products = std::array<std::array<uchar, 256>, 4>;

Products productsOf(const cv::Scalar& factors) {
    cv::Mat levels(1, 256, CV_8UC4);
    for (int level = 0; level < levels.cols; ++level) levels.col(level).setTo(cv::Scalar::all(level));
    cv::multiply(levels, factors, levels);
    Products products;
    for (std::size_t i = 0; i < 256; ++i) {
        for (std::size_t c = 0; c < 4; ++c) products[c][i] = levels.data[4 * i + c];
    }
    return products;
}

template <std::size_t Channels>
void replaceLevels(const Products& products, const uchar* src, std::size_t pixels, uchar* dst) {
    for (std::size_t i = 0; i < pixels; ++i, src += Channels, dst += Channels) {
        uchar replaced[Channels];
        for (std::size_t c = 0; c < Channels; ++c) replaced[c] = products[c][src[c]];
        for (std::size_t c = 0; c < Channels; ++c) dst[c] = replaced[c];
    }
}

void replaceRows(const cv::Mat& src, const Products& products, cv::Mat& dst) {
    const auto cols = static_cast<std::size_t>(src.cols);
    for (int y = 0; y < src.rows; ++y) {
        if (src.channels() == 3) {
            replaceLevels<3>(products, src.ptr(y), cols, dst.ptr(y));
        } else {
            replaceLevels<4>(products, src.ptr(y), cols, dst.ptr(y));
        }
    }
}

cv::Mat multiplied(const cv::Mat& src, const cv::Vec3d& gains) {
    cv::Mat result;
    if (lightChannels(src) == 1) {
        result = src.clone();
    } else {
        result.create(src.size(), src.type());
        const cv::Scalar factors(gains[0], gains[1], gains[2], 1.0);
        const auto multiplyEach = [&](const auto& multiplyRows) {
            platform::forStripes({src.size(), platform::kStripe}, [&](int, const cv::Range& rows) {
                cv::Mat part(result.rowRange(rows));
                multiplyRows(src.rowRange(rows), part);
            });
        };
        if (src.depth() == CV_8U) {
            multiplyEach([products = productsOf(factors)](const cv::Mat& rows, cv::Mat& part) {
                replaceRows(rows, products, part);
            });
        } else {
            multiplyEach([&](const cv::Mat& rows, cv::Mat& part) { cv::multiply(rows, factors, part); });
        }
    }
    return result;
}

}  // namespace

TWhiteBalance getWhiteBalance(const cv::Mat& img, const TWhiteBalanceOptions& options) {
    if (!isUsable(img, options, "getWhiteBalance")) return {};
    return balanceOf(img, options);
}

bool applyWhiteBalance(const cv::Mat& src, cv::Mat& dst, const TWhiteBalance& balance) {
    if (!takesPicture(src, "applyWhiteBalance")) return false;
    if (!balance.valid)
        return refuse(rcNotReady, "applyWhiteBalance", "the balance is none (valid is false)");
    if (!takesGains(balance.gains, rcOption, "applyWhiteBalance")) return false;
    dst = multiplied(src, balance.gains);
    return true;
}

bool whiteBalance(const cv::Mat& src, cv::Mat& dst, const TWhiteBalanceOptions& options) {
    if (!isUsable(src, options, "whiteBalance")) return false;
    const TWhiteBalance balance = balanceOf(src, options);
    if (!takesGains(balance.gains, rcNoResult, "whiteBalance")) return false;
    dst = multiplied(src, balance.gains);
    return true;
}

}  // namespace orx
