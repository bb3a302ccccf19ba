#include "orxFunctions/matching/search/candidates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/core/utility.hpp>
#include <opencv2/imgproc.hpp>
#include <ostream>
#include <vector>

#include "orxFunctions/matching/model/pyramid.h"
#include "orxFunctions/matching/part_model.h"
#include "support/part_scene.h"

namespace {

using orx::TFindOptions;
using orx::matching::Candidate;
using orx::matching::ModelData;
using scenes::PartKind;

constexpr double kRadiansOfDegree = CV_PI / 180;

orx::TPartModel taught(PartKind kind) {
    const scenes::PartPicture picture = scenes::renderPartAlone(kind);
    orx::TTeachOptions options;
    options.hasReference = true;
    options.reference = {picture.pose.x, picture.pose.y};
    options.direction = picture.pose.angle;
    return orx::teachPart(picture.image, cv::Rect(4, 4, picture.image.cols - 8, picture.image.rows - 8),
                          options);
}

// As findParts completes them.
TFindOptions complete(TFindOptions options) {
    if (options.minContrast == 0) options.minContrast = 10;
    if (options.noise == 0) options.noise = 2;
    return options;
}

std::vector<Candidate> candidatesIn(const cv::Mat& picture, const ModelData& model,
                                    const TFindOptions& options = {}) {
    const auto levels = static_cast<int>(model.levels.size());
    return orx::matching::searchCandidates(orx::matching::makePyramid(picture, levels), model,
                                           complete(options));
}

// How far the outermost points of the outline are from where they belong, pixels, about.
double distance(const orx::TPartPose& pose, const scenes::PlacedPart& part) {
    const double turn = 360.0 / scenes::partShape(part.kind).symmetry;
    const double radius = scenes::kPartRadius * part.pose.scale;
    return std::max({std::hypot(pose.x - part.pose.x, pose.y - part.pose.y),
                     radius * kRadiansOfDegree * std::abs(std::remainder(pose.angle - part.pose.angle, turn)),
                     radius * std::abs(pose.scale / part.pose.scale - 1)});
}

// Of the nearest candidate.
double distance(const std::vector<Candidate>& candidates, const scenes::PlacedPart& part) {
    double nearest = 1e9;
    for (const Candidate& candidate : candidates) nearest = std::min(nearest, distance(candidate.pose, part));
    return nearest;
}

struct Case {
    const char* name;
    scenes::PartSceneSettings scene;
    TFindOptions find;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

std::vector<Case> cases() {
    std::vector<Case> all;
    Case clean{"Clean", {}, {}};
    clean.scene.size = {480, 360};
    all.push_back(clean);
    Case next = clean;
    next.name = "HiddenInPart";
    next.scene.hidden = 0.3;
    next.find.minScore = 0.5;
    next.find.maxParts = 4;  // a notch may be hidden: then any turn of the ring is as good
    all.push_back(next);
    next = clean;
    next.name = "ClutterAndNoise";
    next.scene.clutter = 40;
    next.scene.noiseSigma = 8;
    next.find.minContrast = 24;
    all.push_back(next);
    next = clean;
    next.name = "FaintAndDark";
    next.scene.contrast = -20;
    next.find.polarity = orx::ppEither;
    all.push_back(next);
    next = clean;
    next.name = "CutByTheBorder";
    next.scene.cut = 0.25;
    next.find.minScore = 0.5;
    all.push_back(next);
    next = clean;
    next.name = "OfAnotherSize";
    next.scene.minScale = next.find.minScale = 0.6;
    next.scene.maxScale = next.find.maxScale = 1.3;
    all.push_back(next);
    next = clean;
    next.name = "Several";
    next.scene.size = {640, 480};
    next.scene.count = 5;
    next.find.maxParts = 5;
    all.push_back(next);
    return all;
}

class Search : public testing::TestWithParam<Case> {};

TEST_P(Search, ComesNearTheFiveParts) {
    for (const PartKind kind : scenes::kFiveParts) {
        const orx::TPartModel model = taught(kind);
        scenes::PartSceneSettings settings = GetParam().scene;
        settings.kind = kind;
        settings.seed = 11 + static_cast<std::uint64_t>(kind);
        const scenes::PartScene scene = scenes::renderParts(settings);
        const std::vector<Candidate> found = candidatesIn(scene.image, *model.data(), GetParam().find);
        for (const scenes::PlacedPart& part : scene.parts) {
            EXPECT_LT(distance(found, part), 2) << scenes::partName(kind);
        }
        for (std::size_t i = 1; i < found.size(); ++i) EXPECT_GE(found[i - 1].score, found[i].score);
        ASSERT_FALSE(found.empty());
        EXPECT_EQ(found.front().reversed, settings.contrast < 0) << scenes::partName(kind);
    }
}

std::string nameOf(const testing::TestParamInfo<Case>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Scenes, Search, testing::ValuesIn(cases()), nameOf);

struct Found {
    scenes::PartScene scene;
    orx::TPartModel model;
};

Found bracketScene(double angleRange = 360) {
    scenes::PartSceneSettings settings;
    settings.kind = PartKind::bracket;
    settings.size = {400, 300};
    settings.angleRange = angleRange;
    settings.seed = 3;
    return {scenes::renderParts(settings), taught(PartKind::bracket)};
}

TEST(SearchOptions, LimitAnglesAndPlaces) {
    const Found part = bracketScene();
    const scenes::PlacedPart& truth = part.scene.parts.front();
    TFindOptions find;
    find.startAngle = truth.pose.angle - 10 - 360;  // any turn counts
    find.angleRange = 12;
    std::vector<Candidate> found = candidatesIn(part.scene.image, *part.model.data(), find);
    EXPECT_LT(distance(found, truth), 2);
    find.startAngle = truth.pose.angle + 30;
    for (const Candidate& candidate : candidatesIn(part.scene.image, *part.model.data(), find)) {
        EXPECT_GT(distance(candidate.pose, truth), 2);
    }
    find.startAngle = truth.pose.angle;
    find.angleRange = 0;
    EXPECT_LT(distance(candidatesIn(part.scene.image, *part.model.data(), find), truth), 2);

    find = {};
    find.region = cv::Rect(cvRound(truth.pose.x) - 3, cvRound(truth.pose.y) - 3, 7, 7);
    EXPECT_LT(distance(candidatesIn(part.scene.image, *part.model.data(), find), truth), 2);
    find.region = cv::Rect(cvRound(truth.pose.x) - 40, cvRound(truth.pose.y) - 40, 20, 20);
    for (const Candidate& candidate : candidatesIn(part.scene.image, *part.model.data(), find)) {
        EXPECT_LT(candidate.pose.x, truth.pose.x - 8);
    }
}

TEST(SearchOptions, DecideOnPolarity) {
    const Found part = bracketScene();
    const scenes::PlacedPart& truth = part.scene.parts.front();
    const cv::Mat inverted = 255 - part.scene.image;
    TFindOptions find;
    EXPECT_GT(distance(candidatesIn(inverted, *part.model.data(), find), truth), 2);
    find.polarity = orx::ppReversed;
    const std::vector<Candidate> reversed = candidatesIn(inverted, *part.model.data(), find);
    EXPECT_LT(distance(reversed, truth), 2);
    EXPECT_TRUE(!reversed.empty() && reversed.front().reversed);
    EXPECT_GT(distance(candidatesIn(part.scene.image, *part.model.data(), find), truth), 2);

    // A drawing that does not know: every other normal the other way round.
    ModelData drawn = *part.model.data();
    drawn.signsAreKnown = false;
    for (orx::matching::ModelLevel& level : drawn.levels) {
        for (std::size_t i = 0; i < level.points.size(); i += 2) level.points[i].normal *= -1;
    }
    find.polarity = orx::ppSame;
    for (const cv::Mat& picture : {part.scene.image, inverted}) {
        EXPECT_LT(distance(candidatesIn(picture, drawn, find), truth), 2);
    }
}

// One bracket, and at the same place two thirds of another that is turned by a quarter: where parts may cover
// each other, the better one leaves the worse its chance.
TEST(SearchOptions, PartsAtOnePlaceAreBothSought) {
    const scenes::PartPicture upright = scenes::renderPartAlone(PartKind::bracket);
    cv::Mat turned;
    cv::rotate(upright.image, turned, cv::ROTATE_90_CLOCKWISE);
    const cv::Point reference(cvRound(upright.pose.x), cvRound(upright.pose.y));
    const cv::Point turnedReference(upright.image.rows - 1 - reference.y, reference.x);
    const cv::Point middle(150, 150);
    cv::Mat picture(300, 300, CV_8UC1, cv::Scalar(80));
    upright.image.copyTo(picture(cv::Rect(middle - reference, upright.image.size())));
    const int shown = turned.cols * 2 / 3;
    cv::Mat over = picture(cv::Rect(middle - turnedReference, cv::Size(shown, turned.rows)));
    cv::max(over, turned.colRange(0, shown), over);

    const orx::TPartModel model = taught(PartKind::bracket);
    TFindOptions find;
    find.minScore = 0.3;
    find.maxParts = 5;
    find.maxOverlap = 1;
    find.greediness = 0;
    const std::vector<Candidate> found = candidatesIn(picture, *model.data(), find);
    scenes::PlacedPart part{};
    part.kind = PartKind::bracket;
    for (const double turn : {0.0, 90.0}) {
        part.pose = {150, 150, upright.pose.angle + turn, 1};
        EXPECT_LT(distance(found, part), 3) << turn;
    }
    ASSERT_FALSE(found.empty());
    part.pose.angle = upright.pose.angle + 90;
    double second = 0;
    for (const Candidate& candidate : found)
        if (distance(candidate.pose, part) < 3) second = std::max(second, candidate.score);
    EXPECT_LT(second, 0.85 * found.front().score) << "not nearly as good";
}

// The middle of the outline is searched for, wherever the reference point lies.
TEST(Search, BearsAReferenceFarOutside) {
    const Found part = bracketScene();
    ModelData model = *part.model.data();
    const cv::Point2d shift(900, -700);
    for (orx::matching::ModelLevel& level : model.levels) {
        for (orx::matching::LevelPoint& point : level.points) point.position += cv::Point2f(shift);
    }
    model.report.symmetryCentre += shift;
    model.report.radius += cv::norm(shift);
    const scenes::PlacedPart& truth = part.scene.parts.front();
    // So large that the reference point lies in it, too.
    cv::Mat large(2800, 2800, CV_8UC1, cv::Scalar(80));
    const cv::Point place(1200, 1200);
    part.scene.image.copyTo(large(cv::Rect(place, part.scene.image.size())));
    const std::vector<Candidate> found = candidatesIn(large, model);
    EXPECT_FALSE(found.empty());
    for (const Candidate& candidate : found) {
        const double turned = candidate.pose.angle * kRadiansOfDegree;
        EXPECT_NEAR(candidate.pose.x + std::cos(turned) * shift.x - std::sin(turned) * shift.y,
                    truth.pose.x + place.x, 2);
        EXPECT_NEAR(candidate.pose.y + std::sin(turned) * shift.x + std::cos(turned) * shift.y,
                    truth.pose.y + place.y, 2);
    }
}

TEST(Search, FindsNothingWhereNothingIs) {
    const orx::TPartModel model = taught(PartKind::plate);
    TFindOptions find;
    find.minScale = 0.2;
    find.maxScale = 5;
    find.minScore = 0.1;
    find.greediness = 0;
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(1, 40), cv::Size(7, 90), cv::Size(233, 101)}) {
        const cv::Mat flat(size, CV_8UC1, cv::Scalar(128));
        EXPECT_TRUE(candidatesIn(flat, *model.data(), find).empty()) << size;
    }
    EXPECT_TRUE(orx::matching::searchCandidates({}, *model.data(), complete(find)).empty());
    EXPECT_TRUE(candidatesIn(cv::Mat(50, 50, CV_8UC1, cv::Scalar(9)), ModelData(), find).empty());
}

