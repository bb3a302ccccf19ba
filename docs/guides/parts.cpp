// Guide "finding parts": teach, find, follow, and teach from a drawing.
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"
#include "support/synthetic_scene.h"

namespace {

// [teach]
orx::TPartModel teach(const cv::Mat& lesson, const cv::Rect& around, cv::Point2d reference) {
    orx::TTeachOptions options;
    options.hasReference = true;
    options.reference = reference;  // what is told is where this point lies
    orx::TPartModel model = orx::teachPart(lesson, around, options);
    if (!model.valid()) std::printf("no model: %s\n", orx::matchStatusText(model.report().status));
    for (const std::string& warning : model.report().warnings) std::printf("warning: %s\n", warning.c_str());
    return model;
}
// [teach end]

// [find]
std::vector<orx::TFoundPart> findAll(const cv::Mat& grey, const orx::TPartModel& model, double minScore) {
    orx::TFindOptions options;
    options.maxParts = 10;
    options.minScore = minScore;  // the share of the outline that must be seen
    const orx::TFindResult result = orx::findParts(grey, model, options);
    if (!result.valid()) std::printf("not looked for: %s\n", orx::matchStatusText(result.status));
    return result.parts;  // the best first; empty: the part is not there
}
// [find end]

// [drawing]
// A plate of 80 x 40 mm with a hole of 20 mm, from its drawing; four pixels make three millimetres.
orx::TPartModel fromDrawing() {
    const orx::TOutline plate{orx::outlineLine({-40, -20}, {40, -20}), orx::outlineLine({40, -20}, {40, 20}),
                              orx::outlineLine({40, 20}, {-40, 20}), orx::outlineLine({-40, 20}, {-40, -20})};
    const orx::TOutline hole{orx::outlineArc({22, 0}, 10, 0, 360)};
    orx::TDrawingOptions options;
    options.pixelsPerUnit = 4.0 / 3.0;
    options.hasReference = true;  // what is told is where the plate's middle lies
    options.reference = {0, 0};
    return orx::teachPart({plate, hole}, options);
}
// [drawing end]

// [follow]
// The diameter of the hole, where the plate was found.
orx::TMeasuredCircle holeOf(const cv::Mat& grey, const orx::TFoundPart& part) {
    const double pixelsPerUnit = 4.0 / 3.0;
    orx::TCircleCaliperOptions calipers;
    calipers.searchLength = 12;
    calipers.count = 36;
    calipers.width = 2;                                        // so many have room side by side
    calipers = orx::applyPoseToCalipers(part.pose, calipers);  // they turn along
    const cv::Point2d center = orx::applyPose(part.pose, pixelsPerUnit * cv::Point2d(22, 0));
    return orx::fitCircleGeometric(
        orx::getCircleEdges(grey, center, part.pose.scale * pixelsPerUnit * 10, calipers));
}
// [follow end]

scenes::PartScene tray(double hidden) {
    scenes::PartSceneSettings settings;
    settings.kind = scenes::PartKind::key;
    settings.size = {560, 400};
    settings.count = 3;
    settings.seed = 5;
    settings.clutter = 20;
    settings.otherParts = 1;
    settings.hidden = hidden;
    settings.lightFall = 0.4;
    return scenes::renderParts(settings);
}

// How far a found part is from the nearest one that there is.
double errorOf(const orx::TFoundPart& part, const scenes::PartScene& scene) {
    double nearest = 1e9;
    for (const scenes::PlacedPart& placed : scene.parts)
        nearest = std::min(nearest, std::hypot(part.pose.x - placed.pose.x, part.pose.y - placed.pose.y));
    return nearest;
}

struct Row {
    double hidden;
    double lowest, highest;  // scores
    double error;            // at most, pixels
};

void tellKeys(const orx::TPartModel& model) {
    for (const Row& row : {Row{0, 1.00, 1.00, 0.02}, Row{0.2, 0.77, 0.79, 0.02}, Row{0.4, 0.55, 0.59, 0.02},
                           Row{0.6, 0.38, 0.39, 0.04}}) {
        const scenes::PartScene scene = tray(row.hidden);
        const auto parts = findAll(scene.image, model, 0.9 - row.hidden);
        guide::expect(parts.size() == 3 && scene.parts.size() == 3, "all three keys are found");
        if (parts.size() != 3) return;
        double worst = 0;
        for (const orx::TFoundPart& part : parts) worst = std::max(worst, errorOf(part, scene));
        std::printf("%.0f %% hidden: scores %.2f to %.2f, errors up to %.4f pixels\n", 100 * row.hidden,
                    parts[2].score, parts[0].score, worst);
        guide::expectAbout(parts[0].score, row.highest, 0.015, "best score");
        guide::expectAbout(parts[2].score, row.lowest, 0.015, "worst score");
        guide::expect(worst < row.error, "errors of the place");
        if (row.hidden != 0.2) continue;
        cv::Mat picture = guide::inColour(scene.image);
        orx::drawFoundParts(picture, model, parts);
        guide::save("parts-found", picture);
    }
    // In the tray without covers, asked for half as much as there is to see.
    const auto low = findAll(tray(0).image, model, 0.3);
    std::printf("with 0.3: %zu, the fourth scores %.2f\n", low.size(), low.size() > 3 ? low[3].score : 0);
    guide::expect(low.size() > 3 && low[3].score < 0.4, "a low score finds clutter");
}

void tellPlate() {
    const double pixelsPerUnit = 4.0 / 3.0, angle = 33;
    const cv::Point2d middle(131.3, 97.6),
        along(std::cos(angle * CV_PI / 180), std::sin(angle * CV_PI / 180));
    cv::Mat ideal(200, 260, CV_32F, cv::Scalar(60.0));
    scenes::paint(ideal, scenes::Bar{middle, angle, 80 * pixelsPerUnit, 40 * pixelsPerUnit}, 180.0);
    scenes::paint(ideal, scenes::Disk{middle + 22 * pixelsPerUnit * along, 10 * pixelsPerUnit}, 60.0);
    const cv::Mat grey = scenes::expose(ideal, {0.2, 0.8, 3, 2});
    const orx::TPartModel plate = fromDrawing();
    const auto found = findAll(grey, plate, 0.6);
    guide::expect(found.size() == 1, "the plate is found from its drawing");
    if (found.size() != 1) return;
    const orx::TFoundPart& part = found[0];
    std::printf("(%.3f, %.3f), %.3f degrees; standard uncertainties %.3f, %.3f and %.3f\n", part.pose.x,
                part.pose.y, part.pose.angle, part.deviationX, part.deviationY, part.deviationAngle);
    guide::expectAbout(part.pose.x, middle.x, 0.02, "x of the plate");
    guide::expectAbout(part.pose.y, middle.y, 0.02, "y of the plate");
    guide::expectAbout(part.pose.angle, angle, 0.02, "angle of the plate");
    const orx::TMeasuredCircle hole = holeOf(grey, part);
    std::printf("hole of %.3f pixels, standard uncertainty %.3f\n", 2 * hole.radius,
                2 * hole.radiusDeviation);
    guide::expectAbout(2 * hole.radius, 20 * pixelsPerUnit, 3 * 2 * hole.radiusDeviation,
                       "hole off the truth");
    cv::Mat picture = guide::inColour(grey);
    orx::drawFoundParts(picture, plate, found);
    guide::save("parts-drawing", guide::Enlarged(picture, 2).canvas());
}

void make() {
    const scenes::PartPicture lesson = scenes::renderPartAlone(scenes::PartKind::key);
    const orx::TPartModel model =
        teach(lesson.image, {{2, 2}, lesson.image.size() - cv::Size(4, 4)}, {lesson.pose.x, lesson.pose.y});
    guide::expect(model.valid(), "the key is taught");
    cv::Mat picture = guide::inColour(lesson.image);
    orx::drawPartModel(picture, model, model.taughtPose());
    guide::save("parts-lesson", guide::Enlarged(picture, 2).canvas());
    tellKeys(model);
    tellPlate();

    // [nothing]
    const cv::Mat even(100, 100, CV_8UC1, cv::Scalar(90));
    const orx::TPartModel none = orx::teachPart(even, cv::Rect(10, 10, 80, 80));
    std::printf("%s\n", orx::matchStatusText(none.report().status));
    // [nothing end]
    guide::expect(none.report().status == orx::msTooFewEdges, "an even picture teaches nothing");
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
