#include "orxFunctions/matching/search/direction_maps.h"

#include <array>
#include <cmath>
#include <vector>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx::matching {
namespace {

using search_kernels::Kernels;
using search_kernels::ResponseRanks;

// For directions in the same bin, in neighbouring bins and two bins (45 degrees) apart: about the cosine.
constexpr std::array<std::uint8_t, search_kernels::kRanks> kResponses = {search_kernels::kBestResponse, 13,
                                                                         7};
constexpr int kStripeRows = 32;

void addBin(ResponseRanks& ranks, std::size_t rank, int bin) {
    const int wrapped = bin & (DirectionMaps::kBins - 1);
    std::uint8_t& bits = wrapped < 8 ? ranks.low[rank] : ranks.high[rank];
    bits = static_cast<std::uint8_t>(bits | (1U << (wrapped & 7)));
}

ResponseRanks ranksOf(int bin, bool anySign) {
    ResponseRanks ranks{};
    for (std::size_t rank = 0; rank < search_kernels::kRanks; ++rank) {
        ranks.value[rank] = kResponses[rank];
        for (const int turn : {0, DirectionMaps::kBins / 2}) {
            if (turn != 0 && !anySign) continue;
            addBin(ranks, rank, bin + turn + static_cast<int>(rank));
            addBin(ranks, rank, bin + turn - static_cast<int>(rank));
        }
    }
    return ranks;
}

// Bits of the bins for each pixel, in a frame of zeros.
struct BinImage {
    explicit BinImage(cv::Size size)
        : low(cv::Mat::zeros(size.height + 2, size.width + 2 + static_cast<int>(search_kernels::kRowPadding),
                             CV_8UC1)),
          high(low.clone()) {}

    std::uint8_t* lowRow(int r) { return low.ptr(r + 1) + 1; }
    std::uint8_t* highRow(int r) { return high.ptr(r + 1) + 1; }

    cv::Mat low;
    cv::Mat high;
};

}  // namespace

DirectionMaps::DirectionMaps(const EdgeField& field, bool anySign)
    : size_(field.size()),
      maps_(
          cv::Mat::zeros(kBins * (size_.height + 2 * kBlockRows), size_.width + 2 * kBlockColumns, CV_8UC1)) {
    const Kernels& kernels = search_kernels::chosen();
    std::array<ResponseRanks, kBins> ranks{};
    for (int bin = 0; bin < kBins; ++bin) ranks[static_cast<std::size_t>(bin)] = ranksOf(bin, anySign);
    BinImage bins(size_);
    const auto width = static_cast<std::size_t>(size_.width);
    const int stripes = (size_.height + kStripeRows - 1) / kStripeRows;
    const auto forRows = [&](int stripe, const auto& body) {
        const int end = std::min(size_.height, (stripe + 1) * kStripeRows);
        for (int r = stripe * kStripeRows; r < end; ++r) body(r);
    };
    platform::parallelFor(stripes, [&](int stripe) {
        forRows(stripe, [&](int r) { kernels.binRow(field.row(r), width, bins.lowRow(r), bins.highRow(r)); });
    });
    platform::parallelFor(stripes, [&](int stripe) {
        std::vector<std::uint8_t> low(width + search_kernels::kRowPadding);
        std::vector<std::uint8_t> high(low.size());
        std::vector<std::uint8_t> responses(low.size());
        forRows(stripe, [&](int r) {
            kernels.spreadRow(bins.lowRow(r - 1), bins.lowRow(r), bins.lowRow(r + 1), width, low.data());
            kernels.spreadRow(bins.highRow(r - 1), bins.highRow(r), bins.highRow(r + 1), width, high.data());
            for (int bin = 0; bin < kBins; ++bin) {
                kernels.responseRow(low.data(), high.data(), ranks[static_cast<std::size_t>(bin)], width,
                                    responses.data());
                std::copy_n(
                    responses.data(), width,
                    maps_.ptr(kBlockRows + bin * (size_.height + 2 * kBlockRows) + r) + kBlockColumns);
            }
        });
    });
}

int DirectionMaps::binOf(double x, double y) {
    return cvRound(std::atan2(y, x) * (kBins / (2 * kPi))) & (kBins - 1);
}

}  // namespace orx::matching
