#include "orxFunctions/matching/refine/window_edges.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orxFunctions/matching/refine/pose_problem.h"
#include "support/part_scene.h"

namespace {

using orx::matching::EdgeWish;
using orx::matching::KnownEdge;
using orx::matching::Match;
using orx::matching::PoseProblem;
using orx::matching::WindowEdges;

cv::Mat clutteredScene() {
    scenes::PartSceneSettings settings;
    settings.size = {200, 180};
    settings.clutter = 60;
    settings.seed = 5;
    return scenes::renderParts(settings).image;
}

TEST(WindowEdges, NearestIsThatOfAllEdgesAndStaysSoWhereverTheLastOneWas) {
    const cv::Mat image = clutteredScene();
    const cv::Rect window(11, 9, 170, 160);
    ORXEdge::TMetricOptions find;
    const WindowEdges edges(image, window, find);
    std::vector<ORXEdge::TMetricContour> chains;
    ORXEdge::edgesSubPixMetric(image(window), chains, find);
    // The distance of the nearest one of the wanted kind, by looking at all of them.
    const auto nearestOfAll = [&](cv::Point2d place, double direction, const EdgeWish& wish) {
        double best = std::numeric_limits<double>::infinity();
        for (const ORXEdge::TMetricContour& chain : chains) {
            for (std::size_t i = 0; i < chain.points.size(); ++i) {
                const double period = wish.eitherSign ? CV_PI : 2 * CV_PI;
                if (std::fabs(std::remainder(chain.direction[i] - direction, period)) > wish.mostTurn)
                    continue;
                best =
                    std::min(best, cv::norm(cv::Point2d(chain.points[i]) + cv::Point2d(window.tl()) - place));
            }
        }
        return best;
    };
    cv::RNG random(3);
    int found = 0;
    for (int walk = 0; walk < 60; ++walk) {
        // Away from a point of an edge.
        const auto& chain =
            chains[static_cast<std::size_t>(random.uniform(0, static_cast<int>(chains.size())))];
        const auto start = static_cast<std::size_t>(random.uniform(0, static_cast<int>(chain.points.size())));
        cv::Point2d place = cv::Point2d(chain.points[start]) + cv::Point2d(window.tl());
        double direction = chain.direction[start];
        const bool eitherSign = walk % 2 == 0;
        KnownEdge known;
        for (int step = 0; step < 24; ++step) {
            const EdgeWish wish{step < 8 ? 4.0 : step < 16 ? 2.0 : 1.5, eitherSign ? 0.9 : 1.8, eitherSign};
            const int nearest = edges.nearest(place, direction, wish);
            EXPECT_EQ(edges.nearest(place, direction, wish, known), nearest);
            const double distance = nearestOfAll(place, direction, wish);
            EXPECT_EQ(nearest >= 0, distance <= wish.reach);
            if (nearest >= 0) {
                EXPECT_NEAR(cv::norm(edges[nearest].position - place), distance, 1e-9);
                ++found;
            }
            const double stride = std::pow(10.0, random.uniform(-4.0, 0.0));
            place += stride * cv::Point2d(random.gaussian(1), random.gaussian(1));
            direction += 0.3 * stride * random.gaussian(1);
        }
    }
    EXPECT_GT(found, 300);
}

TEST(PoseProblem, AllAtOnceAreTheSameAsOneByOne) {
    cv::RNG random(9);
    std::vector<Match> matches(57);
    std::vector<double> weights;
    PoseProblem single(31.5, true, true);
    PoseProblem together = single;
    for (Match& match : matches) {
        const double angle = random.uniform(0.0, 6.0);
        match.normal = {std::cos(angle), std::sin(angle)};
        match.arm = {random.uniform(-40.0, 40.0), random.uniform(-40.0, 40.0)};
        match.distance = random.gaussian(0.3);
        weights.push_back(std::max(0.0, random.uniform(-0.5, 2.0)));
        if (weights.back() > 0) single.add(match, weights.back());
    }
    together.add(matches, weights);
    single.solve(1e-4);
    together.solve(1e-4);
    EXPECT_EQ(together.step(), single.step());
    EXPECT_EQ(together.covariance(), single.covariance());
    EXPECT_GT(cv::norm(single.step()), 0.01);
}

}  // namespace
