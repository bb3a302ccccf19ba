#include "orxFunctions/files/augmentation_variants_internal.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

constexpr int kMostVariants = 1000;

double limited(double amount, double low, double high) {
    return std::isnan(amount) ? std::clamp(0.0, low, high) : std::clamp(amount, low, high);
}

double fullRange(int depth) {
    switch (depth) {
        case CV_8U:
            return 255;
        case CV_8S:
            return 127;
        case CV_16U:
            return 65535;
        case CV_16S:
            return 32767;
        case CV_32S:
            return std::numeric_limits<int>::max();
        default:
            return 1;
    }
}

// FNV-1a: the same on every platform, unlike std::hash.
std::uint64_t hashOf(const std::string& text) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    return hash;
}

// The same motion for pixel centres, which is what OpenCV counts from.
cv::Matx23d forPixelCentres(const cv::Matx23d& motion) {
    cv::Matx23d m = motion;
    m(0, 2) += (m(0, 0) + m(0, 1) - 1) / 2;
    m(1, 2) += (m(1, 0) + m(1, 1) - 1) / 2;
    return m;
}

AugmentedImage flipped(const cv::Mat& image, bool horizontal) {
    AugmentedImage result;
    result.motion =
        horizontal ? cv::Matx23d(-1, 0, image.cols, 0, 1, 0) : cv::Matx23d(1, 0, 0, 0, -1, image.rows);
    cv::flip(image, result.image, horizontal ? 1 : 0);
    return result;
}

AugmentedImage rotated(const cv::Mat& image, const TAugmentationConfig& config, cv::RNG& random) {
    const double most = limited(config.maxAngle, 0, 180);
    const double angle = random.uniform(-most, most) * kRadiansPerDegree;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double x = image.cols / 2.0;
    const double y = image.rows / 2.0;
    AugmentedImage result;
    result.motion = cv::Matx23d(c, -s, x - c * x + s * y, s, c, y - s * x - c * y);
    cv::warpAffine(image, result.image, forPixelCentres(result.motion), image.size(), cv::INTER_LINEAR,
                   cv::BORDER_CONSTANT);
    return result;
}

AugmentedImage scaled(const cv::Mat& image, const TAugmentationConfig& config, cv::RNG& random) {
    const double low = limited(config.minScale, 0.01, 100);
    const double scale = random.uniform(low, std::max(low, limited(config.maxScale, 0.01, 100)));
    const cv::Size size(std::max(1, cvRound(image.cols * scale)), std::max(1, cvRound(image.rows * scale)));
    AugmentedImage result;
    result.motion = cv::Matx23d(static_cast<double>(size.width) / image.cols, 0, 0, 0,
                                static_cast<double>(size.height) / image.rows, 0);
    cv::resize(image, result.image, size, 0, 0, scale < 1 ? cv::INTER_AREA : cv::INTER_LINEAR);
    return result;
}

AugmentedImage shifted(const cv::Mat& image, const TAugmentationConfig& config, cv::RNG& random) {
    const double most = limited(config.maxShift, 0, 1);
    const cv::Point by(cvRound(random.uniform(-most, most) * image.cols),
                       cvRound(random.uniform(-most, most) * image.rows));
    AugmentedImage result;
    result.motion = cv::Matx23d(1, 0, by.x, 0, 1, by.y);
    result.image = cv::Mat::zeros(image.size(), image.type());
    const cv::Rect all({}, image.size());
    const cv::Rect kept = all & (all - by);
    if (!kept.empty()) image(kept).copyTo(result.image(kept + by));
    return result;
}

// Grey values that change in place. An alpha channel is no grey value and stays as it is.
template <typename Operation>
AugmentedImage revalued(const cv::Mat& image, Operation operation) {
    AugmentedImage result;
    result.motion = cv::Matx23d(1, 0, 0, 0, 1, 0);
    operation(result.image);
    if (image.channels() == 4) {
        const int alphaToAlpha[] = {3, 3};
        cv::mixChannels(&image, 1, &result.image, 1, alphaToAlpha, 1);
    }
    return result;
}

AugmentedImage brightened(const cv::Mat& image, const TAugmentationConfig& config, cv::RNG& random) {
    const double most = limited(config.maxBrightness, 0, 1) * fullRange(image.depth());
    const double by = random.uniform(-most, most);
    return revalued(image, [&](cv::Mat& out) { image.convertTo(out, -1, 1, by); });
}

AugmentedImage contrasted(const cv::Mat& image, const TAugmentationConfig& config, cv::RNG& random) {
    const double most = std::log(1 + limited(config.maxContrast, 0, 100));
    const double factor = std::exp(random.uniform(-most, most));
    const double middle = fullRange(image.depth()) / 2;
    return revalued(image, [&](cv::Mat& out) { image.convertTo(out, -1, factor, middle * (1 - factor)); });
}

AugmentedImage blurred(const cv::Mat& image, const TAugmentationConfig& config, cv::RNG& random) {
    const double sigma = random.uniform(0.0, limited(config.maxBlur, 0, 100));
    return revalued(image, [&](cv::Mat& out) {
        if (sigma > 0) {
            cv::GaussianBlur(image, out, cv::Size(), sigma);
        } else {
            out = image.clone();
        }
    });
}

AugmentedImage noisy(const cv::Mat& image, const TAugmentationConfig& config, cv::RNG& random) {
    const double sigma = random.uniform(0.0, limited(config.maxNoise, 0, 1)) * fullRange(image.depth());
    return revalued(image, [&](cv::Mat& out) {
        cv::Mat noise(image.size(), CV_MAKETYPE(CV_32F, image.channels()));
        random.fill(noise, cv::RNG::NORMAL, 0, sigma);
        cv::add(image, noise, out, cv::noArray(), image.depth());
    });
}

struct Kind {
    const char* name;
    int TAugmentationConfig::*count;
    AugmentedImage (*make)(const cv::Mat&, const TAugmentationConfig&, cv::RNG&);
};

constexpr Kind kKinds[] = {
    {"rotate", &TAugmentationConfig::rotations, rotated},
    {"scale", &TAugmentationConfig::scalings, scaled},
    {"shift", &TAugmentationConfig::shifts, shifted},
    {"bright", &TAugmentationConfig::brightnessChanges, brightened},
    {"contrast", &TAugmentationConfig::contrastChanges, contrasted},
    {"blur", &TAugmentationConfig::blurs, blurred},
    {"noise", &TAugmentationConfig::noises, noisy},
};

}  // namespace

void forEachVariant(const cv::Mat& image, const std::string& imageName, const TAugmentationConfig& config,
                    const std::function<void(const AugmentedImage&)>& receive) {
    const auto handOver = [&](AugmentedImage variant, const std::string& name) {
        variant.name = name;
        receive(variant);
    };
    if (config.flipHorizontal) handOver(flipped(image, true), "flipH");
    if (config.flipVertical) handOver(flipped(image, false), "flipV");
    const std::string prefix = std::to_string(config.seed) + '/' + imageName + '/';
    for (const Kind& kind : kKinds) {
        const int count = std::clamp(config.*kind.count, 0, kMostVariants);
        for (int i = 0; i < count; ++i) {
            const std::string name = kind.name + std::to_string(i);
            // A generator for each variant: no variant depends on which others are made.
            cv::RNG random(hashOf(prefix + name));
            handOver(kind.make(image, config, random), name);
        }
    }
}

}  // namespace orx
