// Searches stated by rand(): their numbers are those of the runtime, whoever draws from it meanwhile.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "orxFunctions/platform/runtime_random_internal.h"
#include "tests/support/fit_scenes.h"

namespace {

using orx::platform::RuntimeRandom;

constexpr unsigned kSeeds[] = {0, 1, 2, 7, 99, 1000, 65535, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

TEST(RuntimeRandom, GivesTheNumbersOfRandAfterSrand) {
    RuntimeRandom random;
    for (const unsigned seed : kSeeds) {
        std::srand(seed);
        random.seed(seed);
        for (int i = 0; i < 3000; ++i) ASSERT_EQ(random.draw(), std::rand()) << seed << ", draw " << i;
    }
    RuntimeRandom fresh;
    std::srand(1);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(fresh.draw(), std::rand());
}

TEST(RuntimeRandom, LeavesTheRuntimeWhereItIsItself) {
    RuntimeRandom random;
    std::srand(5);
    const int untouched = std::rand();
    std::srand(5);
    random.draw();
    random.leaveToRuntime();
    EXPECT_EQ(std::rand(), untouched) << "never seeded";
    for (const int draws : {0, 1, 30, 500}) {
        random.seed(42);
        for (int i = 0; i < draws; ++i) random.draw();
        random.leaveToRuntime();
        for (int i = 0; i < 40; ++i) EXPECT_EQ(std::rand(), random.draw()) << draws;
    }
}

std::vector<cv::Point> circleScene() {
    fit_scenes::Random random(4);
    return fit_scenes::circlePoints({200, 150, 80}, 120, {1.0, 0.5, {640, 480}}, random);
}

std::vector<cv::Point> lineScene() {
    fit_scenes::Random random(5);
    return fit_scenes::linePoints(0.4, 30, 120, {1.0, 0.5, {640, 480}}, random);
}

std::vector<cv::Point2f> ellipseScene() {
    std::vector<cv::Point2f> points;
    for (const cv::Point p : circleScene()) points.emplace_back(static_cast<float>(p.x) * 1.5F, float(p.y));
    return points;
}

// The results of every search with a seed, one after another.
std::vector<double> searchedValues(unsigned seed) {
    std::vector<double> values;
    std::vector<int> indices;
    orx::TRansacCircle circle(circleScene(), 60, 60, 2);
    circle.setSeed(seed);
    const orx::TCircle c = circle.doRansac();
    circle.getCircleIdxList(indices);
    values.insert(values.end(), {c.x, c.y, c.r});
    values.insert(values.end(), indices.begin(), indices.end());
    orx::TRansacLine line(lineScene(), 60, 60, 2);
    line.setSeed(seed);
    line.doRansac();
    line.getIdxList(indices);
    values.insert(values.end(), indices.begin(), indices.end());
    values.push_back(orx::getSrandNum(0, 30000, static_cast<int>(seed)));

    const int trials = 20 + static_cast<int>(seed);
    TCircleFit_Ransac circleFit;
    circleFit.setPoints(circleScene());
    circleFit.setParams({200, 10, 2, double(trials), 1000});
    const orx::TCircle fitted = circleFit.fit();
    values.insert(values.end(), {fitted.x, fitted.y, fitted.r, fitted.meanResidual});
    TLineFit_Ransac lineFit;
    lineFit.setPoints(lineScene());
    lineFit.setParams({22, 2, 2, 40});
    lineFit.setSearchLimits(trials, 1000);
    const orx::TLine l = lineFit.fit();
    values.insert(values.end(), {l.k, l.b});
    const orx::TEllipse e = orxFit::fitEllipseRansac(ellipseScene(), 3, trials, 0.1, 20, 400, 20, 600);
    values.insert(values.end(), {double(e.x), double(e.y), double(e.width), double(e.meanError)});
    return values;
}

class ThreadsOfSearches : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Threads, ThreadsOfSearches, testing::Values(1, 2, 4));

TEST_P(ThreadsOfSearches, GiveEqualResultsForEqualSeedsWhileOthersDraw) {
    constexpr unsigned kRuns = 20;
    std::vector<std::vector<double>> expected;
    // From 1: glibc takes 0 for 1.
    for (unsigned seed = 1; seed <= kRuns; ++seed) expected.push_back(searchedValues(seed));
    std::atomic<bool> stop{false};
    std::thread other([&stop] {
        while (!stop) std::srand(static_cast<unsigned>(std::rand()));
    });
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < GetParam(); ++i) {
        threads.emplace_back([&] {
            for (unsigned seed = 1; seed <= kRuns; ++seed)
                if (searchedValues(seed) != expected[seed - 1]) ++wrong;
        });
    }
    for (std::thread& thread : threads) thread.join();
    stop = true;
    other.join();
    EXPECT_EQ(wrong, 0);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(std::unique(expected.begin(), expected.end()), expected.end()) << "seeds that change nothing";
}

