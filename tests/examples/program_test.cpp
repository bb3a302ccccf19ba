// The inspection program itself, run as a user runs it.
#include "tests/examples/program_fixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

namespace {

namespace fs = std::filesystem;
using test::Outcome;
using test::Program;
using test::textOf;
using testing::HasSubstr;
using testing::Not;

TEST_F(Program, BadArgumentsEndWithTwoAndAHint) {
    const std::string picture = writeDisk("disk.png");
    const std::vector<std::vector<std::string>> cases = {
        {},
        {"--no-such-option"},
        {picture, "--method", "magic"},
        {picture, "--method", "tmOtsu"},
        {picture, "--tolerance", "-1"},
        {picture, "--tolerance", "two"},
        {picture, "--trials", "0"},
        {picture, "--min-inliers", "1.5"},
        {picture, "--background", "-5"},
        {picture, "--smooth", "nan"},
        {picture, "--min-area", "nan"},
        {picture, "--objects", "grey"},
        {picture, "--shape", "square"},
        {"--synthetic", "x"},
        {"--synthetic", "-1"},
        {picture, "--seed", "-1"},
        {picture, "--seed", "99999999999"},
        {picture, "--output"},
        {picture, "--circle", "huber"},
        {picture, "--line", "wls"},
        {picture, "--ellipse", "robust"},
        {picture, "--circle", "wls", "--ellipse", "norm"},
        {picture, "--shape", "line", "--circle", "ransac"},
        {picture, "--shape", "line", "--ellipse", "norm"},
        {picture, "--shape", "circle", "--line", "robust"},
        {picture, "--caliper", "1,2,3"},
        {picture, "--caliper", "1,2,3,4,5"},
        {picture, "--caliper", "1,2,3.5,4"},
        {picture, "--caliper", "1,2,0,4"},
        {picture, "--caliper", "1,2,99999999999,4"},
        {picture, "--caliper", "1;2;3;4"},
        {picture, "--circle-caliper", "10,10,0"},
        {picture, "--circle-caliper", "10,10,nan"},
        {picture, "--circle-caliper", "10,10"},
        {picture, "--edges=high"},
        {"--synthetic-parts", "-1"},
        {picture, "--teach-part", "1,2,0,4"},
        {picture, picture, "--teach-part", "1,2,30,40"},
        {picture, "--teach-part", "1,2,30,40", "--find", "model.part"},
        {picture, "--min-score", "0.5"},
        {picture, "--find", "model.part", "--min-score", "0"},
        {picture, "--find", "model.part", "--max-parts", "0"},
        {picture, "--find", "model.part", "--min-scale", "1.2", "--max-scale", "1.1"},
        {picture, "--find", "model.part", "--part-polarity", "both"},
        {"--camera", "--find", "model.part"},
    };
    for (const auto& arguments : cases) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_THAT(outcome.errors, HasSubstr("--help")) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.output, "");
    }
    EXPECT_FALSE(fs::exists(path("inspection")));
}

