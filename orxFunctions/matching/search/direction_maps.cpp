#include "orxFunctions/matching/search/direction_maps.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx::matching {
namespace {

constexpr int kStripeRows = 32;

std::int32_t packedDirection(int bin) {
    const double angle = bin * 2 * kPi / DirectionMaps::kBins;
    const auto low = static_cast<std::uint16_t>(cvRound(search_kernels::kFieldUnit * std::cos(angle)));
    const auto high = static_cast<std::uint16_t>(cvRound(search_kernels::kFieldUnit * std::sin(angle)));
    return static_cast<std::int32_t>(low | (static_cast<std::uint32_t>(high) << 16));
}

// The larger of both, in both.
void joinSigns(std::uint8_t* along, std::uint8_t* against, std::size_t width) {
    for (std::size_t i = 0; i < width; ++i) along[i] = std::max(along[i], against[i]);
    std::copy_n(along, width, against);
}

}  // namespace

DirectionMaps::DirectionMaps(const EdgeField& field, bool anySign)
    : size_(field.size()),
      maps_(
          cv::Mat::zeros(kBins * (size_.height + 2 * kBlockRows), size_.width + 2 * kBlockColumns, CV_8UC1)) {
    const search_kernels::Kernels& kernels = search_kernels::chosen();
    const auto width = static_cast<std::size_t>(size_.width);
    const auto rowOf = [&](int bin, int r) {
        return maps_.ptr(kBlockRows + bin * (size_.height + 2 * kBlockRows) + r) + kBlockColumns;
    };
    cv::Mat edges(size_, CV_8UC1);
    platform::parallelFor((size_.height + kStripeRows - 1) / kStripeRows, [&](int stripe) {
        const int end = std::min(size_.height, (stripe + 1) * kStripeRows);
        for (int r = stripe * kStripeRows; r < end; ++r) {
            for (int bin = 0; bin < kBins / 2; ++bin) {
                std::uint8_t* along = rowOf(bin, r);
                std::uint8_t* against = rowOf(bin + kBins / 2, r);
                kernels.responseRow(field.row(r), packedDirection(bin), width, along, against);
                if (anySign) joinSigns(along, against, width);
            }
            const std::int16_t* pairs = field.row(r);
            std::uint8_t* edge = edges.ptr(r);
            for (int x = 0; x < size_.width; ++x) edge[x] = (pairs[2 * x] | pairs[2 * x + 1]) != 0 ? 1 : 0;
        }
    });
    cv::integral(edges, edges_, CV_32S);
}

int DirectionMaps::edgesIn(const cv::Rect& part) const {
    const cv::Rect inside = part & cv::Rect(cv::Point(), size_);
    if (inside.empty()) return 0;
    const int* above = edges_.ptr<int>(inside.y);
    const int* below = edges_.ptr<int>(inside.br().y);
    return below[inside.br().x] - below[inside.x] - above[inside.br().x] + above[inside.x];
}

int DirectionMaps::binOf(double x, double y) {
    return cvRound(std::atan2(y, x) * (kBins / (2 * kPi))) & (kBins - 1);
}

}  // namespace orx::matching