// A picture smaller than the part, in which edges are everywhere, at all scales: reads outside of nothing and
// ends.
TEST(Search, BearsPicturesOfNoiseAlone) {
    const orx::TPartModel model = taught(PartKind::gear);
    cv::RNG random(7);
    for (const cv::Size size : {cv::Size(5, 5), cv::Size(9, 61), cv::Size(120, 90)}) {
        cv::Mat noise(size, CV_8UC1);
        random.fill(noise, cv::RNG::UNIFORM, 0, 256);
        TFindOptions find;
        find.minScale = 0.2;
        find.maxScale = 5;
        find.minScore = 0.1;
        find.greediness = 0;
        find.polarity = orx::ppEither;
        const std::vector<Candidate> found = candidatesIn(noise, *model.data(), find);
        EXPECT_LE(found.size(), 100U);
        for (const Candidate& candidate : found) {
            EXPECT_TRUE(std::isfinite(candidate.pose.x + candidate.pose.y + candidate.pose.angle));
            EXPECT_TRUE(candidate.pose.scale >= 0.2 && candidate.pose.scale <= 5);
            EXPECT_TRUE(candidate.score >= 0 && candidate.score <= 1);
        }
    }
}

bool areEqual(const std::vector<Candidate>& a, const std::vector<Candidate>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const Candidate& x, const Candidate& y) {
        return x.pose.x == y.pose.x && x.pose.y == y.pose.y && x.pose.angle == y.pose.angle &&
               x.pose.scale == y.pose.scale && x.score == y.score && x.reversed == y.reversed;
    });
}

TEST(Search, AnswersAlikeOnAnyThreadsAndInstructions) {
    scenes::PartSceneSettings settings;
    settings.kind = PartKind::notchedRing;
    settings.count = 3;
    settings.clutter = 30;
    const cv::Mat picture = scenes::renderParts(settings).image;
    const orx::TPartModel model = taught(settings.kind);
    TFindOptions find;
    find.maxParts = 3;
    find.minScore = 0.3;
    find.maxScale = 1.1;
    const int threads = cv::getNumThreads();
    cv::setNumThreads(1);
    const std::vector<Candidate> one = candidatesIn(picture, *model.data(), find);
    EXPECT_GE(one.size(), 3U);
    cv::setNumThreads(2);
    EXPECT_TRUE(areEqual(one, candidatesIn(picture, *model.data(), find)));
    cv::setNumThreads(threads);
    cv::setUseOptimized(false);
    const std::vector<Candidate> plain = candidatesIn(picture, *model.data(), find);
    cv::setUseOptimized(true);
    EXPECT_TRUE(areEqual(one, plain));
}

}  // namespace
