// A picture of the kind that inspection programs see: many parts of different brightness on an uneven ground,
// slightly blurred and noisy. About one pixel in twenty is an edge. The same size gives the same picture.
#ifndef BENCH_EDGE_MOSAIC_H
#define BENCH_EDGE_MOSAIC_H

#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace edge_mosaic {

inline cv::Mat make(cv::Size size) {
    cv::RNG random(20240229);
    cv::Mat image(size, CV_8U);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            image.at<std::uint8_t>(y, x) =
                cv::saturate_cast<std::uint8_t>(90 + 20.0 * x / size.width - 15.0 * y / size.height);
        }
    }
    const int parts = size.area() / 2600;
    for (int i = 0; i < parts; ++i) {
        const cv::Point centre(random.uniform(0, size.width), random.uniform(0, size.height));
        const int level = random.uniform(10, 245);
        const cv::Size half(random.uniform(3, 28), random.uniform(3, 28));
        switch (i % 3) {
            case 0:
                cv::ellipse(image, centre, half, random.uniform(0, 180), 0, 360, level, cv::FILLED,
                            cv::LINE_AA);
                break;
            case 1:
                cv::rectangle(image, cv::Rect(centre, half), level, cv::FILLED, cv::LINE_AA);
                break;
            default:
                cv::line(image, centre, centre + cv::Point(random.uniform(-60, 60), random.uniform(-60, 60)),
                         level, random.uniform(1, 5), cv::LINE_AA);
        }
    }
    cv::GaussianBlur(image, image, cv::Size(), 0.7);
    cv::Mat noise(size, CV_16S);
    random.fill(noise, cv::RNG::NORMAL, 0, 3);
    cv::add(image, noise, image, cv::noArray(), CV_8U);
    return image;
}

}  // namespace edge_mosaic

#endif
