// Why matching refuses: each code that a header names, provoked.
#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <string>

#include "found_parts.h"
#include "orxFunctions/orxfunctions.h"
#include "tests/support/refusal_check.h"
#include "tests/support/temporary_folder.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

const scenes::PartPicture& bracket() {
    static const scenes::PartPicture kPicture = scenes::renderPartAlone(scenes::PartKind::bracket, 1);
    return kPicture;
}

const orx::TPartModel& model() {
    static const orx::TPartModel kModel = found_parts::taught(scenes::PartKind::bracket);
    return kModel;
}

// Pictures that none of the functions takes, and the code of each.
struct BadPicture {
    orx::TRefusalCode code;
    cv::Mat picture;
};

std::vector<BadPicture> badPictures() {
    const int sizes[] = {4, 4, 4};
    return {{orx::rcEmptyImage, {}},
            {orx::rcImageType, cv::Mat::zeros(50, 50, CV_32F)},
            {orx::rcImageDimensions, cv::Mat(3, sizes, CV_8U, cv::Scalar(0))}};
}

TEST(MatchingRefusals, Teaching) {
    const cv::Mat& img = bracket().image;
    const cv::Rect whole(cv::Point(), img.size());
    const auto teach = [&](auto region, const orx::TTeachOptions& options = {}) {
        return [&img, region, options] { EXPECT_FALSE(orx::teachPart(img, region, options).valid()); };
    };
    for (const BadPicture& bad : badPictures()) {
        EXPECT_TRUE(refusedWith(bad.code, "teachPart", [&] { orx::teachPart(bad.picture, whole); }));
        EXPECT_TRUE(refusedWith(bad.code, "teachPart", [&] {
            orx::teachPart(bad.picture, std::vector<cv::Point2d>{{0, 0}, {9, 0}, {0, 9}});
        }));
        EXPECT_TRUE(refusedWith(bad.code, "teachPart", [&] { orx::teachPart(bad.picture, cv::Mat()); }));
    }
    EXPECT_TRUE(refusedWith(orx::rcOutside, "teachPart", teach(cv::Rect(-1, 0, 20, 20))));
    EXPECT_TRUE(refusedWith(orx::rcOutside, "teachPart", teach(std::vector<cv::Point2d>{{0, 0}, {9, 0}})));
    EXPECT_TRUE(refusedWith(orx::rcOutside, "teachPart", teach(cv::Mat(cv::Mat::zeros(img.size(), CV_8U)))));
    EXPECT_TRUE(refusedWith(orx::rcSizesDiffer, "teachPart", teach(cv::Mat(cv::Mat::ones(5, 5, CV_8U)))));
    orx::TTeachOptions options;
    options.sigma = kNaN;
    EXPECT_TRUE(refusedWith(orx::rcOption, "teachPart", teach(whole, options)));
    options.sigma = 6;
    EXPECT_TRUE(refusedWith(orx::rcOption, "teachPart", teach(whole, options)));
    EXPECT_EQ(orx::lastRefusal().text, "teachPart: sigma is 6; 0.5 to 5 is taken");
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "teachPart", teach(cv::Rect(0, 0, 10, 10))));
    EXPECT_TRUE(notRefused([&] { EXPECT_TRUE(orx::teachPart(img, whole).valid()); }));
}

TEST(MatchStatus, EachHasItsOwnText) {
    std::set<std::string> texts;
    for (int status = orx::msOk; status <= orx::msUnwritable; ++status)
        texts.insert(orx::matchStatusText(static_cast<orx::TMatchStatus>(status)));
    EXPECT_EQ(texts.size(), 10U);
    EXPECT_EQ(texts.count("unknown status"), 0U);
    EXPECT_STREQ(orx::matchStatusText(static_cast<orx::TMatchStatus>(-1)), "unknown status");
}

