// Points before and after a known rigid motion, with noise.
#ifndef BENCH_POINT_PAIRS_H
#define BENCH_POINT_PAIRS_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <random>
#include <vector>

namespace bench {

struct PointPairs {
    explicit PointPairs(std::int64_t count) {
        std::mt19937 generator(1);
        std::uniform_real_distribution<double> coordinate(-500, 500);
        std::normal_distribution<double> noise(0, 0.1);
        for (std::int64_t i = 0; i < count; ++i) {
            const cv::Point3d p(coordinate(generator), coordinate(generator), coordinate(generator));
            a.push_back(p);
            b.emplace_back(-p.y + 10 + noise(generator), p.x - 20 + noise(generator),
                           p.z + 30 + noise(generator));
            floatA.emplace_back(p);
            floatB.emplace_back(b.back());
        }
    }

    std::vector<cv::Point3d> a;
    std::vector<cv::Point3d> b;
    std::vector<cv::Point3f> floatA;
    std::vector<cv::Point3f> floatB;
};

}  // namespace bench

#endif
