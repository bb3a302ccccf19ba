#include "orxFunctions/matching/refine/refinement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "found_parts.h"
#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/refine/coverage.h"
#include "taught_scene.h"

namespace {

using found_parts::Spread;
using orx::TFindOptions;
using orx::TFoundPart;
using orx::TPartModel;
using orx::TPartPose;
using orx::matching::Candidate;
using scenes::PartKind;

TFindOptions optionsFor(double noise) {
    TFindOptions options;
    options.noise = std::max(noise, 0.29);
    options.minContrast = std::max(10.0, 3 * options.noise);
    return options;
}

TFoundPart refined(const cv::Mat& image, const TPartModel& model, const TPartPose& start,
                   const TFindOptions& options, bool reversed = false) {
    Candidate candidate;
    candidate.pose = start;
    candidate.reversed = reversed;
    return orx::matching::refineCandidate(image, *model.data(), candidate, options);
}

// Errors of many refined poses, and the same in units of the deviations that were told.
struct Campaign {
    Spread x, y, angle, scale;
    Spread ratioX, ratioY, ratioAngle, ratioScale;
    double worst = 0;  // pixels
    double leastScore = 1;
};

Campaign campaign(PartKind kind, scenes::PartSceneSettings settings, int scenes) {
    const TPartModel model = found_parts::taught(kind);
    Campaign result;
    cv::RNG random(7);
    settings.kind = kind;
    const bool grows = settings.maxScale > settings.minScale;
    for (int i = 0; i < scenes; ++i) {
        settings.seed = 100 + static_cast<std::uint64_t>(i);
        const scenes::PartScene scene = scenes::renderParts(settings);
        const scenes::PlacedPart& truth = scene.parts.at(0);
        TFindOptions options = optionsFor(settings.noiseSigma);
        options.minScale = settings.minScale;
        options.maxScale = settings.maxScale;
        TPartPose start{truth.pose.x + random.uniform(-1.4, 1.4), truth.pose.y + random.uniform(-1.4, 1.4),
                        truth.pose.angle + random.uniform(-1.5, 1.5), truth.pose.scale};
        if (grows) start.scale *= 1 + random.uniform(-0.02, 0.02);
        const TFoundPart part = refined(scene.image, model, start, options);
        const found_parts::PoseError error = found_parts::errorOf(part.pose, truth);
        result.x.add(error.x);
        result.y.add(error.y);
        result.angle.add(error.angle);
        result.scale.add(error.scale);
        result.ratioX.add(error.x / part.deviationX);
        result.ratioY.add(error.y / part.deviationY);
        result.ratioAngle.add(error.angle / part.deviationAngle);
        if (grows) result.ratioScale.add(error.scale * truth.pose.scale / part.deviationScale);
        result.worst = std::max(result.worst, std::hypot(error.x, error.y));
        result.leastScore = std::min(result.leastScore, part.score);
    }
    return result;
}

scenes::PartSceneSettings alone() {
    scenes::PartSceneSettings settings;
    settings.size = {200, 200};
    return settings;
}

TEST(Refinement, PosesAreAsGoodAsTheNoiseAllowsAndSaySo) {
    // 50 poses tell a deviation to a tenth.
    for (const PartKind kind : scenes::kFiveParts) {
        SCOPED_TRACE(scenes::partName(kind));
        const Campaign found = campaign(kind, alone(), 50);
        EXPECT_LT(found.x.rms(), 0.0055);
        EXPECT_LT(found.y.rms(), 0.0055);
        EXPECT_LT(std::abs(found.x.mean()), 0.003);
        EXPECT_LT(std::abs(found.y.mean()), 0.003);
        // Only the notch tells the ring's angle.
        EXPECT_LT(found.angle.rms(), kind == PartKind::notchedRing ? 0.025 : 0.009);
        EXPECT_GT(found.leastScore, 0.98);
        for (const Spread* ratio : {&found.ratioX, &found.ratioY, &found.ratioAngle}) {
            EXPECT_GT(ratio->rms(), 0.65);
            EXPECT_LT(ratio->rms(), 1.3);
        }
    }
}

// Thirty points in a row, of which some neighbours are seen: six and more count, fewer may be a crossing
// edge. Those beside them are edges that run elsewhere.
TEST(Refinement, EdgesAreSeenWhereSixNeighboursAre) {
    constexpr std::size_t kCount = 30;
    orx::matching::ReadyOutline outline;
    outline.points.resize(kCount);
    outline.chains.assign(kCount, 0);
    for (orx::matching::ReadyPoint& point : outline.points) point.length = 1;
    outline.length = kCount;
    const auto seen = [&](std::size_t from, std::size_t count, double stepAt = -1) {
        std::vector<orx::matching::Match> matches(kCount);
        for (std::size_t i = 0; i < kCount; ++i) {
            const bool isSeen = i >= from && i < from + count;
            matches[i].found = true;
            matches[i].turn = isSeen ? 0.0 : 0.5;  // 29 degrees
            if (stepAt >= 0 && static_cast<double>(i) >= stepAt) matches[i].distance = 0.6;
        }
        return orx::matching::coverageOf(outline, matches, 1).score * kCount;
    };
    for (const std::size_t from : {0, 10, 24}) {
        EXPECT_NEAR(seen(from, 6), 6, 1e-9) << from;
        EXPECT_NEAR(seen(from, 5), 0, 1e-9) << from;
    }
    EXPECT_NEAR(seen(0, kCount), kCount, 1e-9);
    // A jump from one edge to the next parts neighbours.
    EXPECT_NEAR(seen(5, 11, 10), 6, 1e-9);
    EXPECT_NEAR(seen(5, 12, 11), 12, 1e-9);
}

TEST(Refinement, ScalesAreToldToTheTenThousandth) {
    scenes::PartSceneSettings settings = alone();
    settings.minScale = 0.9;
    settings.maxScale = 1.1;
    for (const PartKind kind : {PartKind::gear, PartKind::bracket}) {
        SCOPED_TRACE(scenes::partName(kind));
        const Campaign found = campaign(kind, settings, 30);
        EXPECT_LT(found.scale.rms(), 1.6e-4);
        EXPECT_LT(found.x.rms(), 0.0055);
        EXPECT_GT(found.ratioScale.rms(), 0.6);
        EXPECT_LT(found.ratioScale.rms(), 1.45);
    }
}

TEST(Refinement, CoversHideEdgesButDoNotPullAtThem) {
    scenes::PartSceneSettings settings = alone();
    settings.hidden = 0.4;
    for (const PartKind kind : {PartKind::plate, PartKind::gear, PartKind::bracket}) {
        SCOPED_TRACE(scenes::partName(kind));
        const Campaign found = campaign(kind, settings, 30);
        EXPECT_LT(found.x.rms(), 0.012);
        EXPECT_LT(found.y.rms(), 0.012);
        EXPECT_LT(found.worst, 0.06);
        EXPECT_GT(found.leastScore, 0.45);
        for (const Spread* ratio : {&found.ratioX, &found.ratioY, &found.ratioAngle}) {
            EXPECT_GT(ratio->rms(), 0.6);
            EXPECT_LT(ratio->rms(), 1.5);
        }
    }
}

TEST(Refinement, StrongNoiseIsInTheDeviations) {
    scenes::PartSceneSettings settings = alone();
    settings.noiseSigma = 8;
    const Campaign found = campaign(PartKind::key, settings, 50);
    EXPECT_LT(found.x.rms(), 0.022);
    EXPECT_LT(found.angle.rms(), 0.03);
    for (const Spread* ratio : {&found.ratioX, &found.ratioY, &found.ratioAngle}) {
        EXPECT_GT(ratio->rms(), 0.7);
        EXPECT_LT(ratio->rms(), 1.3);
    }
}

TEST(Refinement, ShowsWhichPointsAreSeen) {
    const TPartModel model = found_parts::taught(PartKind::bracket);
    scenes::PartSceneSettings settings = alone();
    settings.kind = PartKind::bracket;
    settings.cut = 0.3;
    const scenes::PartScene scene = scenes::renderParts(settings);
    const scenes::ScenePose& truth = scene.parts.at(0).pose;
    const TFoundPart part =
        refined(scene.image, model, {truth.x + 1, truth.y - 1, truth.angle, 1}, optionsFor(2));
    EXPECT_NEAR(part.score, 0.7, 0.04);
    EXPECT_LT(part.rms, 0.06);
    const std::vector<cv::Point2d> outline = model.outline();
    ASSERT_EQ(part.seen.size(), outline.size());
    int wrong = 0;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const double x = orx::applyPose(part.pose, outline[i]).x;
        const double inside = std::min(x + 0.5, scene.image.cols - 0.5 - x);
        if (inside < -0.5 && part.seen[i] != 0) ++wrong;
        if (inside > 3 && part.seen[i] == 0) ++wrong;
    }
    EXPECT_LE(wrong, 3);
}

