// Pictures of many small parts, binary and as a camera sees them.
#ifndef BENCH_PARTS_PICTURE_H
#define BENCH_PARTS_PICTURE_H

#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace bench {

// Bars, rings and specks, as a binarised picture of parts has them; objects are up to 40 pixels wide.
inline cv::Mat binaryParts(cv::Size size) {
    cv::Mat img = cv::Mat::zeros(size, CV_8UC1);
    cv::RNG random(1);
    const int count = static_cast<int>(img.total() / 4000);
    for (int i = 0; i < count; ++i) {
        const cv::Point a(random.uniform(0, img.cols), random.uniform(0, img.rows));
        const cv::Point b = a + cv::Point(random.uniform(-60, 60), random.uniform(-60, 60));
        if (i % 3 == 0) cv::line(img, a, b, 255, random.uniform(2, 40));
        if (i % 3 == 1) cv::circle(img, a, random.uniform(5, 40), 255, random.uniform(2, 16));
        if (i % 3 == 2) cv::circle(img, a, 2, 255, cv::FILLED);
    }
    return img;
}

// The same under light and noise.
inline cv::Mat greyParts(cv::Size size) {
    cv::Mat img;
    cv::GaussianBlur(binaryParts(size), img, {}, 1.5);
    cv::Mat noise(img.size(), CV_8UC1);
    cv::theRNG().state = 1;
    cv::randn(noise, 20, 5);
    return img / 2 + noise;
}

inline cv::Mat colourParts(cv::Size size) {
    cv::Mat img;
    cv::cvtColor(greyParts(size), img, cv::COLOR_GRAY2BGR);
    // Light that is not white.
    cv::multiply(img, cv::Scalar(0.8, 1.0, 1.1), img);
    return img;
}

// 4 : 3.
inline cv::Size sizeOfHeight(std::int64_t height) {
    const int rows = static_cast<int>(height);
    return {rows * 4 / 3, rows};
}

}  // namespace bench

#endif
