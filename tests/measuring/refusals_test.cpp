// Why measuring refuses: each code that a header names, provoked.
#include <gtest/gtest.h>

#include <limits>

#include "relation_scenes.h"
#include "support/part_scene.h"
#include "tests/support/flat_plane.h"
#include "tests/support/refusal_check.h"
#include "tests/support/temporary_folder.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;
using relation_scenes::circleAround;
using relation_scenes::lineThrough;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(MeasuringRefusals, Relations) {
    relation_scenes::Random random(5);
    const orx::TMeasuredLine line = lineThrough({0, 0}, {100, 0}, random);
    const orx::TMeasuredLine beside = lineThrough({0, 20}, {100, 20}, random);
    const orx::TMeasuredLine after = lineThrough({200, 20}, {300, 20}, random);
    const orx::TMeasuredLine across = lineThrough({50, -50}, {50, 50}, random);
    const orx::TMeasuredCircle circle = circleAround({50, 10}, 30, 6.28, random);
    const orx::TMeasuredCircle far = circleAround({500, 10}, 30, 6.28, random);
    const orx::TMeasuredCircle touching = circleAround({50, 30}, 30, 6.28, random);
    const orx::TMeasuredLine noLine;
    const orx::TMeasuredCircle noCircle;

    const auto no = orx::rcNotReady;
    EXPECT_TRUE(refusedWith(no, "centerOf", [&] { orx::centerOf(noCircle); }));
    EXPECT_TRUE(refusedWith(no, "centerOf", [&] { orx::centerOf(orx::TMeasuredEllipse()); }));
    EXPECT_TRUE(refusedWith(no, "pointOn", [&] { orx::pointOn(noLine, 0); }));
    EXPECT_TRUE(refusedWith(no, "distance", [&] { orx::distance(orx::TMeasuredPoint(), line); }));
    EXPECT_TRUE(refusedWith(no, "distance", [&] { orx::distance(line, noLine); }));
    EXPECT_TRUE(refusedWith(no, "distance", [&] { orx::distance(circle, noCircle); }));
    EXPECT_TRUE(refusedWith(no, "signedDistance", [&] { orx::signedDistance(orx::TMeasuredPoint(), line); }));
    EXPECT_TRUE(refusedWith(no, "gap", [&] { orx::gap(noCircle, circle); }));
    EXPECT_TRUE(refusedWith(no, "angle", [&] { orx::angle(line, noLine); }));
    EXPECT_TRUE(refusedWith(no, "signedAngle", [&] { orx::signedAngle(line, noLine); }));
    EXPECT_TRUE(refusedWith(no, "parallelism", [&] { orx::parallelism(line, noLine); }));
    EXPECT_TRUE(refusedWith(no, "perpendicularity", [&] { orx::perpendicularity(line, noLine); }));
    EXPECT_TRUE(refusedWith(no, "concentricity", [&] { orx::concentricity(circle, noCircle); }));
    EXPECT_TRUE(refusedWith(no, "intersection", [&] { orx::intersection(line, noLine); }));
    EXPECT_TRUE(refusedWith(no, "intersections", [&] { orx::intersections(line, noCircle); }));
    EXPECT_TRUE(refusedWith(no, "intersections", [&] { orx::intersections(noCircle, circle); }));

    const auto degenerate = orx::rcDegenerate;
    EXPECT_TRUE(refusedWith(degenerate, "distance", [&] { orx::distance(line, across); }));
    EXPECT_TRUE(refusedWith(degenerate, "intersection", [&] { orx::intersection(line, line); }));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "distance", [&] { orx::distance(line, after); }));
    EXPECT_EQ(orx::lastRefusal().text, "distance: the lines do not lie side by side");
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "intersections", [&] { orx::intersections(across, far); }));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "intersections", [&] { orx::intersections(circle, far); }));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "intersections", [&] { orx::intersections(line, touching); }));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_TRUE(orx::distance(line, beside).middle.valid());
        EXPECT_TRUE(orx::distance(orx::pointOn(line, 3), beside).valid());
        EXPECT_TRUE(orx::intersection(line, across).valid());
        EXPECT_TRUE(orx::intersections(line, circle).valid());
        EXPECT_TRUE(orx::angle(line, across).valid());
        EXPECT_TRUE(orx::concentricity(circle, far).valid());
    }));
}