TEST(Refinement, WithoutEdgesTheStartComesBack) {
    const TPartModel model = found_parts::taught(PartKind::plate);
    const TPartPose start{101.25, 98.5, 33, 1};
    for (const TPartPose& pose : {start, TPartPose{-400, 90, 10, 1}, TPartPose{1e9, 1e9, 0, 1}}) {
        const TFoundPart part =
            refined(cv::Mat(200, 200, CV_8UC1, cv::Scalar(90)), model, pose, optionsFor(2));
        EXPECT_EQ(part.score, 0);
        EXPECT_NEAR(part.pose.x, pose.x, 1e-9 * std::abs(pose.x));
        EXPECT_NEAR(part.pose.y, pose.y, 1e-9 * std::abs(pose.y));
        EXPECT_NEAR(part.pose.angle, pose.angle, 1e-9);
        EXPECT_EQ(cv::countNonZero(part.seen), 0);
    }
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(200, 1), cv::Size(2, 90), cv::Size(9, 9)}) {
        const cv::Mat tiny(size, CV_8UC1, cv::Scalar(90));
        EXPECT_EQ(refined(tiny, model, {0, 0, 0, 1}, optionsFor(2)).score, 0);
    }
}

TEST(Refinement, TextureIsNoPart) {
    scenes::PartSceneSettings settings = alone();
    settings.count = 0;
    settings.texture = 30;
    for (const PartKind kind : scenes::kFiveParts) {
        const TPartModel model = found_parts::taught(kind);
        for (std::uint64_t seed = 1; seed <= 6; ++seed) {
            settings.seed = seed;
            const cv::Mat image = scenes::renderParts(settings).image;
            TFindOptions options = optionsFor(2);
            EXPECT_LT(refined(image, model, {100, 100, 40.0 * static_cast<double>(seed), 1}, options).score,
                      0.3);
        }
    }
}

