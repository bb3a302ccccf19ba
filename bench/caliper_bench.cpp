// Calipers, beside the same search from OpenCV's calls: linear interpolation of the rectangle or of the ring,
// the mean across it, the derivative of a Gaussian, and the extrema with a parabola through three samples.
// Sampled at half pixels like ours; OpenCV's interpolation is linear with positions in 32nds of a pixel, ours
// is cubic and exact, and its edges are refined until they stay.
#include <benchmark/benchmark.h>

#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/parts_picture.h"
#include "bench/steady.h"
#include "orxFunctions/orxfunctions.h"

namespace {

constexpr double kSpacing = 0.5;  // pixels
constexpr int kLead = 10;         // samples: five standard deviations
constexpr int kLength = 60;       // pixels

// Through two edges of a bar, slanted or along the rows.
cv::Mat bar() {
    cv::Mat img(480, 640, CV_8UC1, cv::Scalar(40));
    cv::rectangle(img, {315, 100}, {345, 380}, 200, cv::FILLED);
    cv::GaussianBlur(img, img, {}, 1.0);
    cv::Mat noise(img.size(), CV_8UC1);
    cv::theRNG().state = 1;
    cv::randn(noise, 10, 2);
    return img + noise;
}

cv::Mat disk() {
    cv::Mat img(480, 640, CV_8UC1, cv::Scalar(40));
    cv::circle(img, {320, 240}, 100, 200, cv::FILLED, cv::LINE_AA);
    cv::GaussianBlur(img, img, {}, 1.0);
    return img;
}

void box(benchmark::State& state, cv::Point2d direction) {
    const cv::Mat img = bar();
    const cv::Point2d from = cv::Point2d(330, 240) - direction * (kLength / 2.0);
    const cv::Point2d to = from + direction * kLength;
    const auto width = static_cast<double>(state.range(0));
    std::size_t found = 0;
    bench::steady(state, [&] { found = orx::getContrastEdges(img, from, to, width).size(); });
    state.counters["edges"] = static_cast<double>(found);
}

cv::Mat derivativeOfGaussian() {
    const double sigma = 1.0 / kSpacing;
    cv::Mat kernel(1, 2 * kLead + 1, CV_32F);
    for (int k = -kLead; k <= kLead; ++k) {
        kernel.at<float>(k + kLead) = static_cast<float>(k * std::exp(-k * k / (2 * sigma * sigma)) /
                                                         (std::sqrt(2 * CV_PI) * sigma * sigma * sigma));
    }
    return kernel;
}

// One profile a row. The places of slopes above what an edge of 10 levels has, in samples.
std::vector<double> edgesOfRows(const cv::Mat& profiles, const cv::Mat& kernel) {
    cv::Mat slopes;
    cv::filter2D(profiles, slopes, CV_32F, kernel);
    std::vector<double> places;
    for (int y = 0; y < slopes.rows; ++y) {
        const float* slope = slopes.ptr<float>(y);
        for (int i = kLead; i < slopes.cols - kLead; ++i) {
            const double height = std::abs(slope[i]);
            const double before = std::abs(slope[i - 1]);
            const double behind = std::abs(slope[i + 1]);
            if (height < 1 || height <= before || height < behind) continue;
            places.push_back(i - kLead + (before - behind) / (2 * (before - 2 * height + behind)));
        }
    }
    return places;
}

void opencvBox(benchmark::State& state, cv::Point2d direction) {
    const cv::Mat img = bar();
    const int width = static_cast<int>(state.range(0));
    const cv::Size size(static_cast<int>(kLength / kSpacing) + 1 + 2 * kLead, width);
    const cv::Mat kernel = derivativeOfGaussian();
    std::size_t found = 0;
    bench::steady(state, [&] {
        const cv::Point2d across(-direction.y, direction.x);
        const cv::Point2d corner = cv::Point2d(330, 240) - direction * (kLength / 2.0 + kLead * kSpacing) -
                                   across * ((width - 1) / 2.0);
        const cv::Matx23d turn(direction.x * kSpacing, across.x, corner.x, direction.y * kSpacing, across.y,
                               corner.y);
        cv::Mat patch;
        cv::Mat profile;
        cv::warpAffine(img, patch, turn, size, cv::INTER_LINEAR | cv::WARP_INVERSE_MAP);
        cv::reduce(patch, profile, 0, cv::REDUCE_AVG, CV_32F);
        found = edgesOfRows(profile, kernel).size();
    });
    state.counters["edges"] = static_cast<double>(found);
}

#define ORX_WIDTHS Arg(1)->Arg(8)->Arg(64)->Unit(benchmark::kMicrosecond)
BENCHMARK_CAPTURE(box, along_rows, cv::Point2d(1, 0))->Name("caliper/along_rows")->ORX_WIDTHS;
BENCHMARK_CAPTURE(box, slanted, cv::Point2d(0.8, 0.6))->Name("caliper/slanted")->ORX_WIDTHS;
BENCHMARK_CAPTURE(opencvBox, along_rows, cv::Point2d(1, 0))->Name("opencv_caliper/along_rows")->ORX_WIDTHS;
BENCHMARK_CAPTURE(opencvBox, slanted, cv::Point2d(0.8, 0.6))->Name("opencv_caliper/slanted")->ORX_WIDTHS;

// The argument is the number of calipers, each 20 pixels long and 5 wide.
void circle(benchmark::State& state) {
    const cv::Mat img = disk();
    orx::TCircleCaliperOptions options;
    options.count = static_cast<int>(state.range(0));
    std::size_t found = 0;
    bench::steady(state, [&] { found = orx::getCircleEdges(img, {321, 239}, 100, options).size(); });
    state.counters["edges"] = static_cast<double>(found);
}

void opencvCircle(benchmark::State& state) {
    const cv::Mat img = disk();
    const int count = static_cast<int>(state.range(0));
    constexpr int kWidth = 5;
    const int samples = static_cast<int>(20 / kSpacing) + 1 + 2 * kLead;
    const cv::Mat kernel = derivativeOfGaussian();
    std::size_t found = 0;
    bench::steady(state, [&] {
        cv::Mat xs(count * kWidth, samples, CV_32F);
        cv::Mat ys(xs.size(), CV_32F);
        for (int y = 0; y < xs.rows; ++y) {
            const double angle = 2 * CV_PI * (y / kWidth) / count + (y % kWidth - 2) / 100.0;
            const double dx = std::cos(angle);
            const double dy = std::sin(angle);
            for (int i = 0; i < samples; ++i) {
                const double radius = 100 - 10 + (i - kLead) * kSpacing;
                xs.at<float>(y, i) = static_cast<float>(321 + dx * radius);
                ys.at<float>(y, i) = static_cast<float>(239 + dy * radius);
            }
        }
        cv::Mat rays;
        cv::remap(img, rays, xs, ys, cv::INTER_LINEAR, cv::BORDER_REPLICATE);
        // The mean of each caliper's rays.
        cv::Mat profiles(count, samples, CV_32F);
        for (int i = 0; i < count; ++i) {
            cv::reduce(rays.rowRange(i * kWidth, (i + 1) * kWidth), profiles.row(i), 0, cv::REDUCE_AVG,
                       CV_32F);
        }
        found = edgesOfRows(profiles, kernel).size();
    });
    state.counters["edges"] = static_cast<double>(found);
}
BENCHMARK(circle)->Name("circle_calipers")->Arg(36)->Arg(360)->Unit(benchmark::kMicrosecond);
BENCHMARK(opencvCircle)->Name("opencv_circle_calipers")->Arg(36)->Arg(360)->Unit(benchmark::kMicrosecond);

}  // namespace
