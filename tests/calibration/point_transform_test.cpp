#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "orxFunctions/orxfunctions.h"

namespace {

using Points = std::vector<cv::Point3d>;

Points randomPoints(std::size_t count, double extent, unsigned seed) {
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> coordinate(-extent, extent);
    Points points(count);
    for (cv::Point3d& p : points) p = {coordinate(generator), coordinate(generator), coordinate(generator)};
    return points;
}

// Rz(yaw) * Ry(pitch) * Rx(roll), written out.
cv::Matx33d rotation(double yaw, double pitch, double roll) {
    const double ca = std::cos(yaw), sa = std::sin(yaw), cb = std::cos(pitch), sb = std::sin(pitch);
    const double cc = std::cos(roll), sc = std::sin(roll);
    return {ca * cb,
            ca * sb * sc - sa * cc,
            ca * sb * cc + sa * sc,
            sa * cb,
            sa * sb * sc + ca * cc,
            sa * sb * cc - ca * sc,
            -sb,
            cb * sc,
            cb * cc};
}

Points moved(const Points& points, const cv::Matx33d& r, cv::Point3d t) {
    Points result;
    for (const cv::Point3d& p : points) result.push_back(r * p + t);
    return result;
}

std::vector<cv::Point3f> floats(const Points& points) { return {points.begin(), points.end()}; }

double distance(const cv::Mat& a, const cv::Mat& b) { return cv::norm(a, b, cv::NORM_INF); }

// The method word for word: every pair, then the decomposition.
cv::Mat transformByPairs(const Points& a, const Points& b) {
    cv::Mat dA, dB;
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t j = i + 1; j < a.size(); ++j) {
            dA.push_back(cv::Mat(cv::Matx13d(a[j].x - a[i].x, a[j].y - a[i].y, a[j].z - a[i].z)));
            dB.push_back(cv::Mat(cv::Matx13d(b[j].x - b[i].x, b[j].y - b[i].y, b[j].z - b[i].z)));
        }
    }
    cv::Mat w, u, vt;
    cv::SVDecomp(dA.t() * dB, w, u, vt);
    cv::Mat v = vt.t();
    cv::Mat r = v * u.t();
    if (cv::determinant(r) < 0) {
        v.col(2) *= -1;
        r = v * u.t();
    }
    cv::Mat sum = cv::Mat::zeros(3, 1, CV_64F);
    for (std::size_t i = 0; i < a.size(); ++i) sum += cv::Mat(b[i]) - r * cv::Mat(a[i]);
    cv::Mat result = cv::Mat::eye(4, 4, CV_64F);
    r.copyTo(result(cv::Rect(0, 0, 3, 3)));
    cv::Mat(sum / static_cast<double>(a.size())).copyTo(result(cv::Rect(3, 0, 1, 3)));
    return result;
}

TEST(CalcAXequalsB, PureTranslation) {
    const Points a = {{0, 0, 0}, {10, 0, 0}, {0, 20, 0}, {0, 0, 30}};
    cv::Mat result;
    ASSERT_TRUE(orx::calcAXequalsB(a, moved(a, cv::Matx33d::eye(), {1, -2, 3}), result));
    const cv::Matx44d expected(1, 0, 0, 1, 0, 1, 0, -2, 0, 0, 1, 3, 0, 0, 0, 1);
    ASSERT_EQ(result.type(), CV_64FC1);
    EXPECT_LT(distance(result, cv::Mat(expected)), 1e-12);
}

TEST(CalcAXequalsB, KnownMotionIsFoundAgain) {
    for (unsigned seed = 0; seed < 50; ++seed) {
        const Points a = randomPoints(4 + seed, 500, seed);
        const cv::Matx33d r = rotation(0.13 * seed, 0.7 - 0.05 * seed, 3.0 - 0.2 * seed);
        cv::Mat result;
        ASSERT_TRUE(orx::calcAXequalsB(a, moved(a, r, {1000, -20, 7}), result));
        EXPECT_LT(distance(result(cv::Rect(0, 0, 3, 3)), cv::Mat(r)), 1e-12);
        EXPECT_LT(distance(result.col(3), cv::Mat(cv::Vec4d(1000, -20, 7, 1))), 1e-9);
        EXPECT_EQ(distance(result.row(3), cv::Mat(cv::Matx14d(0, 0, 0, 1))), 0);
    }
}

TEST(CalcAXequalsB, EqualsTheSumOverAllPairs) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        const std::size_t count = 4 + seed * 3;
        const Points a = randomPoints(count, 300, seed);
        Points b = moved(a, rotation(0.3 * seed, 0.2, -0.1 * seed), {5, 6, 7});
        const Points noise = randomPoints(count, 20, seed + 1000);
        for (std::size_t i = 0; i < count; ++i) b[i] += noise[i];
        cv::Mat result;
        ASSERT_TRUE(orx::calcAXequalsB(a, b, result));
        EXPECT_LT(distance(result, transformByPairs(a, b)), 1e-10) << "seed " << seed;
    }
}