TEST(Refinement, ExchangedContrastIsSeenWhereItIsAskedFor) {
    const TPartModel model = found_parts::taught(PartKind::key);
    scenes::PartSceneSettings settings = alone();
    settings.kind = PartKind::key;
    settings.ground = 180;
    settings.contrast = -100;
    const scenes::PartScene scene = scenes::renderParts(settings);
    const scenes::ScenePose& truth = scene.parts.at(0).pose;
    const TPartPose start{truth.x + 0.7, truth.y, truth.angle - 0.5, 1};
    const TFoundPart part = refined(scene.image, model, start, optionsFor(2), true);
    EXPECT_TRUE(part.reversed);
    EXPECT_GT(part.score, 0.98);
    EXPECT_NEAR(part.pose.x, truth.x, 0.02);
    EXPECT_LT(refined(scene.image, model, start, optionsFor(2)).score, 0.3);
    // Who does not know the signs takes both, at each point.
    orx::matching::ModelData unsigned_ = *model.data();
    unsigned_.signsAreKnown = false;
    for (std::size_t i = 0; i < unsigned_.outline.size(); i += 2) unsigned_.outline[i].normal *= -1;
    Candidate candidate;
    candidate.pose = start;
    const TFoundPart drawn = orx::matching::refineCandidate(scene.image, unsigned_, candidate, optionsFor(2));
    EXPECT_GT(drawn.score, 0.98);
    EXPECT_NEAR(drawn.pose.y, truth.y, 0.02);
}

// ---- What the outline can't tell ----

constexpr double kInfinite = std::numeric_limits<double>::infinity();

struct Told {
    TPartModel model;
    TFoundPart part;
};

