#include <gtest/gtest.h>
#include <json/json.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "orxFunctions/orxfunctions.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr int kWidth = 120;
constexpr int kHeight = 80;

std::string annotation(const std::string& points, const std::string& type, int width = kWidth) {
    std::ostringstream json;
    json << R"({"version": "5.0", "flags": {}, "shapes": [{"label": "标", "points": )" << points
         << R"(, "shape_type": ")" << type
         << R"("}], "imagePath": "part.png", "imageData": "AAAA", "imageWidth": )" << width
         << R"(, "imageHeight": )" << kHeight << "}";
    return json.str();
}

Json::Value parsed(const std::string& path) {
    Json::Value root;
    std::istringstream(test::bytesOf(path)) >> root;
    return root;
}

// What the polygon of an annotation covers, drawn with sixteenths of a pixel; OpenCV counts from pixel
// centres.
cv::Mat maskOf(const Json::Value& root) {
    std::vector<cv::Point> points;
    for (const Json::Value& p : root["shapes"][0]["points"]) {
        points.emplace_back(cvRound((p[0].asDouble() - 0.5) * 16), cvRound((p[1].asDouble() - 0.5) * 16));
    }
    cv::Mat mask = cv::Mat::zeros(root["imageHeight"].asInt(), root["imageWidth"].asInt(), CV_8U);
    cv::fillPoly(mask, std::vector<std::vector<cv::Point>>{points}, cv::Scalar(255), cv::LINE_8, 4);
    return mask;
}

class Augmentation : public testing::Test {
  protected:
    // A bright rectangle on grey, off the centre, and the annotation that names it.
    void SetUp() override {
        cv::Mat image(kHeight, kWidth, CV_8U, cv::Scalar(60));
        image(cv::Rect(30, 20, 40, 25)).setTo(200);
        cv::imwrite(in / "part.png", image);
        test::writeBytes(in / "part.json", annotation("[[30, 20], [70, 45]]", "rectangle"));
        std::string text;
        int color = 0;
        while (orx::APPgetMessage(text, color)) continue;
    }

    orx::TAugmentationReport run(const std::string& output) const {
        return augmentation.augment(in.name(), output);
    }

    test::TemporaryFolder in;
    test::TemporaryFolder out;
    orx::ImageDataAugmentation augmentation;
};

TEST_F(Augmentation, AnnotationFollowsThePixels) {
    orx::TAugmentationConfig config;
    config.rotations = config.scalings = config.shifts = 5;
    augmentation.setConfig(config);
    const orx::TAugmentationReport report = run(out.name());
    EXPECT_TRUE(report.completed);
    EXPECT_EQ(report.images, 1);
    EXPECT_EQ(report.written, 2 + 15 + 4);
    EXPECT_TRUE(report.problems.empty());
    for (const std::string& path : FileOperator::listFiles(out.name(), "json")) {
        Json::Value root = parsed(path);
        const std::string image = path.substr(0, path.size() - 5) + ".png";
        EXPECT_EQ(root["imagePath"].asString(), zul::extractFileName(image));
        EXPECT_TRUE(root["imageData"].isNull());
        EXPECT_EQ(root["version"].asString(), "5.0");
        EXPECT_EQ(root["shapes"][0]["label"].asString(), "标");
        const cv::Mat pixels = cv::imread(image, cv::IMREAD_UNCHANGED);
        ASSERT_EQ(pixels.size(), cv::Size(root["imageWidth"].asInt(), root["imageHeight"].asInt()));

        Json::Value& points = root["shapes"][0]["points"];
        const bool turned = path.find("rotate") != std::string::npos;
        EXPECT_EQ(root["shapes"][0]["shape_type"].asString(), turned ? "polygon" : "rectangle");
        ASSERT_EQ(points.size(), turned ? 4U : 2U);
        if (!turned) {  // the four corners, to draw
            const Json::Value a = points[0], b = points[1];
            Json::Value ab = a, ba = b;
            ab[0] = b[0];
            ba[0] = a[0];
            points.clear();
            for (const Json::Value& corner : {a, ab, b, ba}) points.append(corner);
        }
        const cv::Mat bright = pixels > 130;
        const cv::Mat mask = maskOf(root);
        cv::Mat differing = bright != mask;
        // Pixels on the outline may go either way: 130 to 170 pixels around it.
        cv::Mat outline;
        cv::morphologyEx(mask, outline, cv::MORPH_GRADIENT, cv::Mat::ones(3, 3, CV_8U));
        EXPECT_EQ(cv::countNonZero(differing & ~outline), 0) << path;
        EXPECT_GT(cv::countNonZero(bright & mask), 300) << path;
    }
}

