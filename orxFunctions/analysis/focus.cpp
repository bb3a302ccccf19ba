#include "orxFunctions/analysis/focus.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace AutoFocus {
namespace {

constexpr double kNoImage = -1.0;
// A view is measured as if it were a copy.
constexpr int kBorder = cv::BORDER_REPLICATE | cv::BORDER_ISOLATED;

double pixelCount(const cv::Mat& img) { return static_cast<double>(img.total()); }

double squared(double value) { return value * value; }

// What partOf(rows) gives for stripes of rows, added in their order.
template <class PartOf>
auto sumByStripes(const cv::Mat& grey, const PartOf& partOf) {
    return orx::platform::sumOfStripes({grey.size(), orx::platform::kStripe}, partOf,
                                       orx::platform::addNumbers);
}

// The norm of the differences between pixels `step` columns apart, and `step` rows apart, added.
double differences(const cv::Mat& grey, int step, int norm) {
    const auto ofRows = [&](const cv::Range& rows) {
        double sum = 0;
        if (grey.cols > step) {
            const cv::Mat stripe = grey.rowRange(rows);
            sum += cv::norm(stripe.colRange(step, grey.cols), stripe.colRange(0, grey.cols - step), norm);
        }
        const cv::Range upper(rows.start, std::min(rows.end, grey.rows - step));
        if (upper.start < upper.end) {
            const cv::Range lower(upper.start + step, upper.end + step);
            sum += cv::norm(grey.rowRange(lower), grey.rowRange(upper), norm);
        }
        return sum;
    };
    // Whole numbers are added exactly in any order up to here; larger ones in that of the rows.
    constexpr double kLargestExact = 9007199254740992.0;
    const double sum = sumByStripes(grey, ofRows);
    return sum < kLargestExact ? sum : ofRows(cv::Range(0, grey.rows));
}

// Derivatives of bytes are whole numbers of at most 1020, and their sums the same in any order. They are
// taken row by row, without a picture of them; so many at once that the sum of two squares each fits 32 bits.
constexpr std::size_t kBlock = 512;

// Rows of a picture of bytes with one more pixel at each end, all borders repeated.
class DerivativeRows {
  public:
    explicit DerivativeRows(const cv::Mat& bytes)
        : bytes_(bytes), sums_(columns() + 2), differences_(columns() + 2) {}

    std::size_t columns() const { return static_cast<std::size_t>(bytes_.cols); }

    // `combine` takes the row above, the row, the one below and two rows for what it makes of each column.
    template <class Combine>
    void read(int y, Combine combine) {
        const uchar* above = bytes_.ptr(std::max(y - 1, 0));
        const uchar* row = bytes_.ptr(y);
        const uchar* below = bytes_.ptr(std::min(y + 1, bytes_.rows - 1));
        for (std::size_t x = 0; x < columns(); ++x)
            combine(above[x], row[x], below[x], sums_[x + 1], differences_[x + 1]);
        for (std::vector<short>* line : {&sums_, &differences_}) {
            line->front() = (*line)[1];
            line->back() = (*line)[columns()];
        }
    }

    // Pixel x has its place at x + 1.
    const short* sums() const { return sums_.data(); }
    const short* differences() const { return differences_.data(); }

  private:
    const cv::Mat& bytes_;
    std::vector<short> sums_;
    std::vector<short> differences_;
};

std::int64_t sobelSquaresOfRows(const cv::Mat& grey, const cv::Range& range) {
    DerivativeRows rows(grey);
    std::int64_t total = 0;
    for (int y = range.start; y < range.end; ++y) {
        rows.read(y, [](int above, int pixel, int below, short& sum, short& difference) {
            sum = static_cast<short>(above + 2 * pixel + below);
            difference = static_cast<short>(below - above);
        });
        for (std::size_t from = 0; from < rows.columns(); from += kBlock) {
            const short* s = rows.sums() + from;
            const short* d = rows.differences() + from;
            const std::size_t count = std::min(kBlock, rows.columns() - from);
            int sum = 0;
            for (std::size_t x = 0; x < count; ++x) {
                const auto dx = static_cast<short>(s[x + 2] - s[x]);
                const auto dy = static_cast<short>(d[x] + 2 * d[x + 1] + d[x + 2]);
                sum += dx * dx + dy * dy;
            }
            total += sum;
        }
    }
    return total;
}

double sobelSquaresOfBytes(const cv::Mat& grey) {
    const auto ofRows = [&](const cv::Range& rows) { return sobelSquaresOfRows(grey, rows); };
    return static_cast<double>(sumByStripes(grey, ofRows));
}

struct LaplacianSums {
    std::int64_t total = 0;
    std::int64_t squares = 0;

