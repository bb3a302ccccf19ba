#include "orxFunctions/analysis/edges/gradient.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <opencv2/core/utility.hpp>

namespace orx::edges {
namespace {

using edge_kernels::GaussTap;
using edge_kernels::Kernels;

// To 16 bits, half to even and saturated.
std::int16_t roundedTo16(float value) {
    constexpr float kLow = std::numeric_limits<std::int16_t>::min();
    constexpr float kHigh = std::numeric_limits<std::int16_t>::max();
    return static_cast<std::int16_t>(std::lrint(std::clamp(value, kLow, kHigh)));
}

int reflected(int position, int length) {
    return cv::borderInterpolate(position, length, cv::BORDER_REFLECT_101);
}

// Reflects a row into the `margin` elements before and after it.
template <typename Pixel>
void addMargins(Pixel* row, int cols, int margin) {
    for (int i = 1; i <= margin; ++i) {
        row[-i] = row[reflected(-i, cols)];
        row[cols - 1 + i] = row[reflected(cols - 1 + i, cols)];
    }
}

// The largest number of leading coefficients that sum to at most 128.
std::size_t firstGroup(const std::vector<std::int16_t>& coefficients) {
    int sum = 0;
    std::size_t count = 0;
    while (count < coefficients.size() && sum + coefficients[count] <= kGradientScale) {
        sum += coefficients[count++];
    }
    return count;
}

// Filters rows of an image with a derivative kernel.
class DerivativeFilter {
  public:
    DerivativeFilter(const cv::Mat& image, const std::vector<std::int16_t>& halfKernel)
        : image_(image),
          radius_(static_cast<int>(halfKernel.size())),
          padded_(static_cast<std::size_t>(image.cols) + 2 * halfKernel.size()),
          horizontal_(halfKernel.size()),
          vertical_(halfKernel.size()),
          taps_{horizontal_.data(), vertical_.data(), halfKernel.size(), firstGroup(halfKernel)} {
        const std::uint8_t* first = padded_.data() + radius_;
        for (std::size_t k = 0; k < halfKernel.size(); ++k) {
            const auto distance = static_cast<std::ptrdiff_t>(k) + 1;
            horizontal_[k] = {first + distance, first - distance, halfKernel[k]};
            vertical_[k].coefficient = halfKernel[k];
        }
    }

    void filter(int r, const Kernels& kernels, std::int16_t* out) {
        std::uint8_t* const row = padded_.data() + radius_;
        std::copy_n(image_.ptr(r), image_.cols, row);
        addMargins(row, image_.cols, radius_);
        for (int k = 1; k <= radius_; ++k) {
            vertical_[static_cast<std::size_t>(k - 1)].after = image_.ptr(reflected(r + k, image_.rows));
            vertical_[static_cast<std::size_t>(k - 1)].before = image_.ptr(reflected(r - k, image_.rows));
        }
        kernels.gradientRow(taps_, static_cast<std::size_t>(image_.cols), out);
    }

