#include "orxFunctions/analysis/edges/suppression.h"

#include <algorithm>
#include <array>
#include <limits>
#include <opencv2/core/utility.hpp>
#include <vector>

#include "orxFunctions/analysis/edges/kernels.h"

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

// A stripe of rows: positions in the map of its maxima.
struct Maxima {
    std::vector<std::uint8_t*> strong;
    std::vector<std::uint8_t*> weak;
    std::vector<std::uint8_t*> atSeams;  // edges in the first and the last row
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

// Rows of the map are one further down than those of the image, which its frame surrounds.
void clearRows(cv::Mat& map, int from, int to) {
    const int first = from == 0 ? 0 : from + 1;
    const int last = to + 2 == map.rows ? to + 2 : to + 1;
    map.rowRange(first, last).setTo(kNoEdge);
}

Maxima suppressRows(const GradientImage& gradient, SquaredThresholds thresholds, int from, int to,
                    cv::Mat& map) {
    const Kernels& kernels = edge_kernels::chosen();
    const auto cols = static_cast<std::size_t>(gradient.cols());
    std::vector<std::int32_t> columns(2 * cols);
    SuppressedRow found{columns.data(), columns.data() + cols, 0, 0};
    MagnitudeRing ring(gradient, kernels);
    Maxima maxima;
    clearRows(map, from, to);
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

// Spreads edges to the possible edges that touch them, in the rows from `begin` to before `end`. The outcome
// is the set of connected maxima that hold a strong one, in whatever order pixels are visited. Calls
// visit(pixel) for each.
template <class Visit>
void spreadEdges(std::vector<std::uint8_t*>& stack, std::ptrdiff_t step, const std::uint8_t* begin,
                 const std::uint8_t* end, const Visit& visit) {
    const std::ptrdiff_t neighbours[] = {-step - 1, -step, -step + 1, -1, 1, step - 1, step, step + 1};
    while (!stack.empty()) {
        std::uint8_t* pixel = stack.back();
        stack.pop_back();
        visit(pixel);
        for (const std::ptrdiff_t offset : neighbours) {
            std::uint8_t* const next = pixel + offset;
            if (next < begin || next >= end || *next != kMaybeEdge) continue;
            *next = kEdge;
            stack.push_back(next);
        }
    }
}

// Within the stripe alone.
void spreadWithin(cv::Mat& map, int from, int to, Maxima& maxima) {
    std::vector<std::uint8_t*> stack = maxima.strong;
    const std::uint8_t* const second = map.ptr(from + 2);
    const std::uint8_t* const last = map.ptr(to);
    spreadEdges(stack, static_cast<std::ptrdiff_t>(map.step), map.ptr(from + 1), map.ptr(to + 1),
                [&](std::uint8_t* pixel) {
                    if (pixel < second || pixel >= last) maxima.atSeams.push_back(pixel);
                });
}

// And on from one stripe to the next.
void spreadOverSeams(cv::Mat& map, const std::vector<Maxima>& stripes) {
    std::vector<std::uint8_t*> stack;
    for (const Maxima& stripe : stripes)
        stack.insert(stack.end(), stripe.atSeams.begin(), stripe.atSeams.end());
    spreadEdges(stack, static_cast<std::ptrdiff_t>(map.step), map.datastart, map.dataend,
                [](std::uint8_t*) {});
}

// Weak maxima that no strong one reaches are none.
void dropUnreached(Maxima& maxima) {
    const auto isUnreached = [](std::uint8_t* pixel) {
        if (*pixel == kEdge) return false;
        *pixel = kNoEdge;
        return true;
    };
    maxima.weak.erase(std::remove_if(maxima.weak.begin(), maxima.weak.end(), isUnreached), maxima.weak.end());
}

// All strong ones, then the others.
std::vector<std::uint8_t*> pixelsOf(const std::vector<Maxima>& stripes) {
    std::size_t count = 0;
    for (const Maxima& stripe : stripes) count += stripe.strong.size() + stripe.weak.size();
    std::vector<std::uint8_t*> pixels;
    pixels.reserve(count);
    for (const Maxima& stripe : stripes)
        pixels.insert(pixels.end(), stripe.strong.begin(), stripe.strong.end());
    for (const Maxima& stripe : stripes) pixels.insert(pixels.end(), stripe.weak.begin(), stripe.weak.end());
    return pixels;
}

}  // namespace

EdgePixels findEdgePixels(const GradientImage& gradient, SquaredThresholds thresholds) {
    cv::Mat map(gradient.rows() + 2, gradient.cols() + 2, CV_8U);
    std::vector<Maxima> stripes(static_cast<std::size_t>(stripeCount(gradient.rows())));
    forStripes(gradient.rows(), [&](int stripe, int from, int to) {
        Maxima& maxima = stripes[static_cast<std::size_t>(stripe)];
        maxima = suppressRows(gradient, thresholds, from, to, map);
        spreadWithin(map, from, to, maxima);
    });
    spreadOverSeams(map, stripes);
    forStripes(gradient.rows(),
               [&](int stripe, int, int) { dropUnreached(stripes[static_cast<std::size_t>(stripe)]); });
    return {map(cv::Rect(1, 1, gradient.cols(), gradient.rows())), pixelsOf(stripes)};
}

}  // namespace orx::edges
