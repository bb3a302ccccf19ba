// The code and the pictures of docs/parts.md, and the numbers in it.
//
//   matching_guide FOLDER     writes parts-taught.png, parts-found.png and parts-scores.png there, prints the
//                             numbers
//
// What the page shows stands here to the letter; a test compares.
#include <array>
#include <cmath>
#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "docs/tools/matching_accuracy.h"
#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "support/synthetic_scene.h"

namespace {

orx::TPartModel teach(const cv::Mat& lesson, const std::vector<cv::Point2d>& around) {
    orx::TTeachOptions options;
    options.hasReference = true;
    options.reference = {80.3, 79.6};  // what is told when the part is found: where a gripper takes it,
    options.direction = 12;            // and how it is turned then
    const orx::TPartModel model = orx::teachPart(lesson, around, options);
    if (!model.valid()) std::printf("no model: %s\n", orx::matchStatusText(model.report().status));
    for (const std::string& warning : model.report().warnings) std::printf("%s\n", warning.c_str());
    return model;
}

std::vector<orx::TFoundPart> findAll(const cv::Mat& image, const orx::TPartModel& model) {
    orx::TFindOptions options;
    options.maxParts = 10;
    options.minScore = 0.5;  // half of the outline may be hidden
    const orx::TFindResult result = orx::findParts(image, model, options);
    if (!result.valid()) std::printf("not looked for: %s\n", orx::matchStatusText(result.status));
    return result.parts;  // empty: the part is not there
}

void report(const orx::TFoundPart& part) {
    std::printf("(%.3f, %.3f), %.3f degrees, score %.2f\n", part.pose.x, part.pose.y, part.pose.angle,
                part.score);
    std::printf("  standard uncertainties: %.3f and %.3f pixels, %.3f degrees\n", part.deviationX,
                part.deviationY, part.deviationAngle);
    if (!part.free.empty()) std::printf("  what is visible of it does not tell everything\n");
}

// The bracket's hole, measured where the bracket was found.
orx::TMeasuredCircle measureHole(const cv::Mat& image, const orx::TFoundPart& part) {
    const cv::Point2d center = orx::applyPose(part.pose, {-28, -28});
    const auto edges = orx::edgesAcross(image, orx::probesAlongCircle(center, 7 * part.pose.scale));
    orx::TFitOptions options;
    options.noise = orx::pnEdgeChain;
    options.smoothing = orx::kContourEdgeSmoothing;
    options.deviations = orx::deviationsOf(edges);
    options.loss = orx::flTukey;  // a cover may hide some of it
    return orx::fitCircleGeometric(orx::pointsOf(edges), options);
}

// ---- Pictures
// -----------------------------------------------------------------------------------------------

const cv::Scalar kInk(60, 50, 40);
const std::array<cv::Scalar, 4> kColours = {cv::Scalar(60, 160, 60), cv::Scalar(190, 120, 30),
                                            cv::Scalar(40, 120, 235), cv::Scalar(50, 50, 210)};

void write(cv::Mat& picture, const std::string& text, cv::Point at, const cv::Scalar& colour = kInk) {
    cv::putText(picture, text, at, cv::FONT_HERSHEY_SIMPLEX, 0.42, colour, 1, cv::LINE_AA);
}

// A bracket with a label beside it and another part that reaches into the picture.
cv::Mat crowdedLesson() {
    cv::Mat picture = scenes::renderPartAlone(scenes::PartKind::bracket, 1).image;
    cv::Mat rest(picture.size(), CV_32F, cv::Scalar(0));
    scenes::paint(rest, scenes::Disk{{158, 8}, 40}, 90);
    scenes::paint(rest, scenes::Bar{{110, 40}, 25, 40, 9}, -45);
    cv::GaussianBlur(rest, rest, cv::Size(), 0.8);
    cv::add(picture, rest, picture, cv::noArray(), CV_8U);
    return picture;
}

constexpr int kScale = 3;

cv::Mat enlarged(const cv::Mat& grey) {
    cv::Mat picture;
    cv::cvtColor(grey, picture, cv::COLOR_GRAY2BGR);
    cv::resize(picture, picture, cv::Size(), kScale, kScale, cv::INTER_CUBIC);
    return picture;
}

orx::TPartPose enlarged(orx::TPartPose pose) {
    pose.x = (pose.x + 0.5) * kScale - 0.5;
    pose.y = (pose.y + 0.5) * kScale - 0.5;
    pose.scale *= kScale;
    return pose;
}

cv::Mat drawTaught(const cv::Mat& lesson, const std::vector<cv::Point2d>& around,
                   const orx::TPartModel& model) {
    cv::Mat picture = enlarged(lesson);
    std::vector<cv::Point> corners;
    for (const cv::Point2d& p : around)
        corners.emplace_back(cvRound((p.x + 0.5) * kScale), cvRound((p.y + 0.5) * kScale));
    cv::polylines(picture, corners, true, cv::Scalar(255, 200, 40), 1, cv::LINE_AA);
    orx::TPartColours colours;
    colours.thickness = 2;
    orx::drawPartModel(picture, model, enlarged(model.taughtPose()), colours);
    return picture;
}

// ---- Scores
// -------------------------------------------------------------------------------------------------

constexpr std::array<double, 8> kScores = {0.25, 0.3, 0.35, 0.4, 0.5, 0.6, 0.7, 0.8};

struct Curve {
    std::string name;
    std::array<double, kScores.size()> values{};  // for each of kScores
};

// Found parts or false finds a picture for each least score.
Curve curveOf(const std::string& name, const matching_accuracy::Row& kindOfScenes) {
    Curve curve{name, {}};
    for (std::size_t i = 0; i < kScores.size(); ++i) {
        matching_accuracy::Row row = kindOfScenes;
        row.find.minScore = kScores[i];
        const matching_accuracy::Result result = sumOf(measure(row, 50));
        curve.values[i] = row.absent ? result.falseEach() : result.foundShare();
    }
    std::printf("%-24s", name.c_str());
    for (const double value : curve.values) std::printf(" %5.2f", value);
    std::printf("\n");
    return curve;
}

std::vector<Curve> scoreCurves() {
    std::printf("least score             ");
    for (const double score : kScores) std::printf(" %5.2f", score);
    std::printf("\n");
    std::vector<Curve> curves;
    for (const int hidden : {20, 40, 60}) {
        matching_accuracy::Row row = matching_accuracy::plainRow("");
        row.scene.hidden = hidden / 100.0;
        curves.push_back(curveOf("found, " + std::to_string(hidden) + " % hidden", row));
    }
    matching_accuracy::Row absent = matching_accuracy::plainRow("");
    absent.scene.clutter = 40;
    absent.scene.count = 0;
    absent.absent = true;
    curves.push_back(curveOf("false finds a picture", absent));
    return curves;
}

cv::Mat drawCurves(const std::vector<Curve>& curves) {
    cv::Mat picture(330, 640, CV_8UC3, cv::Scalar::all(255));
    const auto at = [](double score, double value) {
        return cv::Point(cvRound(60 + (score - 0.2) / 0.65 * 400),
                         cvRound(280 - std::min(value, 1.05) * 240));
    };
    cv::rectangle(picture, at(0.2, 1.05), at(0.85, 0), kInk);
    for (const double tick : {0.0, 0.25, 0.5, 0.75, 1.0}) {
        char text[20];
        std::snprintf(text, sizeof text, "%.2f", tick);
        write(picture, text, at(0.2, tick) + cv::Point(-42, 5));
        cv::line(picture, at(0.2, tick), at(0.85, tick), cv::Scalar::all(225));
    }
    for (const double tick : {0.3, 0.4, 0.5, 0.6, 0.7, 0.8}) {
        char text[20];
        std::snprintf(text, sizeof text, "%.1f", tick);
        write(picture, text, at(tick, 0) + cv::Point(-10, 18));
    }
    write(picture, "minScore", at(0.5, 0) + cv::Point(-20, 38));
    for (std::size_t c = 0; c < curves.size(); ++c) {
        std::vector<cv::Point> line;
        for (std::size_t i = 0; i < kScores.size(); ++i) line.push_back(at(kScores[i], curves[c].values[i]));
        cv::polylines(picture, line, false, kColours[c], 2, cv::LINE_AA);
        for (const cv::Point& p : line) cv::circle(picture, p, 4, kColours[c], cv::FILLED, cv::LINE_AA);
        write(picture, curves[c].name, {476, 60 + 24 * static_cast<int>(c)}, kColours[c]);
    }
    return picture;
}

std::vector<cv::Point2d> corners(const cv::Rect& box) {
    const double right = box.x + box.width - 1;
    const double bottom = box.y + box.height - 1;
    return {cv::Point2d(box.tl()), {right, double(box.y)}, {right, bottom}, {double(box.x), bottom}};
}

double scoreOf(const cv::Mat& image, const orx::TPartModel& model) {
    const std::vector<orx::TFoundPart> parts = findAll(image, model);
    return parts.empty() ? 0 : parts.front().score;
}

// A scene of three brackets, one of them half hidden, among other things.
scenes::PartScene trayWithBrackets() {
    scenes::PartSceneSettings settings;
    settings.kind = scenes::PartKind::bracket;
    settings.size = {640, 400};
    settings.count = 3;
    settings.seed = 11;
    settings.clutter = 25;
    settings.hidden = 0.25;
    settings.lightFall = 0.4;
    settings.otherParts = 2;
    return scenes::renderParts(settings);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "matching_guide: give the folder for the pictures\n");
        return 2;
    }
    const std::string folder = argv[1];
    const cv::Mat lesson = crowdedLesson();
    const std::vector<cv::Point2d> whole = corners({2, 2, 156, 156});
    const std::vector<cv::Point2d> outline = {{30, 30}, {79, 28}, {86, 86}, {132, 92}, {132, 132}, {24, 132}};
    std::printf("The whole picture:\n");
    const orx::TPartModel loose = teach(lesson, whole);
    std::printf("The part alone:\n");
    const orx::TPartModel model = teach(lesson, outline);
    if (!loose.valid() || !model.valid()) return 1;
    cv::Mat taught;
    cv::hconcat(drawTaught(lesson, whole, loose), drawTaught(lesson, outline, model), taught);

    const cv::Mat alone = scenes::renderPartAlone(scenes::PartKind::bracket, 2).image;
    std::printf(
        "A bracket in full view scores %.2f with the model of all that lay there, %.2f with that of itself\n",
        scoreOf(alone, loose), scoreOf(alone, model));
    const scenes::PartScene scene = trayWithBrackets();
    const std::vector<orx::TFoundPart> parts = findAll(scene.image, model);
    std::printf("%zu of %zu found; with the loose model %zu\n", parts.size(), scene.parts.size(),
                findAll(scene.image, loose).size());
    for (const scenes::PlacedPart& part : scene.parts)
        std::printf("true: (%.3f, %.3f), %.3f degrees, %.0f %% hidden\n", part.pose.x, part.pose.y,
                    part.pose.angle, 100 * part.hidden);
    for (const orx::TFoundPart& part : parts) {
        report(part);
        const orx::TMeasuredCircle hole = measureHole(scene.image, part);
        std::printf("  its hole: %s, radius %.3f, standard uncertainty %.3f\n",
                    orx::fitStatusText(hole.status), hole.radius, hole.radiusDeviation);
    }
    cv::Mat found;
    cv::cvtColor(scene.image, found, cv::COLOR_GRAY2BGR);
    orx::drawFoundParts(found, model, parts);

    const bool written = cv::imwrite(folder + "/parts-taught.png", taught) &&
                         cv::imwrite(folder + "/parts-found.png", found) &&
                         cv::imwrite(folder + "/parts-scores.png", drawCurves(scoreCurves()));
    if (!written) std::fprintf(stderr, "matching_guide: can't write into %s\n", folder.c_str());
    return written ? 0 : 1;
}
