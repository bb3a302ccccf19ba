// Enhancement, white balance and focus, each beside what OpenCV's own calls take for the same. The argument
// is the height of the picture, 4 : 3.
#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/parts_picture.h"
#include "bench/steady.h"
#include "orxFunctions/orxfunctions.h"

namespace {

#define ORX_SIZES Arg(480)->Arg(2000)->Unit(benchmark::kMillisecond)

cv::Mat grey(const benchmark::State& state) { return bench::greyParts(bench::sizeOfHeight(state.range(0))); }

cv::Mat colour(const benchmark::State& state) {
    return bench::colourParts(bench::sizeOfHeight(state.range(0)));
}

// Operators that take a picture and give another one of the same kind.
using Change = void (*)(const cv::Mat& src, cv::Mat& dst);

void change(benchmark::State& state, const cv::Mat& img, Change change) {
    cv::Mat out;
    bench::steady(state, [&] {
        change(img, out);
        benchmark::DoNotOptimize(out.data);
    });
}
void ofGrey(benchmark::State& state, Change call) { change(state, grey(state), call); }
void ofColour(benchmark::State& state, Change call) { change(state, colour(state), call); }

void gamma(const cv::Mat& src, cv::Mat& dst) { orx::correctGamma(src, dst, 0.6); }
void lookUp(const cv::Mat& src, cv::Mat& dst) {
    cv::Mat table(1, 256, CV_8UC1);
    for (int i = 0; i < 256; ++i)
        table.at<uchar>(i) = cv::saturate_cast<uchar>(255 * std::pow(i / 255.0, 0.6));
    cv::LUT(src, table, dst);
}
BENCHMARK_CAPTURE(ofColour, gamma, gamma)->Name("gamma")->ORX_SIZES;
BENCHMARK_CAPTURE(ofColour, opencv_gamma, lookUp)->Name("opencv_gamma")->ORX_SIZES;

void equalise(const cv::Mat& src, cv::Mat& dst) { orx::enhanceImage(src, dst, orx::emEqualize); }
void clahe(const cv::Mat& src, cv::Mat& dst) { cv::createCLAHE(2.0, {8, 8})->apply(src, dst); }
void claheOfLuma(const cv::Mat& src, cv::Mat& dst) {
    cv::Mat luma;
    cv::cvtColor(src, dst, cv::COLOR_BGR2YCrCb);
    cv::extractChannel(dst, luma, 0);
    cv::createCLAHE(2.0, {8, 8})->apply(luma, luma);
    cv::insertChannel(luma, dst, 0);
    cv::cvtColor(dst, dst, cv::COLOR_YCrCb2BGR);
}
BENCHMARK_CAPTURE(ofGrey, equalise, equalise)->Name("equalise/grey")->ORX_SIZES;
BENCHMARK_CAPTURE(ofGrey, clahe, clahe)->Name("opencv_clahe/grey")->ORX_SIZES;
BENCHMARK_CAPTURE(ofColour, equalise, equalise)->Name("equalise/colour")->ORX_SIZES;
BENCHMARK_CAPTURE(ofColour, claheOfLuma, claheOfLuma)->Name("opencv_clahe/colour")->ORX_SIZES;

void detail(const cv::Mat& src, cv::Mat& dst) { orx::enhanceImage(src, dst, orx::emDetailGain); }
void unsharp(const cv::Mat& src, cv::Mat& dst) {
    cv::Mat smoothed;
    cv::GaussianBlur(src, smoothed, {}, 2.0);
    cv::addWeighted(src, 2.0, smoothed, -1.0, 0.0, dst);
}
BENCHMARK_CAPTURE(ofGrey, detail, detail)->Name("detail_gain/grey")->ORX_SIZES;
BENCHMARK_CAPTURE(ofGrey, unsharp, unsharp)->Name("opencv_unsharp/grey")->ORX_SIZES;

void greyWorld(const cv::Mat& src, cv::Mat& dst) { orx::whiteBalance(src, dst); }
void meanAndScale(const cv::Mat& src, cv::Mat& dst) {
    const cv::Scalar mean = cv::mean(src);
    const double common = (mean[0] + mean[1] + mean[2]) / 3;
    cv::multiply(src, cv::Scalar(common / mean[0], common / mean[1], common / mean[2]), dst);
}
BENCHMARK_CAPTURE(ofColour, greyWorld, greyWorld)->Name("white_balance/grey_world")->ORX_SIZES;
BENCHMARK_CAPTURE(ofColour, meanAndScale, meanAndScale)->Name("opencv_mean_and_scale")->ORX_SIZES;

void whitePatch(const cv::Mat& src, cv::Mat& dst) {
    orx::TWhiteBalanceOptions options;
    options.method = orx::wbWhitePatch;
    orx::whiteBalance(src, dst, options);
}
void quantileAndScale(const cv::Mat& src, cv::Mat& dst) {
    cv::Scalar white;
    for (int c = 0; c < 3; ++c) {
        const int bins = 256;
        const float range[] = {0, 256};
        const float* ranges = range;
        cv::Mat counts;
        cv::calcHist(&src, 1, &c, cv::noArray(), counts, 1, &bins, &ranges);
        double reached = 0;
        int level = 0;
        while (level < 255 && (reached += counts.at<float>(level)) < 0.99 * static_cast<double>(src.total()))
            ++level;
        white[c] = level;
    }
    const double highest = std::max({white[0], white[1], white[2]});
    cv::multiply(src, cv::Scalar(highest / white[0], highest / white[1], highest / white[2]), dst);
}
BENCHMARK_CAPTURE(ofColour, whitePatch, whitePatch)->Name("white_balance/white_patch")->ORX_SIZES;
BENCHMARK_CAPTURE(ofColour, quantileAndScale, quantileAndScale)->Name("opencv_quantile_and_scale")->ORX_SIZES;

void focus(benchmark::State& state, double (*measure)(const cv::Mat&)) {
    const cv::Mat img = grey(state);
    double value = 0;
    bench::steady(state, [&] { benchmark::DoNotOptimize(value = measure(img)); });
    state.counters["value"] = value;
}

double differences(const cv::Mat& img, int step, int norm) {
    const cv::Rect all(0, 0, img.cols, img.rows);
    const auto shifted = [&](cv::Point by) {
        return cv::norm(img(all & (all + by)), img(all & (all - by)), norm);
    };
    return (shifted({step, 0}) + shifted({0, step})) / static_cast<double>(img.total());
}
double opencvGrayDifference(const cv::Mat& img) { return differences(img, 1, cv::NORM_L1); }
double opencvBrenner(const cv::Mat& img) { return differences(img, 2, cv::NORM_L2SQR); }
double opencvTenengrad(const cv::Mat& img) {
    cv::Mat dx;
    cv::Mat dy;
    cv::spatialGradient(img, dx, dy, 3, cv::BORDER_REPLICATE);
    return (cv::norm(dx, cv::NORM_L2SQR) + cv::norm(dy, cv::NORM_L2SQR)) / static_cast<double>(img.total());
}
double opencvLaplacianVariance(const cv::Mat& img) {
    cv::Mat laplacian;
    cv::Laplacian(img, laplacian, CV_16S, 1, 1, 0, cv::BORDER_REPLICATE);
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(laplacian, mean, deviation);
    return deviation[0] * deviation[0];
}
BENCHMARK_CAPTURE(focus, gray_difference, AutoFocus::calcGrayDifference)->ORX_SIZES;
BENCHMARK_CAPTURE(focus, brenner, AutoFocus::calcBrenner)->ORX_SIZES;
BENCHMARK_CAPTURE(focus, tenengrad, AutoFocus::calcTenengrad)->ORX_SIZES;
BENCHMARK_CAPTURE(focus, laplacian_variance, AutoFocus::calcLaplacianVariance)->ORX_SIZES;
BENCHMARK_CAPTURE(focus, opencv_gray_difference, opencvGrayDifference)->ORX_SIZES;
BENCHMARK_CAPTURE(focus, opencv_brenner, opencvBrenner)->ORX_SIZES;
BENCHMARK_CAPTURE(focus, opencv_tenengrad, opencvTenengrad)->ORX_SIZES;
BENCHMARK_CAPTURE(focus, opencv_laplacian_variance, opencvLaplacianVariance)->ORX_SIZES;

}  // namespace
