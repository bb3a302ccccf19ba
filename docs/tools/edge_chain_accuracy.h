// Errors of circles and lines fitted to edges that were found in rendered pictures, beside what the fits
// state.
#ifndef DOCS_TOOLS_EDGE_CHAIN_ACCURACY_H
#define DOCS_TOOLS_EDGE_CHAIN_ACCURACY_H

#include "docs/tools/measuring_accuracy.h"
#include "tests/support/edge_scene.h"

namespace measuring_accuracy {

inline const cv::Size kPicture(64, 64);
inline const cv::Point2d kMiddle(31.5, 31.5);

// Pictures of a blurred disk at any place. As edge_scene::disk, from a table of its radial profile in steps
// of 1/256 pixel: the integral behind it takes too long for thousands of pictures.
class DiskPictures {
  public:
    static constexpr double kRadius = 20;

    explicit DiskPictures(double blur) : reach_(7 * std::sqrt(blur * blur + 1.0 / 12)) {
        for (double d = kRadius - reach_; d < kRadius + reach_ + 2 * kStep; d += kStep) {
            profile_.push_back(edge_scene::blurredDisk(d, kRadius, reach_ / 7));
        }
    }

    cv::Mat draw(cv::Point2d center, const edge_scene::Look& look) const {
        cv::Mat brightness(kPicture, CV_64F);
        for (int y = 0; y < kPicture.height; ++y) {
            for (int x = 0; x < kPicture.width; ++x) {
                const double inside = at(std::hypot(x - center.x, y - center.y));
                brightness.at<double>(y, x) = look.dark + (look.bright - look.dark) * inside;
            }
        }
        return edge_scene::quantised(brightness, look);
    }

  private:
    static constexpr double kStep = 1.0 / 256;
    double reach_;
    std::vector<double> profile_;

    double at(double distance) const {
        if (distance <= kRadius - reach_) return 1;
        if (distance >= kRadius + reach_) return 0;
        const double place = (distance - kRadius + reach_) / kStep;
        const auto i = static_cast<std::size_t>(place);
        const double part = place - static_cast<double>(i);
        return profile_[i] * (1 - part) + profile_[i + 1] * part;
    }
};

inline ORXEdge::TMetricContour longestEdge(const cv::Mat& picture) {
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(picture, edges);
    const auto shorter = [](const auto& a, const auto& b) { return a.points.size() < b.points.size(); };
    return edges.empty() ? ORXEdge::TMetricContour() : *std::max_element(edges.begin(), edges.end(), shorter);
}

// What lies within `reach` of the middle: at the border the picture goes on otherwise than the edge.
inline ORXEdge::TMetricContour middlePart(const ORXEdge::TMetricContour& edge, double reach) {
    ORXEdge::TMetricContour part;
    for (std::size_t i = 0; i < edge.points.size(); ++i) {
        if (cv::norm(cv::Point2d(edge.points[i]) - kMiddle) > reach) continue;
        part.points.push_back(edge.points[i]);
        part.deviation.push_back(edge.deviation[i]);
    }
    return part;
}

inline cv::Point2d nearMiddle(Random& random) {
    return kMiddle + cv::Point2d(random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5));
}

// There is no efficient estimate to compare with: errors are told as they are (spread is of no use).
inline Result measureDisks(double blur, double noise, int scenes, int threads) {
    const DiskPictures pictures(blur);
    const auto trials = tool_support::inParallel(scenes, threads, [&](int scene) {
        Random random(seedOf(1, scene));
        const CircleTask kind{{nearMiddle(random), DiskPictures::kRadius, 0}, {360, 0, 0}};
        const edge_scene::Look look{40, 200, blur, noise, scene + 1};
        const auto edge = longestEdge(pictures.draw(kind.truth.center, look));
        return Trial{kind.judge(orx::fitCircleGeometric(edge, 1.0)), {}};
    });
    return resultOf(trials, Values::all(0.1), CircleTask::parameters());
}

inline Result measureHalfPlanes(double blur, double noise, int scenes, int threads) {
    const auto trials = tool_support::inParallel(scenes, threads, [&](int scene) {
        Random random(seedOf(2, scene));
        const double normal = random.uniform(0, 360);
        const LineTask kind{{nearMiddle(random), normal - 90}, {}};
        const edge_scene::Look look{40, 200, blur, noise, scene + 1};
        const cv::Mat picture =
            edge_scene::halfPlane(kPicture, kind.truth.middle, normal * geometric_scenes::kPi / 180, look);
        return Trial{kind.judge(orx::fitLineGeometric(middlePart(longestEdge(picture), 25), 1.0)), {}};
    });
    return resultOf(trials, Values::all(0.1), LineTask::parameters());
}

}  // namespace measuring_accuracy

#endif
