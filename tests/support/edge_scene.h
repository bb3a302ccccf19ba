// Pictures of edges whose true place is known. Edges are error functions: a sharp shape seen through an
// optics that blurs with a Gaussian and integrated over each pixel (the pixel's box adds its variance, 1/12).
#ifndef TESTS_SUPPORT_EDGE_SCENE_H
#define TESTS_SUPPORT_EDGE_SCENE_H

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>

namespace edge_scene {

// What an edge scene is made of: grey levels on both sides, blur of the optics, noise of the sensor.
struct Look {
    double dark = 40;
    double bright = 200;
    double blur = 0.7;
    double noise = 0;
    int seed = 1;
    int depth = CV_8U;  // or CV_16U, with levels 257 times as high: hardly any rounding
};

// The brightness at a signed distance from the edge, positive inside the bright shape.
inline double profile(const Look& look, double distance) {
    const double sigma = std::sqrt(look.blur * look.blur + 1.0 / 12);
    return look.dark + (look.bright - look.dark) * 0.5 * std::erfc(-distance / (sigma * std::sqrt(2.0)));
}

inline cv::Mat quantised(const cv::Mat& brightness, const Look& look) {
    cv::Mat noisy = brightness.clone();
    if (look.noise > 0) {
        cv::RNG random(static_cast<std::uint64_t>(look.seed) * 2654435761U + 1);
        cv::Mat noise(brightness.size(), CV_64F);
        random.fill(noise, cv::RNG::NORMAL, 0.0, look.noise);
        noisy += noise;
    }
    cv::Mat image;
    noisy.convertTo(image, look.depth, look.depth == CV_16U ? 257 : 1);
    return image;
}

// A picture from a function of the signed distance at each pixel centre.
template <typename SignedDistance>
cv::Mat draw(cv::Size size, const Look& look, const SignedDistance& distance) {
    cv::Mat brightness(size, CV_64F);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) brightness.at<double>(y, x) = profile(look, distance(x, y));
    }
    return quantised(brightness, look);
}

// A disk whose edge has the profile of a straight one: its contour is the circle, whatever the blur.
inline cv::Mat sharpDisk(cv::Size size, cv::Point2d centre, double radius, const Look& look) {
    return draw(size, look,
                [=](double x, double y) { return radius - std::hypot(x - centre.x, y - centre.y); });
}

// Bright where (p - through) . (cos, sin) of the angle (radians) is positive.
inline cv::Mat halfPlane(cv::Size size, cv::Point2d through, double angle, const Look& look) {
    return draw(size, look, [=](double x, double y) {
        return (x - through.x) * std::cos(angle) + (y - through.y) * std::sin(angle);
    });
}

// The exact convolution of a disk with a Gaussian, by an integral over the disk's chords: across each chord
// the integral is a difference of error functions, along the other axis a midpoint sum.
inline double blurredDisk(double distance, double radius, double sigma) {
    constexpr int kSteps = 400;
    const double reach = 7 * sigma;
    const double low = std::max(-radius, -reach);
    const double high = std::min(radius, reach);
    const double step = (high - low) / kSteps;
    double sum = 0;
    for (int i = 0; i < kSteps; ++i) {
        const double u = low + (i + 0.5) * step;  // along the edge
        const double half = std::sqrt(radius * radius - u * u);
        const double across = 0.5 * (std::erf((distance + half) / (sigma * std::sqrt(2.0))) -
                                     std::erf((distance - half) / (sigma * std::sqrt(2.0))));
        sum += across * std::exp(-0.5 * u * u / (sigma * sigma));
    }
    return sum * step / (sigma * std::sqrt(2 * CV_PI));
}

// A bright disk (dark where `look` has it so).
inline cv::Mat disk(cv::Size size, cv::Point2d centre, double radius, const Look& look) {
    const double sigma = std::sqrt(look.blur * look.blur + 1.0 / 12);
    cv::Mat brightness(size, CV_64F);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double distance = std::hypot(x - centre.x, y - centre.y);
            double inside = distance < radius ? 1 : 0;
            if (std::abs(distance - radius) < 7 * sigma) inside = blurredDisk(distance, radius, sigma);
            brightness.at<double>(y, x) = look.dark + (look.bright - look.dark) * inside;
        }
    }
    return quantised(brightness, look);
}

// A bright rectangle, sides parallel to the axes: a product of error functions.
inline cv::Mat rectangle(cv::Size size, cv::Rect2d area, const Look& look) {
    const double sigma = std::sqrt(look.blur * look.blur + 1.0 / 12) * std::sqrt(2.0);
    const auto inside = [sigma](double p, double from, double to) {
        return 0.5 * (std::erf((p - from) / sigma) - std::erf((p - to) / sigma));
    };
    cv::Mat brightness(size, CV_64F);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            brightness.at<double>(y, x) = look.dark + (look.bright - look.dark) *
                                                          inside(x, area.x, area.x + area.width) *
                                                          inside(y, area.y, area.y + area.height);
        }
    }
    return quantised(brightness, look);
}

}  // namespace edge_scene

#endif
