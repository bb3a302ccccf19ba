// Every threshold method on whole images, beside OpenCV's histogram and thresholds.
//
// Argument 0 of each benchmark is the image size: 0 for 640 x 480, 1 for 2448 x 2048, 2 for 4096 x 3072.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <opencv2/imgproc.hpp>
#include <string>
#include <utility>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

const cv::Size kSizes[] = {{640, 480}, {2448, 2048}, {4096, 3072}};

enum class Scene { texture, uniform };

// Bright rough parts on a dark ground under uneven light, with blur and noise: a histogram with two broad
// modes, and neighbours of similar but not equal levels.
cv::Mat texture(cv::Size size) {
    cv::Mat img(size, CV_32FC1);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const bool part = (x / 97 + y / 83) % 3 == 0;
            img.at<float>(y, x) = static_cast<float>((part ? 150.0 : 60.0) + 30.0 * x / size.width);
        }
    }
    cv::GaussianBlur(img, img, {}, 2.0);
    cv::Mat noise(size, CV_32FC1);
    cv::RNG generator(7);
    generator.fill(noise, cv::RNG::NORMAL, 0, 12);
    img += noise;
    cv::Mat grey;
    img.convertTo(grey, CV_8U);
    return grey;
}

cv::Mat& image(std::int64_t size, Scene scene) {
    static std::map<std::pair<std::int64_t, Scene>, cv::Mat> made;
    cv::Mat& img = made[{size, scene}];
    if (img.empty()) {
        const cv::Size pixels = kSizes[size];
        img = scene == Scene::texture ? texture(pixels) : cv::Mat(pixels, CV_8UC1, cv::Scalar(77));
    }
    return img;
}

void method(benchmark::State& state, orx::TThresholdMethod method, Scene scene) {
    cv::Mat& img = image(state.range(0), scene);
    int level = 0;
    for (auto _ : state) benchmark::DoNotOptimize(level = orx::getThresholdValue(img, method));
    state.counters["level"] = level;
}

void requiredNumber(benchmark::State& state) {
    cv::Mat& img = image(state.range(0), Scene::texture);
    for (auto _ : state) benchmark::DoNotOptimize(orx::getThresholdValueByRequiredNumber(img, 1000));
}

void fourParts(benchmark::State& state) {
    cv::Mat& img = image(state.range(0), Scene::texture);
    cv::Mat dst;
    for (auto _ : state) orx::OTSUfourPartsThreshold(img, dst, cv::MORPH_OPEN, 5);
}

// The histogram of every level.
void peerCalcHist(benchmark::State& state, Scene scene) {
    const cv::Mat& img = image(state.range(0), scene);
    const int channel = 0;
    const int bins = 256;
    const float range[] = {0, 256};
    const float* ranges = range;
    cv::Mat counts;
    for (auto _ : state) cv::calcHist(&img, 1, &channel, cv::noArray(), counts, 1, &bins, &ranges);
}

void peerThreshold(benchmark::State& state, int type, Scene scene) {
    const cv::Mat& img = image(state.range(0), scene);
    cv::Mat binary;
    double level = 0;
    for (auto _ : state) level = cv::threshold(img, binary, 100, 255, cv::THRESH_BINARY | type);
    state.counters["level"] = level;
}

// The quadrants from OpenCV's calls alone.
void peerFourParts(benchmark::State& state) {
    const cv::Mat& img = image(state.range(0), Scene::texture);
    constexpr int kOtsu = cv::THRESH_BINARY | cv::THRESH_OTSU;
    for (auto _ : state) {
        cv::Mat binary;
        cv::threshold(img, binary, 100, 255, kOtsu);
        cv::morphologyEx(binary, binary, cv::MORPH_OPEN, cv::getStructuringElement(cv::MORPH_RECT, {5, 5}));
        std::vector<std::vector<cv::Point>> contours;
        cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
        const auto largest = std::max_element(
            contours.begin(), contours.end(),
            [](const auto& a, const auto& b) { return cv::contourArea(a) < cv::contourArea(b); });
        const cv::Moments moments = cv::moments(*largest);
        const int cx = cvRound(moments.m10 / moments.m00);
        const int cy = cvRound(moments.m01 / moments.m00);
        cv::Mat dst = img.clone();
        for (const cv::Rect& part :
             {cv::Rect(0, 0, cx, cy), cv::Rect(cx, 0, img.cols - cx, cy), cv::Rect(0, cy, cx, img.rows - cy),
              cv::Rect(cx, cy, img.cols - cx, img.rows - cy)}) {
            cv::threshold(img(part), dst(part), 100, 255, kOtsu);
        }
        benchmark::DoNotOptimize(dst.data);
    }
}

const bool kRegistered = [] {
    const std::pair<const char*, orx::TThresholdMethod> methods[] = {{"otsu", orx::tmOtsu},
                                                                     {"triangle", orx::tmTriangle},
                                                                     {"minimum", orx::tmMinimum},
                                                                     {"intermodes", orx::tmIntermodes},
                                                                     {"huang", orx::tmHuang},
                                                                     {"iterative", orx::tmIterative},
                                                                     {"max_entropy", orx::tmMaxEntropy},
                                                                     {"iso_data", orx::tmIsoData},
                                                                     {"moments", orx::tmMoments},
                                                                     {"min_error", orx::tmMinError},
                                                                     {"shanbhag", orx::tmShanbhag}};
    const std::pair<std::string, Scene> scenes[] = {{"threshold", Scene::texture},
                                                    {"threshold_uniform", Scene::uniform}};
    std::vector<benchmark::internal::Benchmark*> all;
    for (const auto& [group, scene] : scenes) {
        const auto add = [&all, prefix = group + '/'](const std::string& name, auto... run) {
            all.push_back(benchmark::RegisterBenchmark((prefix + name).c_str(), run...));
        };
        add("opencv_calc_hist", peerCalcHist, scene);
        add("opencv_otsu", peerThreshold, static_cast<int>(cv::THRESH_OTSU), scene);
        add("opencv_triangle", peerThreshold, static_cast<int>(cv::THRESH_TRIANGLE), scene);
        for (const auto& [name, value] : methods) add(name, method, value, scene);
    }
    all.push_back(benchmark::RegisterBenchmark("threshold/required_number", requiredNumber));
    all.push_back(benchmark::RegisterBenchmark("four_parts/opencv_calls", peerFourParts));
    all.push_back(benchmark::RegisterBenchmark("four_parts/four_parts", fourParts));
    for (auto* bench : all) bench->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);
    return true;
}();

}  // namespace