TEST_F(Program, HelpNamesEveryOptionWithItsDefaultAndVersionIsOneLine) {
    const Outcome help = run({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* text :
         {"--method",      "--objects",     "--smooth",     "--background", "--close",
          "--min-area",    "--shape",       "--tolerance",  "--trials",     "--seed",
          "--min-inliers", "--no-subpixel", "--synthetic",  "--output",     "--version",
          "shanbhag",      "Exit code",     "--circle",     "--line",       "--ellipse",
          "--segment",     "--edges",       "--caliper",    "X,Y,W,H",      "--circle-caliper",
          "CX,CY,R",       "--focus",       "--teach-part", "--find",       "--synthetic-parts",
          "--min-score",   "--max-parts",   "--min-scale"})
        EXPECT_THAT(help.output, HasSubstr(text));
    // CLI11 writes a default as =VALUE, or since its version 2.4 as [VALUE].
    for (const std::string value : {"otsu", "auto", "100", "2", "200", "0.5", "inspection", "search", "none"})
        EXPECT_THAT(help.output, AnyOf(HasSubstr("=" + value), HasSubstr("[" + value + "]")));
    const Outcome version = run({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.output.find("orx_inspection "), 0U);
    EXPECT_EQ(std::count(version.output.begin(), version.output.end(), '\n'), 1);
}

TEST_F(Program, AMeasuredDiskStandsInEveryReport) {
    const Outcome outcome = run({writeDisk("disk.png"), "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output, HasSubstr("1 circle (1 with a mean residual below 2 px), 0 lines"));
    EXPECT_THAT(outcome.output, HasSubstr(path("out/disk-measured.png")));

    const Json::Value image = report()["images"][0];
    EXPECT_EQ(image["name"].asString(), path("disk.png"));
    EXPECT_TRUE(image["measured"].asBool());
    EXPECT_EQ(image["status"].asString(), "measured");
    EXPECT_FALSE(image.isMember("problem") || image.isMember("problems"));
    ASSERT_EQ(image["features"].size(), 1U);
    const Json::Value feature = image["features"][0];
    EXPECT_EQ(feature["shape"].asString(), "circle");
    EXPECT_NEAR(feature["x"].asDouble(), 70.0, 0.05);
    EXPECT_NEAR(feature["y"].asDouble(), 60.0, 0.05);
    EXPECT_NEAR(feature["radius"].asDouble(), 30.0, 0.05);
    EXPECT_GT(feature["inlierRatio"].asDouble(), 0.99);
    for (const char* name : {"x", "y", "radius"}) {
        const double deviation = feature["deviations"][name].asDouble();
        EXPECT_GT(deviation, 0.0005) << name;
        EXPECT_LT(deviation, 0.02) << name;
    }
    EXPECT_FALSE(feature["deviations"].isMember("angle"));
    char radius[64];
    std::snprintf(radius, sizeof radius, "%.3f ± %.3f", feature["radius"].asDouble(),
                  feature["deviations"]["radius"].asDouble());
    EXPECT_THAT(outcome.output, HasSubstr(radius));

    // The disk's outline is drawn green where it is.
    const cv::Mat annotated = cv::imread(image["annotated"].asString());
    ASSERT_FALSE(annotated.empty());
    const int scale = annotated.cols / 140;
    EXPECT_EQ(annotated.size(), cv::Size(140 * scale, 120 * scale));
    const cv::Vec3b edge = annotated.at<cv::Vec3b>(60 * scale, 100 * scale);
    EXPECT_GT(edge[1], edge[0] + 60);
    EXPECT_GT(edge[1], edge[2] + 60);

    const std::string html = textOf(path("out/report.html"));
    EXPECT_THAT(html, HasSubstr("data:image/png;base64,"));
    EXPECT_THAT(html, HasSubstr("level " + std::to_string(image["level"].asInt())));
    EXPECT_THAT(html, Not(HasSubstr("http")));  // needs no network
    EXPECT_THAT(html, HasSubstr(std::string("<td>") + radius + "</td>"));
    EXPECT_THAT(html, HasSubstr("</html>"));
}

TEST_F(Program, AnEllipseStandsInEveryReportWithItsUncertainty) {
    const Outcome outcome = run({writeDisk("disk.png"), "--ellipse", "ransac", "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    const Json::Value feature = report()["images"][0]["features"][0];
    EXPECT_EQ(feature["shape"].asString(), "ellipse");
    const std::string html = textOf(path("out/report.html"));
    for (const char* name : {"x", "y", "radius", "length", "width"}) {
        const double deviation = feature["deviations"][name].asDouble();
        EXPECT_GT(deviation, 0.001) << name;
        EXPECT_LT(deviation, 0.04) << name;
        char text[64];
        std::snprintf(text, sizeof text, "%.3f ± %.3f", feature[name].asDouble(), deviation);
        EXPECT_THAT(outcome.output, HasSubstr(text));
        EXPECT_THAT(html, HasSubstr(text));
    }
    // A disk does not tell which way it is turned.
    EXPECT_NEAR(feature["deviations"]["angle"].asDouble(), 180.0 / std::sqrt(12.0), 1e-6);
}

TEST_F(Program, NamesMayHaveAnyCharacters) {
    const fs::path pictures = folder.path() / fs::u8path("图片 größe");
    const fs::path results = folder.path() / fs::u8path("结果/öä");
    fs::create_directory(pictures);
    fs::rename(writeDisk("disk.png"), pictures / fs::u8path("圆.PNG"));
    const Outcome outcome = run({pictures.u8string(), "-o", results.u8string()});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, HasSubstr("圆-measured.png"));
    for (const char* file : {"圆-measured.png", "report.json", "report.html"})
        EXPECT_TRUE(fs::exists(results / fs::u8path(file))) << file;
}

TEST_F(Program, EveryAnalysisStandsInTableJsonHtmlAndAPicture) {
    const Outcome outcome =
        run({writeDisk("disk.png"), "--segment", "--edges", "--focus", "--caliper", "10,58,120,5",
             "--caliper", "-300,0,20,20", "--circle-caliper", "71.5,59,28", "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    const std::string html = textOf(path("out/report.html"));
    for (const char* title : {"Lines and arcs", "Sub-pixel edges", "Caliper 10,58,120,5",
                              "Caliper -300,0,20,20", "Circle caliper 71.50,59.00,28.00", "Focus"}) {
        EXPECT_THAT(outcome.output, HasSubstr(title));
        EXPECT_THAT(html, HasSubstr(std::string("<h3>") + title));
    }

    const Json::Value image = report()["images"][0];
    ASSERT_EQ(image["segments"].size(), 1U);
    EXPECT_EQ(image["segments"][0]["lines"].size(), 0U);
    // One outline of 2 pi 30 pixels, about a point a pixel.
    EXPECT_EQ(image["edges"]["chains"].asInt(), 1);
    EXPECT_NEAR(image["edges"]["length"].asDouble(), 188.5, 1.0);
    EXPECT_GT(image["edges"]["points"].asInt(), 140);
    EXPECT_NEAR(image["edges"]["meanContrast"].asDouble(), 140.0, 15.0);
    // The middle row of the caliper is the disk's: it meets the outline at 40 and 100.
    const Json::Value edges = image["calipers"][0]["edges"];
    ASSERT_EQ(edges.size(), 2U);
    EXPECT_NEAR(edges[0]["x"].asDouble(), 40.0, 0.1);
    EXPECT_NEAR(edges[1]["x"].asDouble(), 100.0, 0.1);
    EXPECT_EQ(edges[0]["y"].asDouble(), 60.0);
    EXPECT_GT(edges[0]["contrast"].asDouble(), 100.0);
    EXPECT_LT(edges[1]["contrast"].asDouble(), -100.0);
    EXPECT_EQ(image["calipers"][0]["profile"].size(), 120U);
    EXPECT_EQ(image["calipers"][1]["edges"].size(), 0U);
    const Json::Value fitted = image["circleCalipers"][0]["fitted"];
    EXPECT_NEAR(fitted["x"].asDouble(), 70.0, 0.02);
    EXPECT_NEAR(fitted["y"].asDouble(), 60.0, 0.02);
    EXPECT_NEAR(fitted["radius"].asDouble(), 30.0, 0.02);
    EXPECT_GT(image["focus"]["greyDifference"].asDouble(), 0.0);

    // The far caliper has nothing to show.
    ASSERT_EQ(image["pictures"].size(), 4U);
    for (const Json::Value& file : image["pictures"]) EXPECT_FALSE(cv::imread(file.asString()).empty());
    EXPECT_THAT(html, HasSubstr("class='closeup'"));
    EXPECT_THAT(html, HasSubstr("class='plot'"));
    EXPECT_THAT(outcome.output, HasSubstr("not within reach"));
}

TEST_F(Program, AnalysesOfAPictureWithoutEdgesAreEmptyButHarmless) {
    cv::imwrite(path("dot.png"), cv::Mat(1, 1, CV_8U, cv::Scalar(9)));
    cv::imwrite(path("flat.png"), cv::Mat(40, 50, CV_8U, cv::Scalar(9)));
    const Outcome outcome = run({path("dot.png"), path("flat.png"), "--segment", "--edges", "--focus",
                                 "--caliper", "0,0,30,3", "--circle-caliper", "5,5,3", "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    const Json::Value image = report()["images"][1];
    EXPECT_EQ(image["edges"]["points"].asInt(), 0);
    EXPECT_FALSE(image["edges"].isMember("crop"));
    EXPECT_EQ(image["calipers"][0]["edges"].size(), 0U);
    EXPECT_FALSE(image["circleCalipers"][0].isMember("fitted"));
    EXPECT_EQ(image["focus"]["tenengrad"].asDouble(), 0.0);
}

TEST_F(Program, UnreadableFilesAreNamedWithTheirReasonAndTheOthersGoOn) {
    const std::string good = writeDisk("good.png");
    std::ofstream(path("empty.png")).close();
    std::ofstream(path("text.png")) << "this is not a picture";
    std::ofstream(path("cut.png"), std::ios::binary) << test::bytesOf(good).substr(0, 60);
    fs::create_directory(path("no-pictures"));
    std::ofstream(path("no-pictures/notes.txt")) << "x";

    const std::vector<std::pair<std::string, std::string>> reasons = {{"missing.png", "no such file"},
                                                                      {"empty.png", "the file is empty"},
                                                                      {"text.png", "not an image"},
                                                                      {"cut.png", "not an image"},
                                                                      {"no-pictures", "no picture"}};
    std::vector<std::string> arguments = {"-o", path("out")};
    for (const auto& [name, reason] : reasons) arguments.push_back(path(name));
    arguments.push_back(good);
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 1);

    const Json::Value images = report()["images"];
    ASSERT_EQ(images.size(), reasons.size() + 1);
    const std::string html = textOf(path("out/report.html"));
    for (Json::ArrayIndex i = 0; i < reasons.size(); ++i) {
        const auto& [name, reason] = reasons[i];
        EXPECT_THAT(outcome.errors, HasSubstr(path(name) + ": " + reason));
        EXPECT_EQ(images[i]["name"].asString(), path(name));
        EXPECT_FALSE(images[i]["measured"].asBool());
        EXPECT_EQ(images[i]["status"].asString(), "not measured");
        EXPECT_THAT(images[i]["problem"].asString(), HasSubstr(reason));
        EXPECT_THAT(html, HasSubstr(path(name)));
    }
    EXPECT_TRUE(images[images.size() - 1]["measured"].asBool());
    EXPECT_EQ(images[images.size() - 1]["features"].size(), 1U);
    EXPECT_THAT(outcome.output, HasSubstr("1 measured, 5 failed"));
}

TEST_F(Program, AMeasuredPictureStaysMeasuredWhereItsPicturesCantBeWritten) {
    // A folder stands where the file should.
    fs::create_directories(path("out/disk-measured.png"));
    fs::create_directories(path("out/disk-edges.png"));
    const Outcome outcome = run({writeDisk("disk.png"), "--edges", "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("disk-measured.png can't be written"));
    EXPECT_THAT(outcome.errors, HasSubstr("disk-edges.png can't be written"));
    EXPECT_THAT(outcome.output, HasSubstr("1 circle (1 with a mean residual below 2 px), 0 lines"));
    EXPECT_THAT(outcome.output, HasSubstr("1 measured (1 with problems), 0 failed"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("not measured")));

    const Json::Value image = report()["images"][0];
    EXPECT_TRUE(image["measured"].asBool());
    EXPECT_EQ(image["status"].asString(), "measured with problems");
    ASSERT_EQ(image["problems"].size(), 2U);
    EXPECT_THAT(image["problems"][0].asString(), HasSubstr("disk-measured.png can't be written"));
    EXPECT_THAT(image["problem"].asString(), HasSubstr(image["problems"][1].asString()));
    EXPECT_EQ(image["features"].size(), 1U);
    EXPECT_EQ(image["annotated"].asString(), "");

    const std::string html = textOf(path("out/report.html"));
    EXPECT_THAT(html, HasSubstr("Measured, but: the picture "));
    EXPECT_THAT(html, Not(HasSubstr("Not measured")));
    EXPECT_THAT(html, HasSubstr("<h3>Features</h3>"));
    EXPECT_THAT(html, HasSubstr("1 measured (1 with problems), 0 failed."));
}

TEST_F(Program, AnUnusableOutputFolderFailsInOneLine) {
    const std::string picture = writeDisk("disk.png");
    const Outcome outcome = run({picture, "-o", picture});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr(picture));
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1);
}

TEST_F(Program, FoldersAreSortedFilteredAndNotDescendedInto) {
    fs::create_directories(path("in/deeper"));
    for (const char* name : {"in/b.PNG", "in/a.png", "in/c.png", "in/deeper/d.png"}) writeDisk(name);
    std::ofstream(path("in/readme.txt")) << "x";
    writeDisk("a.png");
    const Outcome outcome = run({path("in"), path("a.png"), "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    std::vector<std::string> reported;
    std::vector<std::string> annotated;
    const Json::Value images = report()["images"];
    for (const Json::Value& image : images) {
        reported.push_back(image["name"].asString());
        annotated.push_back(fs::path(image["annotated"].asString()).filename().string());
    }
    EXPECT_EQ(reported, (std::vector<std::string>{path("in/a.png"), path("in/b.PNG"), path("in/c.png"),
                                                  path("a.png")}));
    EXPECT_EQ(annotated, (std::vector<std::string>{"a-measured.png", "b-measured.png", "c-measured.png",
                                                   "a-measured-2.png"}));
}

TEST_F(Program, AMethodWithoutALevelIsAFailureOfThatPicture) {
    // One grey level only: it has no two modes to put a threshold between.
    cv::imwrite(path("flat.png"), cv::Mat(50, 60, CV_8U, cv::Scalar(255)));
    const Outcome outcome =
        run({path("flat.png"), writeDisk("disk.png"), "--method", "minimum", "-o", path("out")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, HasSubstr(path("flat.png") + ": the method minimum finds no threshold"));
    EXPECT_EQ(report()["images"][1]["features"].size(), 1U);
}

TEST_F(Program, ASceneIsComparedWithItsTruthAndRepeatsExactly) {
    const Outcome first = run({"--synthetic", "11", "-o", path("out")});
    EXPECT_EQ(first.exitCode, 0) << first.errors;
    EXPECT_THAT(first.output, HasSubstr("Errors against the truth"));
    const Json::Value image = report()["images"][0];
    scenes::SceneSettings settings;
    settings.seed = 11;
    const scenes::Scene scene = scenes::renderScene(settings);
    ASSERT_EQ(image["truth"].size(), scene.disks.size() + scene.bars.size());
    EXPECT_NEAR(image["truth"][0]["x"].asDouble(), scene.disks[0].center.x, 1e-6);
    for (const Json::Value& error : image["truth"]) EXPECT_TRUE(error["found"].asBool());
    EXPECT_EQ(cv::norm(cv::imread(path("out/scene-11.png"), cv::IMREAD_GRAYSCALE), scene.image, cv::NORM_INF),
              0.0);

    const std::string json = textOf(path("out/report.json"));
    EXPECT_EQ(run({"--synthetic", "11", "-o", path("out")}).output, first.output);
    EXPECT_EQ(textOf(path("out/report.json")), json);

    // Shapes that can't be found are a failure, and said so.
    const Outcome blind = run({"--synthetic", "11", "--min-area", "1000000", "-o", path("out")});
    EXPECT_EQ(blind.exitCode, 1);
    EXPECT_THAT(blind.errors, HasSubstr("true shapes were not found"));
    EXPECT_EQ(report()["images"][0]["status"].asString(), "measured with problems");
}

}  // namespace
