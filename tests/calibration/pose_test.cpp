#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <limits>

#include "orxFunctions/orxfunctions.h"

namespace {

// Explicit instantiation may name private members: the one way to their contract from outside.
using EulerOperation = cv::Mat (orx::TPoint6DToMatrix::*)(const cv::Mat&, const std::string&);
EulerOperation eulerOperation();
template <EulerOperation operation>
struct Reveal {
    friend EulerOperation eulerOperation() { return operation; }
};
template struct Reveal<&orx::TPoint6DToMatrix::eulerAngleToRotateMatrix>;

cv::Mat eulerMatrix(const cv::Mat& angles, const std::string& sequence) {
    orx::TPoint6DToMatrix converter;
    return (converter.*eulerOperation())(angles, sequence);
}

cv::Mat matrixOf(double x, double y, double z, double rx, double ry, double rz) {
    return orx::TPoint6DToMatrix().Point6D2Matrix44({x, y, z, rx, ry, rz});
}

void expectMatrix(const cv::Mat& actual, const cv::Mat& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    ASSERT_EQ(actual.type(), CV_64FC1);
    EXPECT_LT(cv::norm(actual, expected, cv::NORM_INF), 1e-12) << actual << " instead of " << expected;
}

TEST(TPoint6DToMatrix, KnownPoses) {
    expectMatrix(matrixOf(0, 0, 0, 0, 0, 0), cv::Mat::eye(4, 4, CV_64F));
    expectMatrix(matrixOf(10, 20, 30, 0, 0, 90),
                 (cv::Mat_<double>(4, 4) << 0, -1, 0, 10, 1, 0, 0, 20, 0, 0, 1, 30, 0, 0, 0, 1));
    // Rx(90) * Rz(90); in the other order the first row would be (0, 0, 1).
    expectMatrix(matrixOf(0, 0, 0, 90, 0, 90),
                 (cv::Mat_<double>(4, 4) << 0, -1, 0, 0, 0, 0, -1, 0, 1, 0, 0, 0, 0, 0, 0, 1));
    const double c = std::sqrt(3.0) / 2;
    expectMatrix(matrixOf(0, 0, 0, 0, 30, 0),
                 (cv::Mat_<double>(4, 4) << c, 0, 0.5, 0, 0, 1, 0, 0, -0.5, 0, c, 0, 0, 0, 0, 1));
}

TEST(TPoint6DToMatrix, SequenceIsReadFromItsEnd) {
    // Quarter turns about two axes permute the axes: the order of each pair of letters shows.
    const cv::Matx33d xThenY(0, 0, 1, 1, 0, 0, 0, 1, 0), yThenX(0, 1, 0, 0, 0, -1, -1, 0, 0);
    const cv::Matx33d xThenZ(0, -1, 0, 0, 0, -1, 1, 0, 0), zThenX(0, 0, 1, 1, 0, 0, 0, 1, 0);
    const cv::Matx33d yThenZ(0, 0, 1, 1, 0, 0, 0, 1, 0), zThenY(0, -1, 0, 0, 0, 1, -1, 0, 0);
    const struct {
        const char* sequence;
        cv::Matx33d xy, xz, yz;
    } cases[] = {{"zyx", xThenY, xThenZ, yThenZ}, {"yzx", xThenY, xThenZ, zThenY},
                 {"zxy", yThenX, xThenZ, yThenZ}, {"yxz", xThenY, zThenX, zThenY},
                 {"xyz", yThenX, zThenX, zThenY}, {"xzy", yThenX, zThenX, yThenZ}};
    for (const auto& c : cases) {
        expectMatrix(eulerMatrix((cv::Mat_<double>(1, 3) << 90, 90, 0), c.sequence), cv::Mat(c.xy));
        expectMatrix(eulerMatrix((cv::Mat_<double>(1, 3) << 90, 0, 90), c.sequence), cv::Mat(c.xz));
        expectMatrix(eulerMatrix((cv::Mat_<double>(1, 3) << 0, 90, 90), c.sequence), cv::Mat(c.yz));
    }
}

TEST(TPoint6DToMatrix, AngleRowOfAnotherShapeRaisesTheAssertion) {
    try {
        eulerMatrix(cv::Mat::zeros(3, 1, CV_64F), "zyx");
        FAIL() << "no exception";
    } catch (const cv::Exception& error) {
        EXPECT_EQ(error.code, -215);
        EXPECT_EQ(error.err, "eulerAngle.rows == 1 && eulerAngle.cols == 3");
        EXPECT_EQ(error.func, "orx::TPoint6DToMatrix::eulerAngleToRotateMatrix");
    }
}

// Death tests watch standard error: send what goes to standard output there.
void convertLoudly(zul::TPoint6D pose) {
    std::cout.rdbuf(std::cerr.rdbuf());
    orx::TPoint6DToMatrix().Point6D2Matrix44(pose);
}

// An exit code of -1, of which POSIX keeps the lowest eight bits.
bool endedWithMinusOne(int status) { return status == -1 || testing::ExitedWithCode(255)(status); }

TEST(TPoint6DToMatrixDeathTest, BrokenRotationEndsTheProcess) {
    const double nan = std::nan("");
    const double inf = std::numeric_limits<double>::infinity();
    constexpr const char* kMessage = "^Euler Angle convert to RotatedMatrix failed\\.\\.\\.\n";
    EXPECT_EXIT(convertLoudly({0, 0, 0, nan, 0, 0}), endedWithMinusOne, kMessage);
    EXPECT_EXIT(convertLoudly({0, 0, 0, 0, 0, inf}), endedWithMinusOne, kMessage);
    const auto wrongSequence = [] {
        std::cout.rdbuf(std::cerr.rdbuf());
        eulerMatrix(cv::Mat::zeros(1, 3, CV_64F), "zyz");
    };
    EXPECT_EXIT(wrongSequence(), endedWithMinusOne, "Euler Angle Sequence string is wrong\\.\\.\\.");
}

TEST(TPoint6DToMatrix, TranslationIsNotChecked) {
    EXPECT_TRUE(std::isnan(matrixOf(std::nan(""), 0, 0, 0, 0, 0).at<double>(0, 3)));
}

}  // namespace