TEST(MatchingRefusals, TeachingFromDrawings) {
    const auto teach = [](orx::TOutline outline, const orx::TDrawingOptions& options = {}) {
        return [=] { EXPECT_FALSE(orx::teachPart(std::vector<orx::TOutline>{outline}, options).valid()); };
    };
    const orx::TOutlinePiece line = orx::outlineLine({0, 0}, {80, 0});
    orx::TDrawingOptions options;
    EXPECT_TRUE(refusedWith(orx::rcDegenerate, "teachPart", teach({})));
    EXPECT_TRUE(refusedWith(orx::rcDegenerate, "teachPart", teach({orx::outlineLine({0, 0}, {kNaN, 0})})));
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "teachPart", teach({orx::outlineLine({0, 0}, {250000, 0})})));
    EXPECT_TRUE(refusedWith(orx::rcTooFew, "teachPart", teach({orx::outlineLine({0, 0}, {8, 0})})));
    options.pixelsPerUnit = 0;
    EXPECT_TRUE(refusedWith(orx::rcOption, "teachPart", teach({line}, options)));
    options = {};
    options.hasReference = true;
    options.reference = {1e7, 0};
    EXPECT_TRUE(refusedWith(orx::rcOption, "teachPart", teach({line}, options)));
    EXPECT_TRUE(notRefused([&] { EXPECT_TRUE(orx::teachPart(std::vector<orx::TOutline>{{line}}).valid()); }));
}

TEST(MatchingRefusals, FindingAndDrawing) {
    const cv::Mat& img = bracket().image;
    for (const BadPicture& bad : badPictures()) {
        cv::Mat picture = bad.picture;
        EXPECT_TRUE(refusedWith(bad.code, "findParts", [&] { orx::findParts(picture, model()); }));
        EXPECT_TRUE(
            refusedWith(bad.code, "drawPartModel", [&] { orx::drawPartModel(picture, model(), {}); }));
        EXPECT_TRUE(
            refusedWith(bad.code, "drawFoundParts", [&] { orx::drawFoundParts(picture, model(), {}); }));
    }
    cv::Mat canvas = img.clone();
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "findParts", [&] { orx::findParts(img, {}); }));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "drawPartModel", [&] { orx::drawPartModel(canvas, {}, {}); }));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "drawFoundParts", [&] { orx::drawFoundParts(canvas, {}, {}); }));
    orx::TFindOptions options;
    options.minScore = 1.5;
    EXPECT_TRUE(refusedWith(orx::rcOption, "findParts", [&] { orx::findParts(img, model(), options); }));
    EXPECT_EQ(orx::lastRefusal().text, "findParts: minScore is 1.5; 0.1 to 1 is taken");
    options = {};
    options.region = {5, 5, 1 << 30, 1 << 30};
    EXPECT_TRUE(refusedWith(orx::rcOutside, "findParts", [&] { orx::findParts(img, model(), options); }));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_EQ(orx::findParts(img, model()).parts.size(), 1U);
        EXPECT_TRUE(orx::findParts(cv::Mat(50, 50, CV_8U, cv::Scalar(90)), model()).parts.empty());
        orx::drawPartModel(canvas, model(), {});
        orx::drawFoundParts(canvas, model(), {});
    }));
}

TEST(MatchingRefusals, Files) {
    const test::TemporaryFolder folder;
    const auto read = [&](const std::string& name) {
        return [&folder, name] { EXPECT_FALSE(orx::readPartModel(folder / name).valid()); };
    };
    test::writeBytes(folder / "text", "no model");
    EXPECT_TRUE(refusedWith(orx::rcFileMissing, "readPartModel", read("none")));
    EXPECT_TRUE(refusedWith(orx::rcFileUnreadable, "readPartModel", read(".")));
    EXPECT_TRUE(refusedWith(orx::rcFileFormat, "readPartModel", read("text")));
    EXPECT_TRUE(refusedWith(orx::rcFileFormat, "partModelFromBytes", [] { orx::partModelFromBytes("x"); }));
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "partModelToBytes", [] { orx::partModelToBytes({}); }));
    EXPECT_TRUE(
        refusedWith(orx::rcNotReady, "writePartModel", [&] { orx::writePartModel(folder / "a", {}); }));
    EXPECT_TRUE(refusedWith(orx::rcFileUnwritable, "writePartModel",
                            [&] { orx::writePartModel(folder / "none/a", model()); }));
    EXPECT_TRUE(notRefused([&] {
        EXPECT_EQ(orx::writePartModel(folder / "a", model()), orx::msOk);
        EXPECT_TRUE(orx::readPartModel(folder / "a").valid());
        EXPECT_TRUE(orx::partModelFromBytes(orx::partModelToBytes(model())).valid());
    }));
}

}  // namespace