    void operator+=(const LaplacianSums& more) {
        total += more.total;
        squares += more.squares;
    }
};

LaplacianSums laplacianSumsOfRows(const cv::Mat& grey, const cv::Range& range) {
    DerivativeRows rows(grey);
    LaplacianSums sums;
    for (int y = range.start; y < range.end; ++y) {
        // The row itself in the place of differences.
        rows.read(y, [](int above, int pixel, int below, short& sum, short& row) {
            sum = static_cast<short>(above - 4 * pixel + below);
            row = static_cast<short>(pixel);
        });
        for (std::size_t from = 0; from < rows.columns(); from += kBlock) {
            const short* s = rows.sums() + from;
            const short* p = rows.differences() + from;
            const std::size_t count = std::min(kBlock, rows.columns() - from);
            int sum = 0;
            int square = 0;
            for (std::size_t x = 0; x < count; ++x) {
                const auto laplacian = static_cast<short>(p[x] + s[x + 1] + p[x + 2]);
                sum += laplacian;
                square += laplacian * laplacian;
            }
            sums += {sum, square};
        }
    }
    return sums;
}

double laplacianVarianceOfBytes(const cv::Mat& grey) {
    const auto ofRows = [&](const cv::Range& rows) { return laplacianSumsOfRows(grey, rows); };
    const auto sums = sumByStripes(grey, ofRows);
    // As cv::meanStdDev rounds it.
    const double scale = 1.0 / pixelCount(grey);
    const double mean = static_cast<double>(sums.total) * scale;
    return squared(std::sqrt(std::max(static_cast<double>(sums.squares) * scale - mean * mean, 0.0)));
}

// Derivatives of 16-bit images are exact in single precision.
double sobelSquaresOfWords(const cv::Mat& grey) {
    cv::Mat derivative;
    double sum = 0;
    for (const int alongX : {1, 0}) {
        cv::Sobel(grey, derivative, CV_32F, alongX, 1 - alongX, 3, 1, 0, kBorder);
        sum += cv::norm(derivative, cv::NORM_L2SQR);
    }
    return sum;
}

double laplacianVarianceOfWords(const cv::Mat& grey) {
    cv::Mat laplacian;
    cv::Laplacian(grey, laplacian, CV_32F, 1, 1, 0, kBorder);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(laplacian, mean, deviation);
    return squared(deviation[0] / orx::levelUnit(grey));
}

}  // namespace

double calcGrayDifference(const cv::Mat& img) {
    if (!orx::takesPicture(img, "calcGrayDifference")) return kNoImage;
    const cv::Mat grey = orx::greyOf(img);
    return differences(grey, 1, cv::NORM_L1) / pixelCount(grey) / orx::levelUnit(grey);
}

double calcBrenner(const cv::Mat& img) {
    if (!orx::takesPicture(img, "calcBrenner")) return kNoImage;
    const cv::Mat grey = orx::greyOf(img);
    return differences(grey, 2, cv::NORM_L2SQR) / pixelCount(grey) / squared(orx::levelUnit(grey));
}

double calcTenengrad(const cv::Mat& img) {
    if (!orx::takesPicture(img, "calcTenengrad")) return kNoImage;
    const cv::Mat grey = orx::greyOf(img);
    const double sum = grey.depth() == CV_8U ? sobelSquaresOfBytes(grey) : sobelSquaresOfWords(grey);
    return sum / pixelCount(grey) / squared(orx::levelUnit(grey));
}

double calcLaplacianVariance(const cv::Mat& img) {
    if (!orx::takesPicture(img, "calcLaplacianVariance")) return kNoImage;
    const cv::Mat grey = orx::greyOf(img);
    return grey.depth() == CV_8U ? laplacianVarianceOfBytes(grey) : laplacianVarianceOfWords(grey);
}

}  // namespace AutoFocus