TEST(MeasuringRefusals, Form) {
    const std::vector<cv::Point2d> two{{0, 0}, {10, 0}};
    const std::vector<cv::Point2d> line{{0, 0}, {10, 0}, {20, 0}, {30, 0}, {40, 0}};
    const std::vector<cv::Point2d> square{{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    const std::vector<cv::Point2d> broken{{0, 0}, {10, 0}, {10, kNaN}, {0, 10}};
    orx::TFormOptions options;
    options.noise = -1;
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "minimumZoneCircle", [&] { orx::minimumZoneCircle(two); }));
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "minimumZoneCircle", [&] { orx::minimumZoneCircle(broken); }));
    EXPECT_TRUE(refusedWith(orx::rcDegenerate, "minimumZoneCircle", [&] { orx::minimumZoneCircle(line); }));
    EXPECT_TRUE(
        refusedWith(orx::rcOption, "minimumZoneCircle", [&] { orx::minimumZoneCircle(square, options); }));
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "minimumCircumscribedCircle",
                            [&] { orx::minimumCircumscribedCircle(broken); }));
    EXPECT_TRUE(
        refusedWith(orx::rcTooFew, "maximumInscribedCircle", [&] { orx::maximumInscribedCircle(two); }));
    EXPECT_TRUE(
        refusedWith(orx::rcDegenerate, "maximumInscribedCircle", [&] { orx::maximumInscribedCircle(line); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "minimumZoneLine", [&] { orx::minimumZoneLine(two); }));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_TRUE(orx::minimumZoneCircle(square).valid());
        EXPECT_TRUE(orx::minimumCircumscribedCircle(two).valid());
        EXPECT_TRUE(orx::maximumInscribedCircle(square).valid());
        EXPECT_TRUE(orx::minimumZoneLine(line).valid());
    }));
}

// In the names of the fits of points, which have the same ones.
TEST(MeasuringRefusals, EdgeFits) {
    ORXEdge::TMetricContour edge;
    for (int i = 0; i < 40; ++i) edge.points.emplace_back(static_cast<float>(i), 5.0F);
    EXPECT_TRUE(refusedWith(orx::rcOption, "fitLineGeometric", [&] { orx::fitLineGeometric(edge, 0.1); }));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "fitCircleGeometric",
                            [] { orx::fitCircleGeometric(std::vector<orx::TContrastEdge>{}); }));
}

TEST(MeasuringRefusals, VerdictsAndStudies) {
    const orx::TTolerance limits{9, 11};
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "judge", [&] { orx::judge(kNaN, 0.1, 5, limits); }));
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "judge", [&] { orx::judge(10, 0.1, kNaN, limits); }));
    EXPECT_TRUE(refusedWith(orx::rcOption, "judge", [&] { orx::judge(10, -0.1, 5, limits); }));
    EXPECT_TRUE(refusedWith(orx::rcOption, "judge", [&] { orx::judge(10, 0.1, 5, {11, 9}); }));
    EXPECT_TRUE(refusedWith(orx::rcOption, "judge", [&] { orx::judge(10, 0.1, 5, limits, 0.4); }));
    EXPECT_EQ(orx::lastRefusal().text, "judge: confidence is 0.4; 0.5 to 0.999999 is taken");
    orx::TGaugeStudy study(limits);
    EXPECT_TRUE(refusedWith(orx::rcOption, "add", [&] { study.add(-1, 10); }));
    EXPECT_TRUE(refusedWith(orx::rcNotFinite, "add", [&] { study.add(0, kNaN); }));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_EQ(orx::judge(10, 0.1, 5, limits).verdict, orx::vdPass);
        EXPECT_TRUE(study.add(0, 10));
    }));
}