// Taught from a picture and refined in another one with noise, both at the same pose.
Told told(const taught_scene::Loops& loops, const TPartPose& pose, const cv::Rect& region,
          cv::Point2d reference, bool grows = false) {
    taught_scene::Look look;
    orx::TTeachOptions teach;
    teach.hasReference = true;
    teach.reference = reference;
    Told result;
    result.model = orx::teachPart(taught_scene::picture(loops, pose, look), region, teach);
    look.noise = 4;
    TFindOptions options = optionsFor(4);
    if (grows) options.maxScale = 1.2;
    if (grows) options.minScale = 0.8;
    TPartPose start = result.model.taughtPose();
    start.x += 0.6;
    start.y -= 0.4;
    result.part = refined(taught_scene::picture(loops, pose, look), result.model, start, options);
    return result;
}

TEST(Refinement, RingsTellNoAngle) {
    const taught_scene::Loops ring{taught_scene::circle({}, 50), taught_scene::hole({}, 30)};
    const TPartPose pose{100.2, 90.4, 0, 1};
    const cv::Rect region(30, 20, 140, 140);
    for (const bool grows : {false, true}) {
        const TFoundPart part = told(ring, pose, region, {pose.x, pose.y}, grows).part;
        ASSERT_EQ(part.free.size(), 1U);
        EXPECT_NEAR(std::abs(part.free[0][2]), 1, 1e-4);
        EXPECT_EQ(part.deviationAngle, kInfinite);
        EXPECT_LT(part.deviationX, 0.02);
        EXPECT_LT(part.deviationY, 0.02);
        EXPECT_NEAR(part.pose.x, pose.x, 0.04);
        EXPECT_LT(part.deviationScale, 1e-3);
        EXPECT_EQ(part.deviationScale > 0, grows);
    }
    // About another point the turn moves the reference.
    const TFoundPart part = told(ring, pose, region, {pose.x - 30, pose.y}).part;
    ASSERT_EQ(part.free.size(), 1U);
    EXPECT_LT(part.deviationX, 0.02);
    EXPECT_EQ(part.deviationY, kInfinite);
}

TEST(Refinement, LinesTellNoPlaceAlongThem) {
    // A straight edge at 30 degrees, of which the region shows the middle.
    const taught_scene::Loops half{{{-300, 0}, {300, 0}, {300, 300}, {-300, 300}}};
    const TFoundPart slanted = told(half, {100, 90, 30, 1}, {60, 50, 80, 80}, {100, 90}).part;
    ASSERT_EQ(slanted.free.size(), 1U);
    const double along = slanted.free[0][0] * std::cos(CV_PI / 6) + slanted.free[0][1] * std::sin(CV_PI / 6);
    EXPECT_NEAR(std::abs(along), 1, 1e-3);
    EXPECT_EQ(slanted.deviationX, kInfinite);
    EXPECT_EQ(slanted.deviationY, kInfinite);
    EXPECT_LT(slanted.deviationAngle, 0.2);

    // Two level edges.
    const taught_scene::Loops bar{{{-300, -20}, {300, -20}, {300, 20}, {-300, 20}}};
    const TFoundPart level = told(bar, {100, 90, 0, 1}, {60, 50, 80, 80}, {100, 90}).part;
    ASSERT_EQ(level.free.size(), 1U);
    EXPECT_NEAR(std::abs(level.free[0][0]), 1, 1e-3);
    EXPECT_EQ(level.deviationX, kInfinite);
    EXPECT_LT(level.deviationY, 0.02);
    // What is free has no share in the covariance.
    EXPECT_LT(level.covariance(0, 0), 1e-3);
}

TEST(Refinement, RectanglesTellAll) {
    const taught_scene::Loops rectangle{taught_scene::rectangle(90, 60)};
    const TFoundPart part =
        told(rectangle, {100.3, 90.1, 10, 1}, {30, 20, 140, 140}, {100.3, 90.1}, true).part;
    EXPECT_TRUE(part.free.empty());
    EXPECT_LT(part.deviationX, 0.03);
    EXPECT_LT(part.deviationAngle, 0.06);
    EXPECT_LT(part.deviationScale, 2e-3);
    // The long sides are more than the short ones.
    EXPECT_LT(part.covariance(1, 1), part.covariance(0, 0));
    EXPECT_NEAR(part.covariance(0, 1), part.covariance(1, 0), 1e-12);
    EXPECT_NEAR(part.deviationScale * part.deviationScale, part.covariance(3, 3), 1e-12);
}

}  // namespace
