#include "support/part_surroundings_internal.h"

#include <opencv2/imgproc.hpp>

#include "support/angles.h"

namespace scenes {
namespace {

double areaUnits(cv::Size size) { return static_cast<double>(size.area()) / (640.0 * 480.0); }

Loop jaggedPolygon(cv::Point2d center, double radius, RandomSource& random) {
    const int corners = wholeNumber(3, 7, random);
    const double turn = random.uniform(0, 2 * kPi);
    Loop loop;
    for (int i = 0; i < corners; ++i)
        loop.push_back(center + unit(turn + 2 * kPi * (i + random.uniform(-0.3, 0.3)) / corners) *
                                    (radius * random.uniform(0.4, 1)));
    return loop;
}

Loop diskPolygon(cv::Point2d center, double radius) {
    Loop loop;
    for (int i = 0; i < 180; ++i) loop.push_back(center + unit(2 * kPi * i / 180) * radius);
    return loop;
}

Loop barPolygon(cv::Point2d center, RandomSource& random) {
    const cv::Point2d along = unit(random.uniform(0, kPi)) * (0.5 * random.uniform(40, 200));
    const cv::Point2d across = cv::Point2d(-along.y, along.x) * (random.uniform(1, 10) / cv::norm(along));
    return {center - along - across, center + along - across, center + along + across,
            center - along + across};
}

Loop anyClutter(cv::Size size, RandomSource& random) {
    const cv::Point2d center(random.uniform(0, size.width), random.uniform(0, size.height));
    const int kind = wholeNumber(0, 3, random);
    if (kind == 0) return diskPolygon(center, random.uniform(5, 50));
    if (kind == 1) return barPolygon(center, random);
    return jaggedPolygon(center, random.uniform(10, 70), random);
}

// Parts may lie on clutter with a tenth of their outline.
class ClutterLimits {
  public:
    explicit ClutterLimits(const std::vector<Loop>& parts) : parts_(parts), taken_(parts.size(), 0.0) {}

    bool admits(const Loop& clutter) {
        std::vector<double> shares;
        for (std::size_t i = 0; i < parts_.size(); ++i) {
            const Loop& points = parts_[i];
            const auto inside = std::count_if(points.begin(), points.end(),
                                              [&](cv::Point2d p) { return contains(clutter, p); });
            shares.push_back(taken_[i] + static_cast<double>(inside) / static_cast<double>(points.size()));
            if (shares.back() > 0.1) return false;
        }
        taken_ = shares;
        return true;
    }

  private:
    const std::vector<Loop>& parts_;
    std::vector<double> taken_;
};

// A curve that bends slowly and at random, as a narrow polygon.
Loop threadPolygon(cv::Size size, RandomSource& random) {
    const double half = 0.5 * random.uniform(1, 2.2);
    const int steps = wholeNumber(15, 60, random);
    cv::Point2d at(random.uniform(0, size.width), random.uniform(0, size.height));
    double angle = random.uniform(0, 2 * kPi);
    double bend = 0;
    Loop left;
    Loop right;
    for (int i = 0; i < steps; ++i) {
        const cv::Point2d across = unit(angle + kPi / 2) * half;
        left.push_back(at + across);
        right.push_back(at - across);
        at += unit(angle) * 6;
        bend = std::clamp(bend + random.uniform(-0.06, 0.06), -0.15, 0.15);
        angle += bend;
    }
    left.insert(left.end(), right.rbegin(), right.rend());
    return left;
}

}  // namespace

void roughen(cv::Mat& image, double deviation, int fineness, RandomSource& random) {
    cv::Mat grains(image.size() / fineness, CV_32F);
    for (int row = 0; row < grains.rows; ++row) {
        auto* pixels = grains.ptr<float>(row);
        for (int column = 0; column < grains.cols; ++column)
            pixels[column] = static_cast<float>(random.uniform(-1, 1));
    }
    cv::GaussianBlur(grains, grains, cv::Size(), 2, 2, cv::BORDER_REFLECT);
    cv::Scalar mean;
    cv::Scalar spread;
    cv::meanStdDev(grains, mean, spread);
    cv::Mat fine;
    cv::resize(grains, fine, image.size(), 0, 0, cv::INTER_LINEAR);
    cv::scaleAdd(fine, deviation / spread[0], image, image);
}

void paintClutter(cv::Mat& image, double number, const std::vector<Loop>& parts, int fineness,
                  RandomSource& random) {
    const cv::Size size = image.size() / fineness;
    ClutterLimits limits(parts);
    const int wanted = static_cast<int>(std::lround(number * areaUnits(size)));
    for (int i = 0; i < wanted; ++i) {
        const double level = oneIn(2, random) ? random.uniform(15, 60) : random.uniform(110, 240);
        for (int attempt = 0; attempt < 20; ++attempt) {
            const Loop loop = anyClutter(size, random);
            if (!limits.admits(loop)) continue;
            paint(image, {loop}, level, fineness);
            break;
        }
    }
}

void paintThreads(cv::Mat& image, double number, int fineness, RandomSource& random) {
    const cv::Size size = image.size() / fineness;
    const int wanted = static_cast<int>(std::lround(number * areaUnits(size)));
    for (int i = 0; i < wanted; ++i) {
        const double level = oneIn(2, random) ? random.uniform(10, 60) : random.uniform(190, 245);
        paint(image, {threadPolygon(size, random)}, level, fineness);
    }
}

}  // namespace scenes