  private:
    const cv::Mat& image_;
    int radius_;
    std::vector<std::uint8_t> padded_;
    std::vector<edge_kernels::ByteTap> horizontal_;
    std::vector<edge_kernels::ByteTap> vertical_;
    edge_kernels::ByteTaps taps_;
};

}  // namespace

void GradientImage::frameRow(int r) {
    std::int16_t* pairs = row(r);
    std::copy_n(pairs, 2, pairs - 2);
    std::copy_n(pairs + 2 * (cols_ - 1), 2, pairs + 2 * cols_);
    std::fill_n(pairs + 2 * (cols_ + 1), 2 * edge_kernels::kRowPadding, std::int16_t{0});
}

void GradientImage::frameRows() {
    const std::size_t bytes = static_cast<std::size_t>(step()) * sizeof(std::int16_t);
    std::memcpy(row(-1) - 2, row(0) - 2, bytes);
    std::memcpy(row(rows_) - 2, row(rows_ - 1) - 2, bytes);
}

std::vector<std::int16_t> derivativeKernel(double sigma) {
    const auto radius = static_cast<int>(std::lrint(3 * sigma));
    std::vector<float> values;
    values.reserve(static_cast<std::size_t>(std::max(radius, 0)));
    float sum = 0;
    for (int i = 1; i <= radius; ++i) {
        const double x = i;
        const auto value = static_cast<float>(-x * std::exp(-x * x / (2 * sigma * sigma)));
        values.push_back(value);
        sum += value;
    }
    // A radius of 0 leaves the centre alone, which is 0: such a sigma finds no edges.
    std::vector<std::int16_t> kernel;
    kernel.reserve(values.size());
    const float scale = static_cast<float>(kGradientScale) / sum;
    for (const float value : values) kernel.push_back(roundedTo16(value * scale));
    while (!kernel.empty() && kernel.back() == 0) kernel.pop_back();
    return kernel;
}

GradientImage derivativeGradient(const cv::Mat& smoothed, const std::vector<std::int16_t>& halfKernel) {
    GradientImage gradient(smoothed.rows, smoothed.cols);
    const Kernels& kernels = edge_kernels::chosen();
    forStripes(smoothed.rows, [&](int, int from, int to) {
        DerivativeFilter filter(smoothed, halfKernel);
        for (int r = from; r < to; ++r) {
            filter.filter(r, kernels, gradient.row(r));
            gradient.frameRow(r);
        }
    });
    gradient.frameRows();
    return gradient;
}

std::vector<GaussTap> gaussianTaps(double sigma) {
    constexpr int kOne = 1 << 14;
    const int radius = static_cast<int>(std::ceil(3 * sigma)) | 1;  // odd: an even number of taps
    const auto weight = [sigma](int i) { return std::exp(-0.5 * i * i / (sigma * sigma)); };
    double smoothSum = weight(0);
    double deriveSum = 0;
    for (int i = 1; i <= radius; ++i) {
        smoothSum += 2 * weight(i);
        deriveSum += i * weight(i);
    }
    std::vector<GaussTap> taps(static_cast<std::size_t>(radius) + 1);
    int smoothRest = kOne / 2;  // what the taps of one side must sum to, half of the centre included
    int deriveRest = kOne;
    for (int i = radius; i >= 1; --i) {
        GaussTap& tap = taps[static_cast<std::size_t>(i)];
        tap.smooth = static_cast<std::int16_t>(std::lrint(kOne * weight(i) / smoothSum));
        smoothRest -= tap.smooth;
        if (i > 1) {
            tap.derive = static_cast<std::int16_t>(std::lrint(kOne * i * weight(i) / deriveSum));
            deriveRest -= tap.derive;
        }
    }
    taps[0].smooth = static_cast<std::int16_t>(smoothRest);
    taps[1].derive = static_cast<std::int16_t>(deriveRest);
    return taps;
}

GradientImage gaussianGradient(const cv::Mat& gray, const std::vector<GaussTap>& taps) {
    GradientImage gradient(gray.rows, gray.cols);
    const Kernels& kernels = edge_kernels::chosen();
    const int radius = static_cast<int>(taps.size()) - 1;
    const std::size_t padded = static_cast<std::size_t>(gray.cols) + 2 * static_cast<std::size_t>(radius);
    forStripes(gray.rows, [&](int, int from, int to) {
        std::vector<const std::uint8_t*> rows(2 * taps.size() - 1);
        std::vector<std::int16_t> smooth(padded);
        std::vector<std::int16_t> derive(padded);
        // Columns first, into the middle of the rows; then their margins; then rows.
        std::int16_t* const smoothRow = smooth.data() + radius;
        std::int16_t* const deriveRow = derive.data() + radius;
        for (int r = from; r < to; ++r) {
            for (int k = -radius; k <= radius; ++k) {
                const int row = reflected(r + k, gray.rows);
                rows[static_cast<std::size_t>(radius) + static_cast<std::size_t>(k)] = gray.ptr(row);
            }
            kernels.gaussColumns(taps.data(), taps.size(), rows.data(), static_cast<std::size_t>(gray.cols),
                                 smoothRow, deriveRow);
            addMargins(smoothRow, gray.cols, radius);
            addMargins(deriveRow, gray.cols, radius);
            kernels.gaussRows(taps.data(), taps.size(), smoothRow, deriveRow,
                              static_cast<std::size_t>(gray.cols), gradient.row(r));
            gradient.frameRow(r);
        }
    });
    gradient.frameRows();
    return gradient;
}

}  // namespace orx::edges
