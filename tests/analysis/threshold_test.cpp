#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <sstream>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "threshold_reference.h"
#include "threshold_table.h"

namespace {

constexpr int kMethods[] = {0, 1, 2, 3, 4, 5, 7, 8, 9, 10, 11};

int levelOf(cv::Mat img, int method) {
    return orx::getThresholdValue(img, static_cast<orx::TThresholdMethod>(method));
}

// A one-row image with the given number of pixels of each level.
cv::Mat imageOf(const std::map<int, int>& counts) {
    std::vector<uchar> pixels;
    for (const auto& [level, count] : counts)
        pixels.resize(pixels.size() + static_cast<std::size_t>(count), static_cast<uchar>(level));
    return pixels.empty() ? cv::Mat() : cv::Mat(pixels, true).reshape(1, 1);
}

// `rows` times the same row, of which only one is stored: images of any size without their memory.
cv::Mat repeated(const cv::Mat& row, int rows) {
    cv::Mat img(rows, row.cols, row.type(), row.data, row.total() + 1);
    img.step.p[0] = 0;
    return img;
}

void expectReferenceLevels(const cv::Mat& img) {
    const reference::Counts direct = reference::directCounts(img);
    const reference::Counts library = reference::libraryCounts(img);
    for (const int method : kMethods) {
        EXPECT_EQ(levelOf(img, method), reference::level(direct, library, method)) << "method " << method;
    }
    double score = 0;
    double referenceScore = 0;
    EXPECT_EQ(orx::getThresholdValOTSU(img, score), reference::otsu(library, referenceScore));
    EXPECT_EQ(score, referenceScore);
    for (const int required : {-1, 0, 40, 1000, static_cast<int>(img.total())}) {
        EXPECT_EQ(orx::getThresholdValueByRequiredNumber(img, required),
                  reference::requiredNumber(library, required));
    }
}

struct WorkedExample {
    const char* name;
    std::map<int, int> counts;
    std::map<int, int> levels;  // by method
};

void PrintTo(const WorkedExample& example, std::ostream* out) { *out << example.name; }

class WorkedOutByHand : public testing::TestWithParam<WorkedExample> {};

TEST_P(WorkedOutByHand, LevelsAreThoseOfTheFormulas) {
    for (const auto& [method, level] : GetParam().levels) {
        EXPECT_EQ(levelOf(imageOf(GetParam().counts), method), level) << "method " << method;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Thresholds, WorkedOutByHand,
    testing::Values(
        WorkedExample{"two spikes: no smoothing, no class with a spread, balance at 150",
                      {{100, 30}, {200, 10}},
                      {{0, 100},
                       {1, 102},
                       {2, 100},
                       {3, 150},
                       {4, 100},
                       {5, 150},
                       {7, 0},
                       {8, 150},
                       {9, 100},
                       {10, 100},
                       {11, 100}}},
        WorkedExample{"six equal levels: halves for Otsu, moments and entropy; nothing above 132",
                      {{10, 5}, {20, 5}, {30, 5}, {40, 5}, {50, 5}, {60, 5}},
                      {{0, 30}, {5, -1}, {7, 31}, {8, 35}, {9, 30}}},
        WorkedExample{
            "the triangle's distance at 20, 50 x (19 - 200) + 20 x 100, is negative; 199's is largest",
            {{20, 50}, {200, 100}},
            {{1, 198}}},
        WorkedExample{
            "the same with the tail above the peak: 255 - 199 + 1", {{55, 100}, {235, 50}}, {{1, 57}}},
        WorkedExample{"the peak next to the start of the line, 2 x (0 - 1) + 1 x 2 = 0: none is chosen",
                      {{0, 1}, {1, 2}},
                      {{1, -1}}},
        WorkedExample{"one level",
                      {{77, 9}},
                      {{0, 0},
                       {1, 76},
                       {2, -1},
                       {3, -1},
                       {4, 77},
                       {5, -1},
                       {7, 0},
                       {8, 0},
                       {9, 0},
                       {10, 77},
                       {11, -1}}},
        WorkedExample{"one level of 255, which is not in the library's histogram",
                      {{255, 9}},
                      {{0, -1},
                       {1, 254},
                       {2, -1},
                       {3, -1},
                       {4, 255},
                       {5, -1},
                       {7, 0},
                       {8, 0},
                       {9, 0},
                       {10, 255},
                       {11, -1}}},
        WorkedExample{"darkest level 254", {{254, 1}, {255, 8}}, {{0, 254}, {4, 254}, {5, 254}, {10, 254}}},
        WorkedExample{"no pixel at all",
                      {},
                      {{0, -1},
                       {1, 2},
                       {2, -1},
                       {3, -1},
                       {4, -1},
                       {5, -1},
                       {7, 0},
                       {8, 0},
                       {9, 0},
                       {10, -1},
                       {11, -1}}}));

TEST(Thresholds, OtsuScoreIsTheVarianceBetweenTheClasses) {
    double score = 0;
    EXPECT_EQ(orx::getThresholdValOTSU(imageOf({{100, 30}, {200, 10}}), score), 100);
    EXPECT_EQ(score, 0.25 * 0.75 * 100 * 100);
    EXPECT_EQ(orx::getThresholdValOTSU(imageOf({{77, 5}}), score), 0);
    EXPECT_EQ(score, -1.0);
}

TEST(Thresholds, UnknownMethodsAreOtsu) {
    const cv::Mat img = imageOf({{3, 30}, {50, 20}, {180, 11}, {200, 9}});
    for (const int method : {-1, 6, 12, 99}) EXPECT_EQ(levelOf(img, method), levelOf(img, orx::tmOtsu));
}

TEST(Thresholds, RequiredNumberLeavesOut255AndTheLevelMustBeExceeded) {
    const cv::Mat img = imageOf({{10, 5}, {100, 3}, {200, 2}, {255, 50}});
    const std::map<int, int> levels = {{-1, 255}, {0, 200}, {1, 200}, {2, 100},
                                       {4, 100},  {5, 10},  {9, 10},  {10, -1}};
    for (const auto& [required, level] : levels) {
        EXPECT_EQ(orx::getThresholdValueByRequiredNumber(img, required), level) << required;
    }
}

TEST(Thresholds, CountsPassThroughSinglePrecisionInTheLibraryHistogram) {
    const cv::Mat row(1, 24929, CV_8UC1, cv::Scalar(80));
    const cv::Mat img = repeated(row, 673);  // 2^24 + 1 pixels, 2^24 in single precision
    EXPECT_EQ(orx::getThresholdValueByRequiredNumber(img, (1 << 24) - 1), 80);
    EXPECT_EQ(orx::getThresholdValueByRequiredNumber(img, 1 << 24), -1);
}

// Random histograms of one kind: weights of the levels, from which pixels are drawn.
struct Shape {
    const char* name;
    std::function<double(double chance, int level, const double parameters[4])> weight;
};

void PrintTo(const Shape& shape, std::ostream* out) { *out << shape.name; }

double bell(double level, double centre, double width) {
    const double z = (level - centre) / width;
    return std::exp(-z * z);
}

class PlainLoops : public testing::TestWithParam<Shape> {
  protected:
    cv::Mat draw(std::mt19937& random) const {
        std::uniform_real_distribution<double> uniform(0, 1);
        double parameters[4];
        for (double& p : parameters) p = uniform(random);
        std::vector<double> weights(256);
        for (int i = 0; i < 256; ++i)
            weights[static_cast<std::size_t>(i)] = GetParam().weight(uniform(random), i, parameters) + 1e-12;
        std::discrete_distribution<int> level(weights.begin(), weights.end());
        const int rows = 1 + static_cast<int>(random() % 60);
        cv::Mat whole(rows, 80, CV_8UC1);
        for (int i = 0; i < rows * 80; ++i) whole.data[i] = static_cast<uchar>(level(random));
        const int cols = 1 + static_cast<int>(random() % 80);
        return whole.colRange(80 - cols, 80);
    }
};

TEST_P(PlainLoops, GiveTheSameLevels) {
    std::mt19937 random(20240611);
    for (int trial = 0; trial < 150 && !HasFailure(); ++trial) {
        SCOPED_TRACE(trial);
        expectReferenceLevels(draw(random));
    }
}

// Images of 34 million pixels: the 32-bit sums of bright ones wrap, spreads leave 64 bits.
class HugeCounts : public PlainLoops {};

TEST_P(HugeCounts, GiveTheLevelsOfPlainLoops) {
    std::mt19937 random(7);
    const cv::Mat row = draw(random).clone().reshape(1, 1);
    expectReferenceLevels(repeated(row, 34000000 / row.cols));
}

const Shape kTwoModes = {"two modes", [](double, int i, const double* p) {
                             return bell(i, 128 * p[0], 1 + 20 * p[1]) +
                                    p[2] * bell(i, 128 + 127 * p[3], 1 + 20 * p[1]);
                         }};
const Shape kSaturated = {"saturated", [](double, int i, const double* p) {
                              return i == 255 ? 20 * p[0] : bell(i, 200 + 60 * p[1], 30 * p[2] + 1);
                          }};

INSTANTIATE_TEST_SUITE_P(Thresholds, HugeCounts, testing::Values(kTwoModes, kSaturated));
INSTANTIATE_TEST_SUITE_P(
    Thresholds, PlainLoops,
    testing::Values(
        kTwoModes, kSaturated, Shape{"flat", [](double, int, const double*) { return 1.0; }},
        Shape{"one mode", [](double, int i, const double* p) { return bell(i, 255 * p[0], 1 + 60 * p[1]); }},
        Shape{"several modes",
              [](double, int i, const double* p) {
                  return bell(i, 255 * p[0], 9) + bell(i, 255 * p[1], 5) + p[2] * bell(i, 255 * p[3], 20);
              }},
        Shape{"few levels",
              [](double chance, int, const double* p) { return chance < 0.05 * p[0] ? 1.0 : 0.0; }},
        Shape{"comb", [](double, int i,
                         const double* p) { return i % (2 + static_cast<int>(9 * p[0])) == 0 ? 1.0 : 0.0; }},
        Shape{"noisy weights",
              [](double chance, int, const double* p) { return std::pow(chance, 1 + 8 * p[0]); }}));

TEST(Thresholds, DeepImagesAreReadAsBytesOrCountedAsCalcHistDoes) {
    std::mt19937 random(5);
    cv::Mat deep(20, 31, CV_16UC1);
    for (int i = 0; i < 20 * 31; ++i)
        deep.at<std::uint16_t>(i / 31, i % 31) = static_cast<std::uint16_t>(random() % 400);
    const reference::Counts direct = reference::directCounts(deep);
    const reference::Counts library = reference::libraryCounts(deep);
    for (const int method : kMethods) {
        if (method == orx::tmTriangle) continue;
        EXPECT_EQ(levelOf(deep, method), reference::level(direct, library, method)) << method;
    }
    EXPECT_EQ(levelOf(deep, orx::tmTriangle), reference::triangle(reference::directCounts(deep, true)));
}

TEST(Thresholds, NoMatrixIsReadBeyondItsBuffer) {
    for (const int type : {CV_8SC1, CV_16SC1, CV_32SC1, CV_32FC1, CV_64FC1, CV_16FC1}) {
        cv::Mat img(5, 7, type);
        std::memset(img.data, 0xff, 35 * img.elemSize());  // not-a-number where it is a float
        for (const int method : kMethods) levelOf(img, method);
    }
    const int sizes[] = {3, 4, 5};
    const cv::Mat cube(3, sizes, CV_8UC1, cv::Scalar(9));
    for (const int method : kMethods) EXPECT_EQ(levelOf(cube, method), levelOf(cv::Mat(), method));
}

TEST(Thresholds, ColourIsRefusedByTheDispatcherAndGivesItsFirstChannelElsewhere) {
    const cv::Mat grey = imageOf({{20, 30}, {90, 40}, {255, 5}});
    cv::Mat colour;
    cv::merge(std::vector<cv::Mat>{grey, 255 - grey, grey / 2}, colour);
    for (const int method : kMethods) EXPECT_EQ(levelOf(colour, method), -1);
    double score = 0;
    EXPECT_EQ(orx::getThresholdValOTSU(colour, score), 20);
    EXPECT_EQ(orx::getThresholdValueByRequiredNumber(colour, 40), 20);
}

TEST(Thresholds, DegenerateTableInTheDocumentationIsCurrent) {
    std::ifstream file(ORX_DOCS_FOLDER "/threshold-degenerate.md", std::ios::binary);
    std::ostringstream kept;
    kept << file.rdbuf();
    EXPECT_EQ(kept.str(), thresholdTable());
}

}  // namespace
