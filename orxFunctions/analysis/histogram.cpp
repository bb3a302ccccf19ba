#include "orxFunctions/analysis/histogram_internal.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/platform/parallel_internal.h"

namespace orx {
namespace {

// Counts bytes into four tables in turn. In one table, neighbours of equal level would wait for each other's
// update; more than four take longer to clear and to add up, and gain nothing (threshold_bench).
class ByteCounter {
  public:
    void add(const uchar* bytes, std::size_t size) {
        std::size_t i = 0;
        for (; i + kUnrolled <= size; i += kUnrolled) {
            for (std::size_t k = 0; k < kUnrolled; ++k) ++tables_[k % kTables][bytes[i + k]];
        }
        for (; i < size; ++i) ++tables_[0][bytes[i]];
    }

    Histogram total() const {
        Histogram sum = tables_[0];
        for (std::size_t table = 1; table < kTables; ++table) {
            for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += tables_[table][i];
        }
        return sum;
    }

  private:
    static constexpr std::size_t kTables = 4;
    static constexpr std::size_t kUnrolled = 16;

    std::array<Histogram, kTables> tables_{};
};

bool isCountable(const cv::Mat& img) { return !img.empty() && img.dims == 2; }

// A calcHist bin: a 32-bit counter that passes through single precision.
std::uint32_t asLibraryBin(std::uint32_t count) {
    return static_cast<std::uint32_t>(std::llrint(static_cast<float>(count)));
}

Histogram histogramByCalcHist(const cv::Mat& img) {
    const int channel = 0;
    const int bins = kLevels;
    const float range[] = {0.0F, 255.0F};
    const float* ranges = range;
    cv::Mat counts;
    cv::calcHist(&img, 1, &channel, cv::noArray(), counts, 1, &bins, &ranges);
    Histogram histogram{};
    std::transform(counts.begin<float>(), counts.end<float>(), histogram.begin(),
                   [](float bin) { return static_cast<std::uint32_t>(std::llrint(bin)); });
    return histogram;
}

}  // namespace

Histogram directHistogram(const cv::Mat& img, RowWalk walk) {
    if (!isCountable(img)) return {};
    const bool oneLongRow =
        img.isContinuous() && (img.elemSize1() == 1 || walk == RowWalk::joinedWhenContinuous);
    const std::size_t rowBytes =
        static_cast<std::size_t>(img.cols) * static_cast<std::size_t>(img.channels());
    const auto countRows = [&](const cv::Range& rows) {
        ByteCounter counter;
        if (oneLongRow) {
            counter.add(img.data + rowBytes * static_cast<std::size_t>(rows.start),
                        rowBytes * static_cast<std::size_t>(rows.size()));
        } else {
            for (int y = rows.start; y < rows.end; ++y) counter.add(img.ptr(y), rowBytes);
        }
        return counter.total();
    };
    const platform::RowStripes stripes(img.size(), platform::kLightStripe);
    return platform::sumOfStripes(stripes, countRows, platform::addEach);
}

Histogram libraryHistogram(const cv::Mat& img) {
    if (!isCountable(img)) return {};
    if (img.type() != CV_8UC1) {
        const int depth = img.depth();
        const bool known = depth == CV_8U || depth == CV_16U || depth == CV_32F;
        return known ? histogramByCalcHist(img) : Histogram{};
    }
    Histogram histogram = directHistogram(img);
    histogram.back() = 0;
    std::transform(histogram.begin(), histogram.end(), histogram.begin(), asLibraryBin);
    return histogram;
}

int firstLevel(const Histogram& histogram) {
    const auto first =
        std::find_if(histogram.begin(), histogram.end(), [](std::uint32_t bin) { return bin > 0; });
    return static_cast<int>(first - histogram.begin());
}

RunningSums::RunningSums(const Histogram& histogram) : count_{}, weighted_{} {
    for (std::size_t i = 0; i < histogram.size(); ++i) {
        count_[i + 1] = count_[i] + histogram[i];
        weighted_[i + 1] = weighted_[i] + static_cast<std::int64_t>(i) * histogram[i];
    }
}

}  // namespace orx
