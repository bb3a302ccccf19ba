// Threshold methods against plain loops over the pixels, the four parts against OpenCV's squares.
#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/analysis/contour_center.h"
#include "orxFunctions/analysis/threshold.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

using Counts = std::array<int, 256>;

Counts countsOf(const cv::Mat& image) {
    Counts counts{};
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) ++counts[image.at<uchar>(y, x)];
    }
    return counts;
}

// Between-class variance of the split at `level`, of pixels below 255; -1 where a class is empty.
double varianceAt(const Counts& counts, int level) {
    double low = 0;
    double high = 0;
    double lowSum = 0;
    double highSum = 0;
    for (int v = 0; v < 255; ++v) {
        const double n = counts[static_cast<std::size_t>(v)];
        (v <= level ? low : high) += n;
        (v <= level ? lowSum : highSum) += n * v;
    }
    if (low == 0 || high == 0) return -1;
    const double apart = lowSum / low - highSum / high;
    return low * high / ((low + high) * (low + high)) * apart * apart;
}

void checkOtsu(const cv::Mat& image) {
    double score = 0;
    const int level = orx::getThresholdValOTSU(image, score);
    const Counts counts = countsOf(image);
    double best = -1;
    for (int t = 0; t < 255; ++t) best = std::max(best, varianceAt(counts, t));
    if (best <= 0) return;
    require(std::abs(score - best) < 1e-6 * best + 1e-6, "Otsu's score is the largest variance");
    require(std::abs(varianceAt(counts, level) - best) < 1e-6 * best + 1e-6,
            "Otsu's level has that variance");
}

void checkRequired(const cv::Mat& image, int required) {
    const Counts counts = countsOf(image);
    long above = 0;
    int expected = 255;
    while (expected >= 0 && above <= required) {
        --expected;
        if (expected >= 0) above += counts[static_cast<std::size_t>(expected)];
    }
    require(orx::getThresholdValueByRequiredNumber(image, required) == expected,
            "the level by number is that of counting");
}

// A level belongs to the histogram: it does not change where pixels move, or lie in a larger matrix.
void checkMoved(cv::Mat& image) {
    cv::Mat turned = image.t();
    cv::Mat larger(image.rows + 2, image.cols + 3, image.type(), cv::Scalar(77));
    cv::Mat inner = larger(cv::Rect(2, 1, image.cols, image.rows));
    image.copyTo(inner);
    for (int m = -1; m <= 12; ++m) {
        const auto method = static_cast<orx::TThresholdMethod>(m);
        const int level = orx::getThresholdValue(image, method);
        require(level >= -1 && level <= 256, "a level lies in its range");
        require(orx::getThresholdValue(turned, method) == level, "a turned picture has the same level");
        require(orx::getThresholdValue(inner, method) == level, "a view has the same level");
    }
}

// As the four parts are defined, by OpenCV's squares of any size.
cv::Mat plainQuadrants(const cv::Mat& image, int operation, int size) {
    constexpr int kOtsu = cv::THRESH_BINARY | cv::THRESH_OTSU;
    cv::Mat cleaned;
    cv::threshold(image, cleaned, 0, 255, kOtsu);
    cv::morphologyEx(cleaned, cleaned, operation, cv::getStructuringElement(cv::MORPH_RECT, {size, size}));
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(cleaned, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
    const auto largest = std::max_element(contours.begin(), contours.end(), [](const auto& a, const auto& b) {
        return cv::contourArea(a) < cv::contourArea(b);
    });
    const cv::Point centre = largest == contours.end() ? cv::Point() : orx::getContourCenterPt(*largest, 0);
    cv::Mat result = image.clone();
    for (const cv::Range& rows : {cv::Range(0, centre.y), cv::Range(centre.y, image.rows)}) {
        for (const cv::Range& cols : {cv::Range(0, centre.x), cv::Range(centre.x, image.cols)}) {
            if (rows.empty() || cols.empty()) continue;
            cv::Mat part = result(rows, cols);
            cv::threshold(image(rows, cols), part, 0, 255, kOtsu);
        }
    }
    return result;
}

void checkQuadrants(cv::Mat& image, int operation, int size) {
    const cv::Mat before = fuzz::copyOf(image);
    cv::Mat result(1, 1, CV_8UC1, cv::Scalar(9));
    bool refused = false;
    try {
        orx::OTSUfourPartsThreshold(image, result, operation, size);
    } catch (const cv::Exception&) {
        refused = true;
    }
    require(fuzz::same(image, before), "quadrants leave their source");
    if (refused) {
        require(result.size() == cv::Size(1, 1) && result.at<uchar>(0) == 9, "a refusal leaves the target");
        return;
    }
    require(result.size() == image.size() && cv::countNonZero((result != 0) & (result != 255)) == 0,
            "quadrants are 0 and 255");
    if (operation <= cv::MORPH_BLACKHAT && size > 0)
        require(fuzz::same(result, plainQuadrants(image, operation, size)), "quadrants by OpenCV's squares");
    cv::Mat inPlace = image.clone();
    orx::OTSUfourPartsThreshold(inPlace, inPlace, operation, size);
    require(fuzz::same(inPlace, result), "quadrants in place are the same");
}

void checkAnything(cv::Mat image, int required) {
    for (int m = 0; m <= 11; ++m) orx::getThresholdValue(image, static_cast<orx::TThresholdMethod>(m));
    double score = 0;
    orx::getThresholdValOTSU(image, score);
    orx::getThresholdValueByRequiredNumber(image, required);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const int required = input.integer();
    const int operation = input.between(-1, 8);
    // Small squares are OpenCV's, larger ones the library's own.
    const int shape = input.between(0, 9);
    const int kernel = shape < 7 ? shape : 20 * (shape - 6) + 7;
    if (input.byte() % 4U == 0) {
        checkAnything(input.matrix(), required);
        return 0;
    }
    cv::Mat image = input.grey();
    checkOtsu(image);
    checkRequired(image, required);
    checkMoved(image);
    checkQuadrants(image, operation, kernel);
    return 0;
}
