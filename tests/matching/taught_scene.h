// Pictures of outlines that a test makes up, to teach parts from.
#ifndef TESTS_MATCHING_TAUGHT_SCENE_H
#define TESTS_MATCHING_TAUGHT_SCENE_H

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/matching/part_pose.h"
#include "support/polygon_coverage.h"

namespace taught_scene {

using scenes::Loop;
using Loops = std::vector<Loop>;  // the outline, then its holes, which run the other way round

struct Look {
    double ground = 60;
    double contrast = 100;
    double blur = 0.8;
    double noise = 0;
};

inline cv::Mat blurredAndNoisy(const cv::Mat& ideal, const Look& look) {
    cv::Mat brightness;
    cv::GaussianBlur(ideal, brightness, cv::Size(), look.blur);
    if (look.noise > 0) {
        cv::RNG random(4711);
        cv::Mat noise(ideal.size(), CV_32F);
        random.fill(noise, cv::RNG::NORMAL, 0.0, look.noise);
        brightness += noise;
    }
    cv::Mat picture;
    brightness.convertTo(picture, CV_8U);
    return picture;
}

inline Loops placed(const Loops& loops, const orx::TPartPose& pose) {
    Loops placed;
    for (const Loop& loop : loops) placed.push_back(orx::applyPoseToPoints(pose, loop));
    return placed;
}

// The part at a pose, of exact area before the blur.
inline cv::Mat picture(const Loops& loops, const orx::TPartPose& pose, const Look& look = {},
                       cv::Size size = {200, 180}) {
    cv::Mat ideal(size, CV_32F, cv::Scalar(look.ground));
    scenes::paint(ideal, placed(loops, pose), look.ground + look.contrast);
    return blurredAndNoisy(ideal, look);
}

inline Loop arc(cv::Point2d centre, double radius, double from, double to) {
    Loop loop;
    const int steps = std::max(1, static_cast<int>(std::abs(to - from)));
    for (int i = 0; i <= steps; ++i) {
        const double angle = (from + (to - from) * i / steps) * CV_PI / 180;
        loop.push_back(centre + radius * cv::Point2d(std::cos(angle), std::sin(angle)));
    }
    return loop;
}

inline Loop circle(cv::Point2d centre, double radius) {
    Loop loop = arc(centre, radius, 0, 360);
    loop.pop_back();
    return loop;
}

inline Loop hole(cv::Point2d centre, double radius) {
    Loop loop = circle(centre, radius);
    std::reverse(loop.begin(), loop.end());
    return loop;
}

inline Loop rectangle(double width, double height) {
    return {{-width / 2, -height / 2},
            {width / 2, -height / 2},
            {width / 2, height / 2},
            {-width / 2, height / 2}};
}

inline Loop polygon(int corners, double radius) {
    Loop loop;
    for (int i = 0; i < corners; ++i) {
        const double angle = 2 * CV_PI * i / corners;
        loop.emplace_back(radius * std::cos(angle), radius * std::sin(angle));
    }
    return loop;
}

// The first `missing` teeth are left out.
inline Loop gear(int teeth, double tip, double root, int missing = 0) {
    Loop loop;
    const double pitch = 360.0 / teeth;
    for (int i = 0; i < teeth; ++i) {
        const Loop top = arc({}, i < missing ? root : tip, i * pitch, (i + 0.45) * pitch);
        const Loop gap = arc({}, root, (i + 0.55) * pitch, (i + 0.9) * pitch);
        loop.insert(loop.end(), top.begin(), top.end());
        loop.insert(loop.end(), gap.begin(), gap.end());
    }
    return loop;
}

inline Loop bracket() { return {{-42, -42}, {-14, -42}, {-14, 14}, {42, 14}, {42, 42}, {-42, 42}}; }

inline double distanceTo(const Loops& loops, cv::Point2d p) {
    double nearest = 1e9;
    for (const Loop& loop : loops) {
        for (std::size_t i = 0; i < loop.size(); ++i) {
            const cv::Point2d a = loop[i];
            const cv::Point2d way = loop[(i + 1) % loop.size()] - a;
            const double t = std::clamp((p - a).dot(way) / way.dot(way), 0.0, 1.0);
            nearest = std::min(nearest, cv::norm(p - a - t * way));
        }
    }
    return nearest;
}

inline double distanceToCorners(const Loops& loops, cv::Point2d p) {
    double nearest = 1e9;
    for (const Loop& loop : loops) {
        for (const cv::Point2d& corner : loop) nearest = std::min(nearest, cv::norm(p - corner));
    }
    return nearest;
}

inline double lengthOf(const Loops& loops) {
    double length = 0;
    for (const Loop& loop : loops) {
        for (std::size_t i = 0; i < loop.size(); ++i)
            length += cv::norm(loop[(i + 1) % loop.size()] - loop[i]);
    }
    return length;
}

}  // namespace taught_scene

#endif