// What a host finds that seeds the runtime itself.
TEST(SeededRansac, IsTheSearchAfterSrandAndLeavesTheRuntimeAlone) {
    for (const unsigned seed : kSeeds) {
        orx::TRansacCircle circle(circleScene(), 100, 100, 2);
        orx::TRansacLine line(lineScene(), 100, 100, 2);
        std::vector<int> expected;
        std::vector<int> indices;
        std::srand(seed);
        const orx::TCircle byHost = circle.doRansac();
        std::srand(seed);
        ASSERT_TRUE(line.doRansac());
        line.getIdxList(expected);

        circle.setSeed(seed);
        line.setSeed(seed);
        std::srand(17);
        const int next = std::rand();
        std::srand(17);
        for (int again = 0; again < 2; ++again) {
            const orx::TCircle found = circle.doRansac();
            EXPECT_EQ(cv::Point3d(found.x, found.y, found.r), cv::Point3d(byHost.x, byHost.y, byHost.r));
            ASSERT_TRUE(line.doRansac());
            line.getIdxList(indices);
            EXPECT_EQ(indices, expected);
        }
        EXPECT_EQ(std::rand(), next);
    }
}

// srand(seed of the last trial) and as many draws as that trial took.
TEST(SeededTrials, LeaveTheRuntimeAsTheLastTrialWould) {
    const auto after = [](unsigned seed, int draws) {
        std::srand(seed);
        for (int i = 0; i < draws; ++i) std::rand();
        return std::rand();
    };
    const int asOne = after(3, 1);
    orx::getSrandNum(0, 5, 3);
    EXPECT_EQ(std::rand(), asOne);

    // Five trials, the last of which has the seed 0; every sample of these is taken at once or never.
    const int lastOne = after(0, 1);
    orxFit::fitEllipseRansac(ellipseScene(), 3, 5, 0.99, 20, 400, 20, 600);
    EXPECT_EQ(std::rand(), lastOne);

    std::vector<cv::Point> onALine;
    for (int i = 0; i < 40; ++i) onALine.emplace_back(3 * i, 7 - 2 * i);
    const int tenSamples = after(0, 30);
    TCircleFit_Ransac circle;
    circle.setPoints(onALine);
    circle.setParams({200, 10, 2, 5, 1000});
    EXPECT_FALSE(circle.fit().valid);
    EXPECT_EQ(std::rand(), tenSamples);

    // Points of which no three lie on one line: ten samples of three, too.
    std::vector<cv::Point> onAParabola;
    for (int i = 0; i < 40; ++i) onAParabola.emplace_back(i, i * i);
    TLineFit_Ransac line;
    line.setPoints(onAParabola);
    line.setParams({22, 2, 3, 40});
    line.setSearchLimits(5, 1000);
    EXPECT_FALSE(line.fit().valid);
    EXPECT_EQ(std::rand(), tenSamples);
}

TEST(SeededTrials, LeaveTheRuntimeAloneWhenNoneIsMade) {
    std::srand(23);
    const int next = std::rand();
    std::srand(23);
    TCircleFit_Ransac circle;
    circle.setPoints({{1, 2}, {3, 4}});
    circle.setParams({200, 10, 2, 5, 1000});
    circle.fit();
    circle.setPoints(circleScene());
    circle.setParams({200, 10, 2, 0, 1000});
    circle.fit();
    TLineFit_Ransac line;
    line.setPoints({{1, 2}, {3, 4}, {5, 6}});
    line.setParams({22, 2, 2, 40});
    line.setSearchLimits(5, 1000);
    line.fit();
    line.setPoints(lineScene());
    line.setParams({22, 2, 4, 40});
    line.fit();
    orxFit::fitEllipseRansac(ellipseScene(), 3, 0, 0.1, 20, 400, 20, 600);
    orxFit::fitEllipseRansac({{1, 2}, {3, 4}}, 3, 5, 0.1, 20, 400, 20, 600);
    EXPECT_EQ(std::rand(), next);
}

}  // namespace
