#include "orxFunctions/analysis/edges/suppression.h"

#include <algorithm>
#include <array>
#include <limits>
#include <opencv2/core/utility.hpp>
#include <vector>

#include "orxFunctions/analysis/edges/kernels.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx::edges {
namespace {

using edge_kernels::Kernels;
using edge_kernels::SuppressedRow;

constexpr std::uint8_t kNoEdge = 0;
constexpr std::uint8_t kMaybeEdge = 1;
constexpr std::uint8_t kEdge = 255;

std::int32_t to32Bits(std::int64_t threshold) {
    return static_cast<std::int32_t>(
        std::min<std::int64_t>(threshold, std::numeric_limits<std::int32_t>::max()));
}

// The three magnitude rows around the current one. Rows and columns outside the image are zero.
class MagnitudeRing {
  public:
    MagnitudeRing(const GradientImage& gradient, const Kernels& kernels)
        : gradient_(gradient), kernels_(kernels) {
        for (std::vector<std::int32_t>& row : rows_) {
            row.resize(static_cast<std::size_t>(gradient.cols()) + 2 + edge_kernels::kRowPadding);
        }
    }

    void load(int r) {
        std::vector<std::int32_t>& row = rows_[slot(r)];
        if (r < 0 || r >= gradient_.rows()) {
            std::fill(row.begin(), row.end(), 0);
            return;
        }
        const auto cols = static_cast<std::size_t>(gradient_.cols());
        kernels_.magnitudeRow(gradient_.row(r), cols, row.data() + 1);
        row[cols + 1] = 0;
    }
    const std::int32_t* row(int r) const { return rows_[slot(r)].data() + 1; }

  private:
    static std::size_t slot(int r) { return static_cast<std::size_t>((r + 3) % 3); }

    const GradientImage& gradient_;
    const Kernels& kernels_;
    std::array<std::vector<std::int32_t>, 3> rows_;
};

// Positions in the map of the maxima of a stripe of rows.
struct Maxima {
    std::vector<std::uint8_t*> strong;
    std::vector<std::uint8_t*> weak;
};

void addRow(const SuppressedRow& found, std::uint8_t* mapRow, Maxima& maxima) {
    for (std::size_t i = 0; i < found.strongCount; ++i) {
        mapRow[found.strong[i]] = kEdge;
        maxima.strong.push_back(mapRow + found.strong[i]);
    }
    for (std::size_t i = 0; i < found.weakCount; ++i) {
        mapRow[found.weak[i]] = kMaybeEdge;
        maxima.weak.push_back(mapRow + found.weak[i]);
    }
}

Maxima suppressRows(const GradientImage& gradient, SquaredThresholds thresholds, int from, int to,
                    cv::Mat& map) {
    const Kernels& kernels = edge_kernels::chosen();
    const auto cols = static_cast<std::size_t>(gradient.cols());
    std::vector<std::int32_t> columns(2 * cols);
    SuppressedRow found{columns.data(), columns.data() + cols, 0, 0};
    MagnitudeRing ring(gradient, kernels);
    Maxima maxima;
    ring.load(from - 1);
    ring.load(from);
    for (int r = from; r < to; ++r) {
        ring.load(r + 1);
        kernels.suppressRow(gradient.row(r), ring.row(r - 1), ring.row(r), ring.row(r + 1), cols,
                            to32Bits(thresholds.low), to32Bits(thresholds.high), found);
        addRow(found, map.ptr(r + 1) + 1, maxima);
    }
    return maxima;
}

// Spreads edges to the possible edges that touch them. The outcome is the set of connected maxima that hold a
// strong one, in whatever order pixels are visited.
void spreadEdges(std::vector<std::uint8_t*>& stack, std::ptrdiff_t step) {
    const std::ptrdiff_t neighbours[] = {-step - 1, -step, -step + 1, -1, 1, step - 1, step, step + 1};
    while (!stack.empty()) {
        std::uint8_t* pixel = stack.back();
        stack.pop_back();
        for (const std::ptrdiff_t offset : neighbours) {
            if (pixel[offset] != kMaybeEdge) continue;
            pixel[offset] = kEdge;
            stack.push_back(pixel + offset);
        }
    }
}

}  // namespace

EdgePixels findEdgePixels(const GradientImage& gradient, SquaredThresholds thresholds) {
    cv::Mat map(gradient.rows() + 2, gradient.cols() + 2, CV_8U, cv::Scalar(kNoEdge));
    std::vector<Maxima> stripes(static_cast<std::size_t>(stripeCount(gradient.rows())));
    platform::parallelFor(static_cast<int>(stripes.size()), [&](int stripe) {
        const int from = stripe * kStripeRows;
        stripes[static_cast<std::size_t>(stripe)] =
            suppressRows(gradient, thresholds, from, std::min(gradient.rows(), from + kStripeRows), map);
    });
    EdgePixels edges;
    for (Maxima& stripe : stripes) {
        edges.pixels.insert(edges.pixels.end(), stripe.strong.begin(), stripe.strong.end());
        spreadEdges(stripe.strong, static_cast<std::ptrdiff_t>(map.step));
    }
    for (const Maxima& stripe : stripes) {
        for (std::uint8_t* pixel : stripe.weak) {
            if (*pixel == kEdge) {
                edges.pixels.push_back(pixel);
            } else {
                *pixel = kNoEdge;
            }
        }
    }
    edges.map = map(cv::Rect(1, 1, gradient.cols(), gradient.rows()));
    return edges;
}

}  // namespace orx::edges
