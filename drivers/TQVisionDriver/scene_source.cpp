#include "drivers/TQVisionDriver/scene_source.h"

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace vision {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kNoiseMargin = 64;
constexpr int kSmallestRegion = 16;
constexpr long kLongestExposure = 1000000;
constexpr long kHighestGain = 480;

// The share of the pixel at (x, y) that a disk covers, from the distance of its edge.
double coverage(cv::Point2d center, double radius, int x, int y) {
    return std::clamp(radius + 0.5 - std::hypot(x - center.x, y - center.y), 0.0, 1.0);
}

unsigned char blended(unsigned char below, double level, double share) {
    return cv::saturate_cast<unsigned char>(below + share * (level - below));
}

// Draws the part into a picture that shows `region` of the scene. What lies below it shines through in its
// noise.
void drawPart(cv::Mat& picture, const cv::Rect& region, const ScenePart& part, double partLevel,
              double trayLevel) {
    const int reach = static_cast<int>(std::ceil(part.radius)) + 2;
    const cv::Rect box(static_cast<int>(std::floor(part.center.x)) - reach,
                       static_cast<int>(std::floor(part.center.y)) - reach, 2 * reach + 1, 2 * reach + 1);
    const cv::Rect seen = box & region;
    for (int y = seen.y; y < seen.br().y; ++y) {
        auto* const row = picture.ptr<unsigned char>(y - region.y);
        for (int x = seen.x; x < seen.br().x; ++x) {
            const double share = coverage(part.center, part.radius, x, y);
            if (share <= 0.0) continue;
            const double hole = coverage(part.holeCenter, part.holeRadius, x, y);
            unsigned char& pixel = row[x - region.x];
            const double noise = pixel - trayLevel;
            const double level = partLevel + hole * (trayLevel - partLevel) + noise;
            pixel = blended(pixel, level, share);
        }
    }
}

// Where picture `number` takes its noise from: scattered, and the same on every run.
cv::Point noiseOffset(std::int64_t number) {
    const std::uint64_t mixed = (static_cast<std::uint64_t>(number) * 0x9E3779B97F4A7C15ULL) >> 40U;
    return {static_cast<int>(mixed % kNoiseMargin), static_cast<int>((mixed / kNoiseMargin) % kNoiseMargin)};
}

}  // namespace

ScenePart scenePart(int width, int height, std::int64_t number) {
    const double side = std::min(width, height);
    const double t = 2.0 * kPi * static_cast<double>(number % 240) / 240.0;
    ScenePart part;
    part.radius = 0.18 * side;
    part.holeRadius = 0.15 * part.radius;
    const double rim = part.radius + 0.05 * side;
    part.center.x = (width - 1) / 2.0 + 0.5 * (width / 2.0 - rim) * std::cos(t);
    part.center.y = (height - 1) / 2.0 + 0.5 * (height / 2.0 - rim) * std::sin(t);
    part.holeCenter.x = part.center.x + 0.55 * part.radius * std::cos(-2.0 * t);
    part.holeCenter.y = part.center.y + 0.55 * part.radius * std::sin(-2.0 * t);
    return part;
}

SceneMaker::SceneMaker(const SceneSettings& settings)
    : settings_(settings), region_(0, 0, settings.width, settings.height), channels_(settings.channels) {}

bool SceneMaker::prepare(PictureFormat& format) {
    if (noise_.empty()) {
        noise_.create(settings_.height + kNoiseMargin, settings_.width + kNoiseMargin, CV_8UC1);
        cv::RNG generator(static_cast<std::uint64_t>(settings_.seed));
        generator.fill(noise_, cv::RNG::NORMAL, 128.0, settings_.noise);
    }
    const zul::LockGuard lock(mutex_);
    format = {region_.width, region_.height, channels_};
    return true;
}

Made SceneMaker::make(std::int64_t number, cv::Mat& picture) {
    cv::Rect region;
    int channels = 1;
    double light = 1.0;
    {
        const zul::LockGuard lock(mutex_);
        region = region_;
        channels = channels_;
        light = static_cast<double>(exposure_) / 10000.0 * std::pow(10.0, static_cast<double>(gain_) / 200.0);
    }
    const double tray = std::min(255.0, light * kTrayLevel);
    const double part = std::min(255.0, light * kPartLevel);
    cv::Mat grey;
    cv::add(noise_(region + noiseOffset(number)), cv::Scalar(tray - 128.0), channels == 1 ? picture : grey);
    cv::Mat& drawn = channels == 1 ? picture : grey;
    drawPart(drawn, region, scenePart(settings_.width, settings_.height, number), part, tray);
    if (channels == 3) cv::cvtColor(grey, picture, cv::COLOR_GRAY2BGR);
    return Made::kPicture;
}

bool SceneMaker::setRegion(int id, long value) {
    if (value < 0 || value > std::max(settings_.width, settings_.height)) return false;
    const int given = static_cast<int>(value);
    const zul::LockGuard lock(mutex_);
    cv::Rect wanted = region_;
    switch (id) {
        case VD_PARAM_WIDTH:
            wanted.width = given;
            break;
        case VD_PARAM_HEIGHT:
            wanted.height = given;
            break;
        case VD_PARAM_OFFSET_X:
            wanted.x = given;
            break;
        default:
            wanted.y = given;
            break;
    }
    if (wanted.width < kSmallestRegion || wanted.height < kSmallestRegion ||
        wanted.br().x > settings_.width || wanted.br().y > settings_.height) {
        return false;
    }
    region_ = wanted;
    return true;
}

bool SceneMaker::setParameter(int id, long value, bool running) {
    switch (id) {
        case VD_PARAM_EXPOSURE: {
            if (value < 1 || value > kLongestExposure) return false;
            const zul::LockGuard lock(mutex_);
            exposure_ = value;
            return true;
        }
        case VD_PARAM_GAIN: {
            if (value < 0 || value > kHighestGain) return false;
            const zul::LockGuard lock(mutex_);
            gain_ = value;
            return true;
        }
        case VD_PARAM_WIDTH:
        case VD_PARAM_HEIGHT:
        case VD_PARAM_OFFSET_X:
        case VD_PARAM_OFFSET_Y:
            return !running && setRegion(id, value);
        case VD_PARAM_PIXEL_FORMAT: {
            if (running || (value != VD_PIXEL_MONO8 && value != VD_PIXEL_BGR8)) return false;
            const zul::LockGuard lock(mutex_);
            channels_ = value == VD_PIXEL_MONO8 ? 1 : 3;
            return true;
        }
        default:
            return false;
    }
}

float SceneMaker::parameter(int id) {
    const zul::LockGuard lock(mutex_);
    switch (id) {
        case VD_PARAM_EXPOSURE:
            return static_cast<float>(exposure_);
        case VD_PARAM_GAIN:
            return static_cast<float>(gain_);
        case VD_PARAM_WIDTH:
            return static_cast<float>(region_.width);
        case VD_PARAM_HEIGHT:
            return static_cast<float>(region_.height);
        case VD_PARAM_OFFSET_X:
            return static_cast<float>(region_.x);
        case VD_PARAM_OFFSET_Y:
            return static_cast<float>(region_.y);
        case VD_PARAM_PIXEL_FORMAT:
            return static_cast<float>(channels_ == 1 ? VD_PIXEL_MONO8 : VD_PIXEL_BGR8);
        default:
            return kNoValue;
    }
}

}  // namespace vision
