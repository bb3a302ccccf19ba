#include "support/plane_scene.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "support/angles.h"
#include "support/random_source_internal.h"

namespace scenes {
namespace {

constexpr int kFine = 4;  // samples a pixel's side

double radialPart(const PlaneCamera& camera, double square) {
    return 1 + square * (camera.k1 + square * (camera.k2 + square * camera.k3));
}

cv::Point2d bent(const PlaneCamera& camera, cv::Point2d ray) {
    const double square = ray.dot(ray);
    const double radial = radialPart(camera, square);
    return {ray.x * radial + 2 * camera.p1 * ray.x * ray.y + camera.p2 * (square + 2 * ray.x * ray.x),
            ray.y * radial + camera.p1 * (square + 2 * ray.y * ray.y) + 2 * camera.p2 * ray.x * ray.y};
}

// Newton's steps towards the radius whose ring is drawn at the radius `seen`.
double nearerRadius(const PlaneCamera& camera, double seen, double radius, int steps) {
    for (int i = 0; i < steps; ++i) {
        const double square = radius * radius;
        const double slope = 1 + square * (3 * camera.k1 + square * (5 * camera.k2 + square * 7 * camera.k3));
        radius -= (radius * radialPart(camera, square) - seen) / slope;
    }
    return radius;
}

// That radius: halved until it is near.
double straightRadius(const PlaneCamera& camera, double seen) {
    double low = 0;
    double high = 2 * seen;
    for (int i = 0; i < 6; ++i) {
        const double middle = (low + high) / 2;
        (middle * radialPart(camera, middle * middle) < seen ? low : high) = middle;
    }
    return nearerRadius(camera, seen, (low + high) / 2, 5);
}

// The tangential part, which is small, is taken off again and again.
cv::Point2d straightened(const PlaneCamera& camera, cv::Point2d seen) {
    const double first = std::sqrt(seen.dot(seen));
    double radius = straightRadius(camera, first);
    cv::Point2d ray = first > 0 ? seen * (radius / first) : seen;
    if (camera.p1 == 0 && camera.p2 == 0) return ray;
    for (int i = 0; i < 40; ++i) {
        const double square = ray.dot(ray);
        const cv::Point2d ring = seen - (bent(camera, ray) - ray * radialPart(camera, square));
        const double length = std::sqrt(ring.dot(ring));
        radius = nearerRadius(camera, length, radius, 2);
        const cv::Point2d next = length > 0 ? ring * (radius / length) : ring;
        const cv::Point2d step = next - ray;
        ray = next;
        if (step.dot(step) < 1e-28) break;
    }
    return ray;
}

// From (x / z, y / z) of the camera to the plane.
cv::Matx33d toPlane(const PlaneCamera& camera) {
    const cv::Matx33d& r = camera.rotation;
    const cv::Vec3d& t = camera.translation;
    return cv::Matx33d(r(0, 0), r(0, 1), t[0], r(1, 0), r(1, 1), t[1], r(2, 0), r(2, 1), t[2]).inv();
}

cv::Point2d through(const cv::Matx33d& map, cv::Point2d p) {
    const cv::Vec3d q = map * cv::Vec3d(p.x, p.y, 1);
    return {q[0] / q[2], q[1] / q[2]};
}

// The places of the fine samples. The way back through the lens is smooth: it is taken at each pixel's
// corners and filled in between, to within a ten thousandth of a pixel.
cv::Mat samplePlaces(const PlaneCamera& camera) {
    const cv::Matx33d map = toPlane(camera);
    cv::Mat corners(camera.size.height + 1, camera.size.width + 1, CV_64FC2);
    for (int y = 0; y < corners.rows; ++y) {
        for (int x = 0; x < corners.cols; ++x) {
            const cv::Point2d seen((x - 0.5 - camera.cx) / camera.fx, (y - 0.5 - camera.cy) / camera.fy);
            corners.at<cv::Point2d>(y, x) = through(map, straightened(camera, seen));
        }
    }
    return corners;
}

double shade(const PlaneShape& shape, cv::Point2d place, double sampleSize) {
    return std::clamp(0.5 + shape(place) / sampleSize, 0.0, 1.0);
}

// The share of light at each fine sample of a part of the picture.
cv::Mat fineLight(const cv::Mat& corners, const cv::Rect& part, const PlaneShape& shape) {
    cv::Mat light(part.size() * kFine, CV_32F);
    for (int y = 0; y < part.height; ++y) {
        for (int x = 0; x < part.width; ++x) {
            const auto a = corners.at<cv::Point2d>(part.y + y, part.x + x);
            const auto b = corners.at<cv::Point2d>(part.y + y, part.x + x + 1);
            const auto c = corners.at<cv::Point2d>(part.y + y + 1, part.x + x);
            const auto d = corners.at<cv::Point2d>(part.y + y + 1, part.x + x + 1);
            const double pixel = std::sqrt(std::abs((b - a).cross(c - a)));
            const cv::Point2d middle = 0.25 * (a + b + c + d);
            // Far from any edge all samples of a pixel are alike.
            const double distance = shape(middle);
            if (std::abs(distance) > 2 * pixel) {
                const float all = distance > 0 ? 1.0F : 0.0F;
                for (int j = 0; j < kFine; ++j)
                    std::fill_n(light.ptr<float>(y * kFine + j, x * kFine), kFine, all);
                continue;
            }
            for (int j = 0; j < kFine; ++j) {
                const double v = (j + 0.5) / kFine;
                for (int i = 0; i < kFine; ++i) {
                    const double u = (i + 0.5) / kFine;
                    const cv::Point2d place = (1 - v) * ((1 - u) * a + u * b) + v * ((1 - u) * c + u * d);
                    light.at<float>(y * kFine + j, x * kFine + i) =
                        static_cast<float>(shade(shape, place, pixel / kFine));
                }
            }
        }
    }
    return light;
}

// What the pixels of a part of the picture gather.
cv::Mat pixelLight(const cv::Mat& corners, const cv::Rect& part, const PlaneShape& shape, double blurSigma) {
    cv::Mat light = fineLight(corners, part, shape);
    if (blurSigma > 0) {
        const double sigma = blurSigma * kFine;
        cv::GaussianBlur(light, light, cv::Size(), sigma, sigma, cv::BORDER_REPLICATE);
    }
    cv::Mat pixels;
    cv::resize(light, pixels, part.size(), 0, 0, cv::INTER_AREA);
    return pixels;
}

}  // namespace

cv::Point2d PlaneCamera::project(cv::Point2d millimetres) const {
    const cv::Vec3d p = rotation * cv::Vec3d(millimetres.x, millimetres.y, 0) + translation;
    const cv::Point2d seen = bent(*this, {p[0] / p[2], p[1] / p[2]});
    return {cx + fx * seen.x, cy + fy * seen.y};
}

cv::Point2d PlaneCamera::place(cv::Point2d pixel) const {
    return through(toPlane(*this), straightened(*this, {(pixel.x - cx) / fx, (pixel.y - cy) / fy}));
}

PlaneCamera tilted(const PlaneCamera& camera, cv::Point2d middle, double distance, double tilt, double axis,
                   double turn) {
    const auto about = [](const cv::Vec3d& direction, double degrees) {
        const double c = std::cos(degrees * kDegree);
        const double s = std::sin(degrees * kDegree);
        const auto [x, y, z] = direction.val;
        return cv::Matx33d(c + x * x * (1 - c), x * y * (1 - c) - z * s, x * z * (1 - c) + y * s,
                           y * x * (1 - c) + z * s, c + y * y * (1 - c), y * z * (1 - c) - x * s,
                           z * x * (1 - c) - y * s, z * y * (1 - c) + x * s, c + z * z * (1 - c));
    };
    PlaneCamera result = camera;
    result.rotation =
        about({std::cos(axis * kDegree), std::sin(axis * kDegree), 0}, tilt) * about({0, 0, 1}, turn);
    const cv::Vec3d inPicture((camera.size.width / 2.0 - camera.cx) / camera.fx,
                              (camera.size.height / 2.0 - camera.cy) / camera.fy, 1);
    result.translation = distance * inPicture - result.rotation * cv::Vec3d(middle.x, middle.y, 0);
    return result;
}

PlaneShape chessboardShape(int columns, int rows, double pitch) {
    return [=](cv::Point2d p) {
        // Of the square that holds the place and those around it, those that are dark: from the one before
        // the first corner on, every other one.
        const int column = static_cast<int>(std::clamp(std::floor(p.x / pitch), -2.0, columns + 1.0));
        const int row = static_cast<int>(std::clamp(std::floor(p.y / pitch), -2.0, rows + 1.0));
        double nearest = 4 * pitch;
        for (int j = std::max(-1, row - 1); j <= std::min(rows - 1, row + 1); ++j) {
            for (int i = std::max(-1, column - 1); i <= std::min(columns - 1, column + 1); ++i) {
                if ((i + j) % 2 != 0) continue;
                const double x = std::abs(p.x - (i + 0.5) * pitch) - pitch / 2;
                const double y = std::abs(p.y - (j + 0.5) * pitch) - pitch / 2;
                nearest = std::min(nearest, std::max(x, y));
            }
        }
        return nearest;
    };
}

PlaneShape dotGridShape(int columns, int rows, double pitch, double diameter) {
    return [=](cv::Point2d p) {
        const double column = std::clamp(std::round(p.x / pitch), 0.0, columns - 1.0);
        const double row = std::clamp(std::round(p.y / pitch), 0.0, rows - 1.0);
        return std::hypot(p.x - column * pitch, p.y - row * pitch) - diameter / 2;
    };
}

PlaneRenderer::PlaneRenderer(const PlaneCamera& camera) : corners_(samplePlaces(camera)) {}

cv::Mat PlaneRenderer::levels(const PlaneShape& shape, const PlaneExposure& exposure) const {
    const cv::Rect picture(0, 0, corners_.cols - 1, corners_.rows - 1);
    cv::Mat levels = pixelLight(corners_, picture, shape, exposure.blurSigma);
    levels.convertTo(levels, CV_32F, exposure.bright - exposure.dark, exposure.dark);
    return levels;
}

cv::Mat renderPlaneLevels(const PlaneCamera& camera, const PlaneShape& shape, const PlaneExposure& exposure) {
    return PlaneRenderer(camera).levels(shape, exposure);
}

cv::Mat PlaneRenderer::levelsOfFewEdges(const PlaneShape& shape, const PlaneExposure& exposure) const {
    const cv::Rect picture(0, 0, corners_.cols - 1, corners_.rows - 1);
    constexpr int kTile = 16;  // pixels
    // As far as the blur reaches, and a pixel.
    const int margin = static_cast<int>(std::ceil(4 * exposure.blurSigma)) + 1;
    cv::Mat light(picture.size(), CV_32F);
    for (int y = 0; y < picture.height; y += kTile) {
        for (int x = 0; x < picture.width; x += kTile) {
            const cv::Rect tile = cv::Rect(x, y, kTile, kTile) & picture;
            const cv::Rect around =
                cv::Rect(x - margin, y - margin, kTile + 2 * margin, kTile + 2 * margin) & picture;
            const auto first = corners_.at<cv::Point2d>(around.tl());
            const auto last = corners_.at<cv::Point2d>(around.br());
            const auto right = corners_.at<cv::Point2d>(around.y, around.br().x);
            const auto left = corners_.at<cv::Point2d>(around.br().y, around.x);
            const double distance = shape(0.25 * (first + last + right + left));
            // With room for tiles that the camera sees askew.
            if (std::abs(distance) > 0.75 * std::max(cv::norm(last - first), cv::norm(right - left))) {
                light(tile).setTo(distance > 0 ? 1.0 : 0.0);
                continue;
            }
            pixelLight(corners_, around, shape, exposure.blurSigma)(tile - around.tl()).copyTo(light(tile));
        }
    }
    light.convertTo(light, CV_32F, exposure.bright - exposure.dark, exposure.dark);
    return light;
}

cv::Mat withNoise(const cv::Mat& levels, double noiseSigma, std::uint64_t seed) {
    RandomSource random(seed);
    cv::Mat picture(levels.size(), CV_8U);
    for (int y = 0; y < picture.rows; ++y) {
        for (int x = 0; x < picture.cols; ++x) {
            const double noise = noiseSigma > 0 ? noiseSigma * random.normal() : 0;
            picture.at<uchar>(y, x) = cv::saturate_cast<uchar>(levels.at<float>(y, x) + noise);
        }
    }
    return picture;
}

cv::Mat renderPlane(const PlaneCamera& camera, const PlaneShape& shape, const PlaneExposure& exposure) {
    return withNoise(renderPlaneLevels(camera, shape, exposure), exposure.noiseSigma, exposure.seed);
}

}  // namespace scenes