TEST(PointTransforms, MirrorImagesGiveAProperRotation) {
    const Points a = randomPoints(12, 10, 7);
    const Points mirrored = moved(a, cv::Matx33d(-1, 0, 0, 0, 1, 0, 0, 0, 1), {});
    cv::Mat result;
    ASSERT_TRUE(orx::calcAXequalsB(a, mirrored, result));
    for (const cv::Mat& r :
         {result(cv::Rect(0, 0, 3, 3)).clone(), orx::cpuTrsfMat(floats(a), floats(mirrored))}) {
        EXPECT_NEAR(cv::determinant(r), 1, 1e-9);
        EXPECT_LT(distance(r.t() * r, cv::Mat::eye(3, 3, CV_64F)), 1e-9);
    }
}

TEST(CalcAXequalsB, RefusesShortAndUnequalListsWithAMessage) {
    std::string text;
    int color = 0;
    while (orx::APPgetMessage(text, color)) continue;
    cv::Mat result = cv::Mat::eye(2, 2, CV_8U);
    const cv::Mat before = result;
    EXPECT_FALSE(orx::calcAXequalsB(Points(3), Points(3), result));
    ASSERT_TRUE(orx::APPgetMessage(text, color));
    EXPECT_EQ(text, "calcAXequalsB aListA.size()<4");
    EXPECT_EQ(color, 1);
    EXPECT_FALSE(orx::calcAXequalsB(Points(3), Points(5), result));
    ASSERT_TRUE(orx::APPgetMessage(text, color));
    EXPECT_EQ(text, "calcAXequalsB aListA.size()!= aListB.size()");
    EXPECT_EQ(color, 1);
    EXPECT_EQ(result.data, before.data);
}

TEST(CpuTrsfMat, FindsTheRotationOfThreePointsAndRefusesFewer) {
    const Points a = {{0, 0, 0}, {100, 0, 0}, {0, 50, 0}};
    const cv::Matx33d r = rotation(0.5, -0.4, 1.2);
    const cv::Mat found = orx::cpuTrsfMat(floats(a), floats(moved(a, r, {10, 20, 30})));
    ASSERT_EQ(found.size(), cv::Size(3, 3));
    ASSERT_EQ(found.type(), CV_64FC1);
    EXPECT_LT(distance(found, cv::Mat(r)), 1e-5);  // the points are floats
    EXPECT_TRUE(orx::cpuTrsfMat({{1, 2, 3}, {4, 5, 6}}, {{1, 2, 3}, {4, 5, 6}}).empty());
    EXPECT_TRUE(orx::cpuTrsfMat(std::vector<cv::Point3f>(4), std::vector<cv::Point3f>(5)).empty());
}

// Float sums would lose the last digits of points far from the origin.
TEST(CpuTrsfMat, SumsInDouble) {
    std::vector<cv::Point3f> a;
    for (const cv::Point3d& p : randomPoints(1000, 1, 3)) {
        a.emplace_back(static_cast<float>(std::round(p.x * 64) + 131072),
                       static_cast<float>(std::round(p.y * 64)), static_cast<float>(std::round(p.z * 64)));
    }
    std::vector<cv::Point3f> b;  // a quarter turn about z, exact in floats
    for (const cv::Point3f& p : a) b.emplace_back(-p.y, p.x, p.z);
    const cv::Matx33d expected(0, -1, 0, 1, 0, 0, 0, 0, 1);
    EXPECT_LT(distance(orx::cpuTrsfMat(a, b), cv::Mat(expected)), 1e-12);
}

TEST(PointTransforms, DegenerateListsGiveAFiniteRotation) {
    Points line;
    for (int i = 0; i < 9; ++i) line.emplace_back(i, 2 * i, -i);
    for (const Points& points : {line, Points(6, cv::Point3d(1, 2, 3))}) {
        cv::Mat result;
        ASSERT_TRUE(orx::calcAXequalsB(points, points, result));
        for (const cv::Mat& r :
             {result(cv::Rect(0, 0, 3, 3)).clone(), orx::cpuTrsfMat(floats(points), floats(points))}) {
            EXPECT_TRUE(cv::checkRange(r));
            EXPECT_NEAR(cv::determinant(r), 1, 1e-9);
        }
    }
}

TEST(PointTransforms, SurviveAnyNumbers) {
    const double values[] = {std::nan(""), std::numeric_limits<double>::infinity(), 1e308, -1e308, 5e-324};
    for (const double value : values) {
        Points broken = randomPoints(5, 1, 1);
        broken[2].y = value;
        cv::Mat result;
        EXPECT_TRUE(orx::calcAXequalsB(broken, randomPoints(5, 1, 2), result));
        EXPECT_EQ(result.size(), cv::Size(4, 4));
        EXPECT_EQ(orx::cpuTrsfMat(floats(broken), floats(broken)).size(), cv::Size(3, 3));
    }
}

}  // namespace
