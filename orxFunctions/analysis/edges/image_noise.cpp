#include "orxFunctions/analysis/edges/image_noise.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace orx::edges {
namespace {

constexpr double kRounding = 0.28867513459481287;  // 1 / sqrt(12)

// The median of magnitudes counted in whole numbers, each standing for half a unit to either side.
double medianOf(const std::vector<std::int64_t>& counts, std::int64_t total) {
    const double half = static_cast<double>(total) / 2;
    double below = 0;
    std::size_t value = 0;
    while (below + static_cast<double>(counts[value]) < half) below += static_cast<double>(counts[value++]);
    const double inside = (half - below) / static_cast<double>(std::max<std::int64_t>(counts[value], 1));
    return value == 0 ? inside / 2 : static_cast<double>(value) - 0.5 + inside;
}

}  // namespace

double imageNoise(const cv::Mat& gray) {
    constexpr int kLargestResponse = 8 * 255;
    constexpr double kMaskNorm = 6;                   // root of the sum of the mask's squares
    constexpr double kMedianOfNormal = 0.6744897502;  // of |x| for a standard normal x
    constexpr std::int64_t kSamples = 1 << 16;        // the median of so many scatters by half a percent
    const int stride = 1 + static_cast<int>(static_cast<std::int64_t>(gray.rows) * gray.cols / kSamples);
    std::vector<std::int64_t> counts(kLargestResponse + 1);
    std::int64_t total = 0;
    for (int r = 1; r + 1 < gray.rows; r += stride) {
        const std::uint8_t* above = gray.ptr(r - 1);
        const std::uint8_t* row = gray.ptr(r);
        const std::uint8_t* below = gray.ptr(r + 1);
        for (int c = 1; c + 1 < gray.cols; ++c) {
            const int response = above[c - 1] + above[c + 1] + below[c - 1] + below[c + 1] + 4 * row[c] -
                                 2 * (above[c] + below[c] + row[c - 1] + row[c + 1]);
            ++counts[static_cast<std::size_t>(std::abs(response))];
        }
        total += std::max(0, gray.cols - 2);
    }
    if (total == 0) return kRounding;
    return std::max(kRounding, medianOf(counts, total) / (kMedianOfNormal * kMaskNorm));
}

}  // namespace orx::edges