TEST(MeasuringRefusals, Recipes) {
    const test::TemporaryFolder folder;
    const cv::Mat grey(80, 100, CV_8U, cv::Scalar(90));
    const int sizes[] = {30, 30, 30};
    const std::vector<std::pair<orx::TRefusalCode, cv::Mat>> pictures{
        {orx::rcEmptyImage, {}},
        {orx::rcImageType, cv::Mat::zeros(50, 50, CV_32F)},
        {orx::rcImageDimensions, cv::Mat(3, sizes, CV_8U, cv::Scalar(0))}};
    const orx::TRecipe recipe = orx::parseRecipe(R"({"recipe": 1, "features": [], "values": []})");
    ASSERT_TRUE(recipe.valid());
    std::vector<cv::Vec3b> palette(1);
    EXPECT_TRUE(refusedWith(orx::rcImageType, "drawIndexedRecipeSheet", [&] {
        orx::drawIndexedRecipeSheet(cv::Mat::zeros(50, 50, CV_8UC3), recipe, {}, palette);
    }));
    EXPECT_TRUE(palette.empty());
    for (const auto& entry : pictures) {
        const cv::Mat& img = entry.second;
        EXPECT_TRUE(refusedWith(entry.first, "run", [&] { recipe.run(img); }));
        EXPECT_TRUE(
            refusedWith(entry.first, "drawRecipeResult", [&] { orx::drawRecipeResult(img, recipe, {}); }));
        EXPECT_TRUE(
            refusedWith(entry.first, "drawRecipeSheet", [&] { orx::drawRecipeSheet(img, recipe, {}); }));
        EXPECT_TRUE(refusedWith(entry.first, "drawIndexedRecipeSheet",
                                [&] { orx::drawIndexedRecipeSheet(img, recipe, {}, palette); }));
        EXPECT_TRUE(refusedWith(entry.first, "findPartRegion", [&] { orx::findPartRegion(img); }));
        EXPECT_TRUE(refusedWith(entry.first, "proposeRecipe", [&] { orx::proposeRecipe(img); }));
    }
    test::writeBytes(folder / "bad.json", "{\"recipe\": 1,\n\"colour\": 2}");
    EXPECT_TRUE(
        refusedWith(orx::rcFileMissing, "readRecipe", [&] { orx::readRecipe(folder / "none.json"); }));
    EXPECT_TRUE(refusedWith(orx::rcFileUnreadable, "readRecipe", [&] { orx::readRecipe(folder.name()); }));
    EXPECT_TRUE(refusedWith(orx::rcFileFormat, "readRecipe", [&] { orx::readRecipe(folder / "bad.json"); }));
    EXPECT_NE(orx::lastRefusal().text.find("line 2"), std::string::npos);
    EXPECT_TRUE(refusedWith(orx::rcFileFormat, "parseRecipe", [] { orx::parseRecipe("[]"); }));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "run", [&] { orx::TRecipe().run(grey); }));

    // A calibration of other pictures, and a part that is not there.
    ASSERT_EQ(orx::writePlaneCalibration(folder / "plane.yml", test::flatPlane()), orx::plOk);
    const scenes::PartPicture alone = scenes::renderPartAlone(scenes::PartKind::bracket, 1);
    ASSERT_EQ(orx::writePartModel(folder / "a.part",
                                  orx::teachPart(alone.image, cv::Rect(cv::Point(), alone.image.size()))),
              orx::msOk);
    const orx::TRecipe calibrated =
        orx::parseRecipe(R"({"recipe": 1, "calibration": "plane.yml"})", folder.name());
    const orx::TRecipe placed =
        orx::parseRecipe(R"({"recipe": 1, "part": {"by": "model", "model": "a.part"}})", folder.name());
    ASSERT_TRUE(calibrated.valid() && placed.valid());
    EXPECT_TRUE(refusedWith(orx::rcSizesDiffer, "run", [&] { calibrated.run(grey); }));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "run", [&] { placed.run(grey); }));

    orx::TProposalOptions options;
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "findPartRegion", [&] { orx::findPartRegion(grey); }));
    EXPECT_TRUE(refusedWith(orx::rcNoResult, "proposeRecipe", [&] { orx::proposeRecipe(grey); }));
    options.teach = true;
    options.model = "new.part";
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "proposeRecipe", [&] { orx::proposeRecipe(grey, options); }));
    options = {};
    options.calibration = "none.yml";
    EXPECT_TRUE(refusedWith(orx::rcFileFormat, "proposeRecipe", [&] { orx::proposeRecipe(grey, options); }));
    options = {};
    options.maxFeatures = 0;
    EXPECT_TRUE(refusedWith(orx::rcOption, "proposeRecipe", [&] { orx::proposeRecipe(grey, options); }));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_EQ(recipe.run(grey).problem, "");
        EXPECT_FALSE(orx::drawRecipeSheet(grey, recipe, {}).empty());
        EXPECT_TRUE(placed.run(alone.image).pose.found);
    }));
}

}  // namespace
