#include "support/synthetic_scene.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "support/random_source_internal.h"

namespace scenes {
namespace {

constexpr double kTray = 52.0;

template <typename Shape>
void paintInside(cv::Mat& image, const Shape& shape, double reach, double level) {
    const int left = std::max(0, static_cast<int>(std::floor(shape.center.x - reach - 1.0)));
    const int right = std::min(image.cols - 1, static_cast<int>(std::ceil(shape.center.x + reach + 1.0)));
    const int top = std::max(0, static_cast<int>(std::floor(shape.center.y - reach - 1.0)));
    const int bottom = std::min(image.rows - 1, static_cast<int>(std::ceil(shape.center.y + reach + 1.0)));
    for (int row = top; row <= bottom; ++row) {
        auto* pixels = image.ptr<float>(row);
        for (int column = left; column <= right; ++column) {
            const double covered = pixelCoverage(shape, column, row);
            const double before = static_cast<double>(pixels[column]);
            pixels[column] = static_cast<float>(before + covered * (level - before));
        }
    }
}

// The light at a pixel: falls off smoothly from the top left to the bottom right.
double lightAt(cv::Point pixel, cv::Size size, double fall) {
    const double across = size.width > 1 ? static_cast<double>(pixel.x) / (size.width - 1) : 0.0;
    const double down = size.height > 1 ? static_cast<double>(pixel.y) / (size.height - 1) : 0.0;
    const double way = 0.5 * (across + down);
    return 1.0 - fall * way * way * (3.0 - 2.0 * way);
}

// A coin: rim, sunken field, and a relief of a smaller disk with rays. All of it ends 15 % inside the
// outline.
void paintCoin(cv::Mat& image, const Disk& disk, double metal, RandomSource& random) {
    paint(image, disk, metal);
    paint(image, Disk{disk.center, disk.radius * 0.85}, metal - 34.0);
    paint(image, Disk{disk.center, disk.radius * 0.81}, metal - 18.0);
    const int rays = 3 + static_cast<int>(random.uniform(0.0, 4.0));
    const double turn = random.uniform(0.0, 180.0);
    for (int i = 0; i < rays; ++i) {
        const double angle = std::fmod(turn + 180.0 * i / rays, 180.0);
        paint(image, Bar{disk.center, angle, disk.radius * 1.2, disk.radius * 0.09}, metal + 4.0);
    }
    paint(image, Disk{disk.center, disk.radius * 0.36}, metal - 34.0);
    paint(image, Disk{disk.center, disk.radius * 0.31}, metal + 16.0);
}

// A turned steel bar: a bright reflex along its axis, three quarters of its length.
void paintSteelBar(cv::Mat& image, const Bar& bar, double metal) {
    paint(image, bar, metal);
    paint(image, Bar{bar.center, bar.angle, bar.length - bar.width, bar.width * 0.2}, metal + 34.0);
}

// One cell of the grid on which parts lie.
struct Cell {
    cv::Point2d center;
    double half = 0.0;  // half of the side that a part may take
};

std::vector<Cell> gridCells(cv::Size size) {
    const int columns = std::max(2, size.width / 125);
    const int rows = std::max(2, size.height / 125);
    const double width = static_cast<double>(size.width) / columns;
    const double height = static_cast<double>(size.height) / rows;
    std::vector<Cell> cells;
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
            cells.push_back(
                {{(column + 0.5) * width - 0.5, (row + 0.5) * height - 0.5}, 0.5 * std::min(width, height)});
    return cells;
}

Disk placeDisk(const Cell& cell, RandomSource& random) {
    const double radius = cell.half * random.uniform(0.45, 0.78);
    const double play = cell.half * 0.92 - radius;
    return {cell.center + cv::Point2d(random.uniform(-play, play), random.uniform(-play, play)), radius};
}

Bar placeBar(const Cell& cell, RandomSource& random) {
    const double length = cell.half * random.uniform(1.35, 1.62);
    const double width = cell.half * random.uniform(0.20, 0.34);
    const double play = cell.half * 0.92 - 0.5 * std::hypot(length, width);
    return {cell.center + cv::Point2d(random.uniform(-play, play), random.uniform(-play, play)),
            random.uniform(0.0, 180.0), length, width};
}

}  // namespace

void paint(cv::Mat& image, const Disk& disk, double level) { paintInside(image, disk, disk.radius, level); }

void paint(cv::Mat& image, const Bar& bar, double level) {
    paintInside(image, bar, 0.5 * std::hypot(bar.length, bar.width), level);
}

cv::Mat expose(const cv::Mat& ideal, const Exposure& exposure) {
    cv::Mat lit = ideal.clone();
    if (exposure.blurSigma > 0.0)
        cv::GaussianBlur(lit, lit, cv::Size(), exposure.blurSigma, exposure.blurSigma, cv::BORDER_REPLICATE);
    RandomSource random(exposure.seed);
    for (int row = 0; row < lit.rows; ++row) {
        auto* pixels = lit.ptr<float>(row);
        for (int column = 0; column < lit.cols; ++column) {
            const double light = lightAt({column, row}, lit.size(), exposure.lightFall);
            const double noise = exposure.noiseSigma > 0.0 ? exposure.noiseSigma * random.normal() : 0.0;
            pixels[column] = static_cast<float>(static_cast<double>(pixels[column]) * light + noise);
        }
    }
    cv::Mat picture;
    lit.convertTo(picture, CV_8U);
    return picture;
}

Scene renderScene(const SceneSettings& settings) {
    const cv::Size size(std::max(240, settings.size.width), std::max(200, settings.size.height));
    RandomSource random(settings.seed);
    Scene scene;
    cv::Mat ideal(size, CV_32F, cv::Scalar(kTray));
    for (const Cell& cell : gridCells(size)) {
        const double metal = random.uniform(165.0, 205.0);
        // The first two cells hold one of each kind, so that no scene lacks either.
        const bool needsBar = scene.bars.empty() && !scene.disks.empty();
        const bool needsDisk = scene.disks.empty() && !scene.bars.empty();
        const bool drawsBar = random.uniform(0.0, 1.0) < 0.3;
        if (needsBar || (drawsBar && !needsDisk)) {
            scene.bars.push_back(placeBar(cell, random));
            paintSteelBar(ideal, scene.bars.back(), metal);
        } else {
            scene.disks.push_back(placeDisk(cell, random));
            paintCoin(ideal, scene.disks.back(), metal, random);
        }
    }
    // The noise has its own stream: parts do not move when the exposure changes.
    scene.image =
        expose(ideal, {settings.lightFall, settings.blurSigma, settings.noiseSigma, ~settings.seed});
    return scene;
}

}  // namespace scenes
