#include "viewer/belt.h"

#include <opencv2/imgproc.hpp>

#include "support/synthetic_scene.h"

namespace viewer {
namespace {

const cv::Size kPictureSize(800, 600);
constexpr int kStep = 3;  // pixels from picture to picture

// The scene without its uneven light, which would show where the belt's ends meet, and without noise.
cv::Mat renderBelt(std::uint64_t seed) {
    scenes::SceneSettings settings;
    settings.size = {2 * kPictureSize.width, kPictureSize.height};
    settings.seed = seed;
    settings.lightFall = 0.0;
    settings.noiseSigma = 0.0;
    cv::Mat colour;
    cv::applyColorMap(scenes::renderScene(settings).image, colour, cv::COLORMAP_BONE);
    cv::Mat twice;
    cv::hconcat(colour, colour, twice);
    return twice;
}

}  // namespace

Belt::Belt(std::uint64_t seed) : start_(std::chrono::steady_clock::now()), belt_(renderBelt(seed)) {}

cv::Mat Belt::picture() {
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start_;
    const auto number = static_cast<std::int64_t>(time.count() * kPicturesPerSecond);
    const std::lock_guard<std::mutex> lock(mutex_);
    if (number != number_) {
        number_ = number;
        const auto x = static_cast<int>(number * kStep % (belt_.cols / 2));
        picture_ = belt_(cv::Rect({x, 0}, kPictureSize)).clone();
    }
    return picture_;
}

}  // namespace viewer
