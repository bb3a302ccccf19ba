#include "orxFunctions/matching/search/edge_field.h"

#include <algorithm>
#include <array>

#include "orxFunctions/analysis/edges/gradient.h"
#include "orxFunctions/matching/search/kernels.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx::matching {
namespace {

constexpr int kTileRows = 32;
constexpr int kTileColumns = 64;

int tilesFor(int length, int tile) { return (length + tile - 1) / tile; }

float leastMagnitude(double leastSlope) {
    const double scaled = leastSlope * edges::kGradientScale;
    return static_cast<float>(std::max(1.0, scaled * scaled));
}

// Squared magnitudes of the rows around one, with an element before and after them.
class MagnitudeRows {
  public:
    MagnitudeRows(const edges::GradientImage& gradient, int first)
        : gradient_(gradient),
          width_(static_cast<std::size_t>(gradient.cols()) + 2),
          storage_(3 * (width_ + edge_kernels::kRowPadding)) {
        for (std::size_t i = 0; i < 3; ++i) {
            rows_[i] = storage_.data() + i * (width_ + edge_kernels::kRowPadding);
        }
        fill(rows_[1], first - 1);
        fill(rows_[2], first);
    }

    void advanceTo(int row) {
        std::rotate(rows_.begin(), rows_.begin() + 1, rows_.end());
        fill(rows_[2], row + 1);
    }

    // Of column 0: of the row above the one that was advanced to, of itself and of the one below.
    const std::int32_t* row(std::size_t i) const { return rows_[i] + 1; }

  private:
    void fill(std::int32_t* out, int row) {
        edge_kernels::chosen().magnitudeRow(gradient_.row(row) - 2, width_, out);
    }

    const edges::GradientImage& gradient_;
    std::size_t width_;
    std::vector<std::int32_t> storage_;
    std::array<std::int32_t*, 3> rows_{};
};

}  // namespace

EdgeField::EdgeField(const cv::Mat& level, double sigma, double leastSlope)
    : level_(level),
      taps_(edges::gaussianTaps(sigma)),
      least_(leastMagnitude(leastSlope)),
      tiles_(tilesFor(level.cols, kTileColumns), tilesFor(level.rows, kTileRows)),
      made_(static_cast<std::size_t>(tiles_.area())),
      step_(2 * (static_cast<std::ptrdiff_t>(level.cols) + 2 * kMargin)),
      pairs_(makeZeros<std::int16_t>(static_cast<std::size_t>(level.rows + 2 * kMargin) *
                                     static_cast<std::size_t>(step_))) {}

void EdgeField::prepare(const std::vector<cv::Rect>& parts) {
    std::vector<int> missing;
    for (const cv::Rect& part : parts) {
        const cv::Rect inside = part & cv::Rect(cv::Point(), size());
        if (inside.empty()) continue;
        for (int y = inside.y / kTileRows; y <= (inside.br().y - 1) / kTileRows; ++y) {
            for (int x = inside.x / kTileColumns; x <= (inside.br().x - 1) / kTileColumns; ++x) {
                const int tile = y * tiles_.width + x;
                if (made_[static_cast<std::size_t>(tile)] != 0) continue;
                made_[static_cast<std::size_t>(tile)] = 1;
                missing.push_back(tile);
            }
        }
    }
    platform::parallelFor(static_cast<int>(missing.size()),
                          [&](int i) { makeTile(missing[static_cast<std::size_t>(i)]); });
}

void EdgeField::makeTile(int tile) {
    const cv::Rect all(cv::Point(), size());
    const cv::Point corner(tile % tiles_.width * kTileColumns, tile / tiles_.width * kTileRows);
    const cv::Rect inner = cv::Rect(corner, cv::Size(kTileColumns, kTileRows)) & all;
    // As far as the smoothing and the comparison with neighbours look.
    const int reach = static_cast<int>(taps_.size());
    const cv::Rect outer =
        cv::Rect(inner.x - reach, inner.y - reach, inner.width + 2 * reach, inner.height + 2 * reach) & all;
    const edges::GradientImage gradient = edges::gaussianGradient(level_(outer), taps_);
    const search_kernels::Kernels& kernels = search_kernels::chosen();
    const cv::Point shift = inner.tl() - outer.tl();
    MagnitudeRows magnitudes(gradient, shift.y);
    for (int r = 0; r < inner.height; ++r) {
        magnitudes.advanceTo(shift.y + r);
        kernels.fieldRow(gradient.row(shift.y + r) + 2 * shift.x, magnitudes.row(0) + shift.x,
                         magnitudes.row(1) + shift.x, magnitudes.row(2) + shift.x,
                         static_cast<std::size_t>(inner.width), least_,
                         pairs_.get() + (inner.y + r + kMargin) * step_ + 2 * (inner.x + kMargin));
    }
}

}  // namespace orx::matching