TEST_F(Augmentation, FlipsAreExact) {
    ASSERT_TRUE(run(out.name()).completed);
    const cv::Mat image = cv::imread(in / "part.png", cv::IMREAD_UNCHANGED);
    const cv::Mat flipped = cv::imread(out / "part_flipH.png", cv::IMREAD_UNCHANGED);
    for (int x = 0; x < kWidth; ++x) {
        ASSERT_EQ(cv::norm(flipped.col(x), image.col(kWidth - 1 - x), cv::NORM_INF), 0);
    }
    const Json::Value points = parsed(out / "part_flipV.json")["shapes"][0]["points"];
    EXPECT_EQ(points[0][0].asDouble(), 30);
    EXPECT_EQ(points[0][1].asDouble(), kHeight - 20);
    EXPECT_EQ(points[1][1].asDouble(), kHeight - 45);
}

TEST_F(Augmentation, GreyValuesStayInTheirRanges) {
    orx::TAugmentationConfig config;
    config.brightnessChanges = config.contrastChanges = config.noises = 8;
    config.maxBrightness = 0.1;
    config.maxContrast = 0.5;
    augmentation.setConfig(config);
    cv::Mat withAlpha(10, 10, CV_8UC4, cv::Scalar(100, 100, 100, 7));
    cv::imwrite(in / "alpha.png", withAlpha);
    ASSERT_TRUE(run(out.name()).completed);
    double leastMean = 255;
    double mostMean = 0;
    for (int i = 0; i < 8; ++i) {
        const std::string number = std::to_string(i) + ".png";
        const cv::Mat bright = cv::imread(out / ("part_bright" + number), cv::IMREAD_UNCHANGED);
        EXPECT_EQ(bright.at<uchar>(30, 40) - bright.at<uchar>(0, 0), 140) << "every pixel moves alike";
        EXPECT_NEAR(bright.at<uchar>(0, 0), 60, 26);
        leastMean = std::min<double>(leastMean, bright.at<uchar>(0, 0));
        mostMean = std::max<double>(mostMean, bright.at<uchar>(0, 0));
        const cv::Mat contrast = cv::imread(out / ("part_contrast" + number), cv::IMREAD_UNCHANGED);
        const double factor = (127.5 - contrast.at<uchar>(0, 0)) / (127.5 - 60);
        EXPECT_GT(factor, 1 / 1.5 - 0.01);
        EXPECT_LT(factor, 1.5 + 0.01);
        EXPECT_NEAR(cv::mean(cv::imread(out / ("part_noise" + number), cv::IMREAD_UNCHANGED))[0],
                    cv::mean(cv::imread(in / "part.png", cv::IMREAD_UNCHANGED))[0], 2);
        for (const char* kind : {"bright", "contrast", "noise"}) {
            std::vector<cv::Mat> channels;
            cv::split(cv::imread(out / ("alpha_" + (kind + number)), cv::IMREAD_UNCHANGED), channels);
            ASSERT_EQ(channels.size(), 4U);
            EXPECT_EQ(cv::norm(channels[3], cv::Mat(10, 10, CV_8U, cv::Scalar(7)), cv::NORM_INF), 0) << kind;
        }
    }
    EXPECT_GT(mostMean, leastMean) << "amounts differ";
}

std::vector<std::string> contents(const test::TemporaryFolder& folder) {
    std::vector<std::string> all;
    for (const std::string& path : FileOperator::listFiles(folder.name())) {
        all.push_back(zul::extractFileName(path) + test::bytesOf(path));
    }
    return all;
}

TEST_F(Augmentation, SeedDecidesAlone) {
    const test::TemporaryFolder again, other, alone;
    run(out.name());
    run(again.name());
    EXPECT_EQ(contents(out), contents(again));
    orx::TAugmentationConfig config;
    config.seed = 1;
    augmentation.setConfig(config);
    run(other.name());
    EXPECT_NE(test::bytesOf(out / "part_noise0.png"), test::bytesOf(other / "part_noise0.png"));

    // Other images and other kinds of variants change nothing.
    cv::imwrite(in / "another.png", cv::Mat(9, 9, CV_8U, cv::Scalar(1)));
    config = {};
    config.rotations = 0;
    config.blurs = 3;
    config.flipVertical = false;
    augmentation.setConfig(config);
    run(alone.name());
    for (const char* name : {"part_noise0.png", "part_scale0.png", "part_shift0.json", "part_blur0.png"}) {
        EXPECT_EQ(test::bytesOf(alone / name), test::bytesOf(out / name)) << name;
    }
    EXPECT_FALSE(FileOperator::fileExists(alone / "part_rotate0.png"));
}

