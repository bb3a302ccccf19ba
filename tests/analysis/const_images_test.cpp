// The classic operators take images that nobody may change, beside those of their stated signatures.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

// Bright parts on a dark ground.
cv::Mat scene() {
    cv::Mat img(40, 60, CV_8UC1, cv::Scalar(30));
    img(cv::Rect(10, 8, 20, 22)).setTo(180);
    img(cv::Rect(40, 20, 9, 12)).setTo(120);
    return img;
}

TEST(ConstImages, HaveTheThresholdsOfOthers) {
    cv::Mat img = scene();
    const cv::Mat before = img.clone();
    const auto stated = static_cast<int (*)(cv::Mat&, orx::TThresholdMethod)>(orx::getThresholdValue);
    const auto constant = static_cast<int (*)(const cv::Mat&, orx::TThresholdMethod)>(orx::getThresholdValue);
    for (int method = orx::tmOtsu; method <= orx::tmShanbhag; ++method) {
        const auto code = static_cast<orx::TThresholdMethod>(method);
        EXPECT_EQ(constant(before, code), stated(img, code)) << method;
        EXPECT_EQ(orx::getThresholdValue(scene(), code), stated(img, code)) << method << ", a temporary one";
    }
    // Ground | both parts scores 1852 * 548 * 138^2, ground and lesser part | greater one 1960 * 440 * 145^2.
    EXPECT_EQ(stated(img, orx::tmOtsu), 30);
    EXPECT_EQ(cv::norm(img, before, cv::NORM_INF), 0.0);
}

TEST(ConstImages, AreBinarisedInFourPartsAsOthers) {
    cv::Mat img = scene();
    const auto stated = static_cast<void (*)(cv::Mat&, cv::Mat&, int, int)>(orx::OTSUfourPartsThreshold);
    const auto constant =
        static_cast<void (*)(const cv::Mat&, cv::Mat&, int, int)>(orx::OTSUfourPartsThreshold);
    cv::Mat expected;
    stated(img, expected, cv::MORPH_OPEN, 3);
    cv::Mat found;
    constant(scene(), found, cv::MORPH_OPEN, 3);
    EXPECT_EQ(cv::norm(found, expected, cv::NORM_INF), 0.0);
    EXPECT_EQ(expected.at<uchar>(15, 20), 255);
    EXPECT_EQ(expected.at<uchar>(2, 2), 0);
}

TEST(ConstImages, HaveTheEdgesOfOthersInEachForm) {
    using Chains = std::vector<ORXEdge::TContour>;
    using Points = std::vector<std::vector<cv::Point2f>>;
    cv::Mat img = scene();
    const cv::Mat same = scene();
    const auto pointsOf = [](const Chains& chains) {
        Points points;
        for (const ORXEdge::TContour& chain : chains) points.push_back(chain.points);
        return points;
    };
    Chains full;
    Chains fullOfConstant;
    EXPECT_TRUE((static_cast<bool (*)(cv::Mat&, Chains&, const cv::_OutputArray&, int, int, int, double)>(
        ORXEdge::EdgesSubPix)(img, full, cv::noArray(), cv::RETR_LIST, 5, 15, 1.0)));
    EXPECT_TRUE(
        (static_cast<bool (*)(const cv::Mat&, Chains&, const cv::_OutputArray&, int, int, int, double)>(
            ORXEdge::EdgesSubPix)(same, fullOfConstant, cv::noArray(), cv::RETR_LIST, 5, 15, 1.0)));
    EXPECT_GE(full.size(), 2U);
    EXPECT_EQ(pointsOf(fullOfConstant), pointsOf(full));

    Chains chains;
    Chains chainsOfConstant;
    EXPECT_TRUE((static_cast<bool (*)(cv::Mat&, Chains&, int, int, double)>(ORXEdge::EdgesSubPix)(
        img, chains, 5, 15, 1.0)));
    EXPECT_TRUE((static_cast<bool (*)(const cv::Mat&, Chains&, int, int, double)>(ORXEdge::EdgesSubPix)(
        same, chainsOfConstant, 5, 15, 1.0)));
    EXPECT_EQ(pointsOf(chains), pointsOf(full));
    EXPECT_EQ(pointsOf(chainsOfConstant), pointsOf(full));

    Points points;
    Points pointsOfConstant;
    EXPECT_TRUE((static_cast<bool (*)(cv::Mat&, Points&, int, int, double)>(ORXEdge::EdgesSubPix)(
        img, points, 5, 15, 1.0)));
    EXPECT_TRUE((static_cast<bool (*)(const cv::Mat&, Points&, int, int, double)>(ORXEdge::EdgesSubPix)(
        same, pointsOfConstant, 5, 15, 1.0)));
    EXPECT_EQ(points, pointsOf(full));
    EXPECT_EQ(pointsOfConstant, pointsOf(full));
}

}  // namespace