TEST_F(Augmentation, BrokenFilesAreReportedAndSkipped) {
    const std::string broken[] = {"",
                                  "[]",
                                  "{}",
                                  "{\"shapes\": 3}",
                                  "{\"shapes\": [3]}",
                                  "{\"shapes\": [{}]}",
                                  annotation("[[1, 2, 3]]", "polygon"),
                                  annotation("[[\"x\", 2]]", "polygon"),
                                  annotation("[[1, 1e999]]", "polygon"),
                                  annotation("[]", "polygon", kWidth + 1),
                                  std::string(100000, '['),
                                  "{\"shapes\": [{\"points\": [], \"shape_type\": 5}]}"};
    int count = 0;
    for (const std::string& json : broken) {
        const std::string stem = "broken" + std::to_string(count++);
        std::filesystem::copy_file(in / "part.png", in / (stem + ".png"));
        test::writeBytes(in / (stem + ".json"), json);
    }
    const std::string png = test::bytesOf(in / "part.png");
    test::writeBytes(in / "empty.png", "");
    test::writeBytes(in / "garbage.jpg", "garbage");
    test::writeBytes(in / "truncated.png", png.substr(0, 30));
    test::writeBytes(in / "notes.txt", "no image");
    const orx::TAugmentationReport report = run(out.name());
    EXPECT_TRUE(report.completed);
    EXPECT_EQ(report.images, 1);
    EXPECT_EQ(report.skipped, count + 3);
    ASSERT_EQ(report.problems.size(), static_cast<std::size_t>(count + 3));
    EXPECT_EQ(zul::toUtf8(report.problems[0]), "标注文件无效, 跳过图像: " + (in / "broken0.png"));
    std::string text;
    int color = 0;
    EXPECT_TRUE(orx::APPgetMessage(text, color));
    EXPECT_EQ(text, report.problems[0]);
    EXPECT_EQ(color, 1);
}

// Twice or more of the largest numbers there are.
TEST_F(Augmentation, APointThatScalingMakesInfiniteSkipsTheVariant) {
    test::writeBytes(in / "part.json", annotation("[[1e308, 20], [70, 45]]", "rectangle"));
    orx::TAugmentationConfig config;
    config.minScale = 2;
    config.maxScale = 3;
    augmentation.setConfig(config);
    const orx::TAugmentationReport report = run(out.name());
    EXPECT_TRUE(report.completed);
    EXPECT_EQ(report.written, 8);
    ASSERT_EQ(report.problems.size(), 1U);
    EXPECT_EQ(zul::toUtf8(report.problems[0]), "标注点超出数值范围, 跳过文件: " + (out / "part_scale0.png"));
    EXPECT_FALSE(FileOperator::fileExists(out / "part_scale0.png"));
    EXPECT_FALSE(FileOperator::fileExists(out / "part_scale0.json"));
    EXPECT_EQ(parsed(out / "part_flipV.json")["shapes"][0]["points"][0][0].asDouble(), 1e308);
}

TEST_F(Augmentation, ProgressCountsAndStops) {
    cv::imwrite(in / "z.bmp", cv::Mat(9, 9, CV_8UC3, cv::Scalar(1)));
    std::ostringstream calls;
    augmentation.setProgress([&](int done, int total, const std::string& file) {
        calls << done << '/' << total << ' ' << zul::extractFileName(file) << '\n';
        return true;
    });
    EXPECT_TRUE(run(out.name()).completed);
    EXPECT_EQ(calls.str(), "0/2 part.png\n1/2 z.bmp\n2/2 \n");
    augmentation.setProgress([](int done, int, const std::string&) { return done < 1; });
    const orx::TAugmentationReport report = run(out.name());
    EXPECT_FALSE(report.completed);
    EXPECT_EQ(report.images, 1);
}

TEST_F(Augmentation, FoldersAreChecked) {
    EXPECT_FALSE(run(in.name()).completed) << "into itself";
    EXPECT_FALSE(run("").completed);
    EXPECT_FALSE(augmentation.augment(in / "missing", out.name()).completed);
    EXPECT_EQ(FileOperator::listFiles(in.name()).size(), 2U);
}

TEST_F(Augmentation, SameNamesAndOddConfigurations) {
    cv::imwrite(in / "part.bmp", cv::Mat(kHeight, kWidth, CV_8U, cv::Scalar(9)));
    orx::TAugmentationConfig config;
    config.rotations = -5;
    config.maxShift = std::nan("");
    config.minScale = -3;
    config.maxScale = 0;
    config.maxNoise = 1e300;
    config.maxBlur = -1;
    augmentation.setConfig(config);
    EXPECT_TRUE(run(out.name()).completed);
    EXPECT_TRUE(FileOperator::fileExists(out / "part_flipH.png"));
    EXPECT_TRUE(FileOperator::fileExists(out / "part_png_flipH.json"));
    EXPECT_EQ(cv::imread(out / "part_scale0.png").size(), cv::Size(1, 1));
    EXPECT_EQ(test::bytesOf(out / "part_png_shift0.png"), test::bytesOf(out / "part_png_blur0.png"))
        << "both unchanged";
}

}  // namespace
