// The part finder: a part taught from a picture or a drawing is found where it was taught, alike on many
// threads; poses and their inverses; anything else is refused with a reason.
#include <algorithm>
#include <cmath>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

// A picture large enough for outlines: corners and round parts on a ground, with grain.
cv::Mat scene(fuzz::Input& input) {
    cv::Mat image(96, 112, CV_8UC1);
    const double dark = input.between(0, 90);
    const double bright = dark + input.between(20, 150);
    const cv::Point2d middle{36.0 + input.between(0, 40), 36.0 + input.between(0, 24)};
    const double width = 8 + input.between(0, 24);
    const double height = 8 + input.between(0, 24);
    const double notch = input.between(0, 12);
    const double turn = input.byte() * CV_PI / 128;
    const bool isRound = input.byte() % 4U == 0;
    const unsigned grain = 1 + input.byte() % 12U;
    unsigned state = input.byte();
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            const cv::Point2d p = cv::Point2d(x, y) - middle;
            const double along = std::cos(turn) * p.x + std::sin(turn) * p.y;
            const double across = std::cos(turn) * p.y - std::sin(turn) * p.x;
            double inside =
                isRound ? width - cv::norm(p) : std::min(width - std::abs(along), height - std::abs(across));
            inside = std::min(inside, std::hypot(along - width, across) - notch);
            state = state * 1664525U + 1013904223U;
            const double level = dark + (bright - dark) * std::min(1.0, std::max(0.0, 0.5 + inside / 1.6));
            image.at<uchar>(y, x) = cv::saturate_cast<uchar>(level + (state >> 16U) % grain);
        }
    }
    return image;
}

orx::TTeachOptions teachOptions(fuzz::Input& input) {
    orx::TTeachOptions options;
    if (input.byte() % 4U != 0) return options;
    options.sigma = input.option(0.5, 3);
    options.minContrast = input.option(0, 60);
    options.hasReference = input.flag();
    options.reference = {input.number(), input.number()};
    options.direction = input.option(-180, 180);
    options.levels = input.between(-1, 9);
    return options;
}

orx::TFindOptions findOptions(fuzz::Input& input) {
    orx::TFindOptions options;
    options.minScore = 0.5;
    if (input.byte() % 4U == 0) return options;
    options.startAngle = input.option(-400, 400);
    options.angleRange = input.option(0, 360);
    options.minScale = input.option(0.8, 1);
    options.maxScale = input.option(1, 1.25);
    options.polarity = static_cast<orx::TPartPolarity>(input.between(-1, 3));
    options.minScore = input.option(0.3, 1);
    options.maxParts = input.between(0, 5);
    options.maxOverlap = input.option(0, 1);
    options.region = {input.between(-2, 40), input.between(-2, 40), input.between(0, 80),
                      input.between(0, 80)};
    options.greediness = input.option(0, 1);
    options.minContrast = input.option(0, 40);
    options.noise = input.option(0, 5);
    return options;
}

bool equal(const orx::TFindResult& a, const orx::TFindResult& b) {
    if (a.status != b.status || a.parts.size() != b.parts.size()) return false;
    for (std::size_t i = 0; i < a.parts.size(); ++i) {
        if (a.parts[i].pose.x != b.parts[i].pose.x || a.parts[i].pose.angle != b.parts[i].pose.angle)
            return false;
        if (a.parts[i].score != b.parts[i].score || a.parts[i].covariance != b.parts[i].covariance)
            return false;
    }
    return true;
}

void checkFound(const cv::Mat& image, const orx::TPartModel& model, const orx::TFindOptions& options) {
    const orx::TFindResult found = orx::findParts(image, model, options);
    cv::setNumThreads(3);
    require(equal(found, orx::findParts(image, model, options)), "as on one thread");
    cv::setNumThreads(1);
    require(*orx::matchStatusText(found.status) != 0, "a status has a text");
    require(found.valid() || found.parts.empty(), "no parts where it is refused");
    require(static_cast<int>(found.parts.size()) <= std::max(0, options.maxParts), "so many at the most");
    for (std::size_t i = 0; i < found.parts.size(); ++i) {
        const orx::TFoundPart& part = found.parts[i];
        require(part.score >= options.minScore - 1e-9 && part.score <= 1.0001, "seen as much as asked for");
        require(i == 0 || part.score <= found.parts[i - 1].score, "the best first");
        require(part.seen.size() == model.outline().size(), "a mark for each point");
        require(part.pose.scale > 0 && part.deviationX >= 0 && part.deviationAngle >= 0,
                "a pose and how well");
        const cv::Matx22d c = orx::mappedCovariance(part.pose, part.covariance, {3, 4});
        require(c(0, 0) >= 0 && c(1, 1) >= 0, "variances of mapped points");
    }
}

void checkPoses(const orx::TPartPose& pose, cv::Point2d p) {
    if (!(pose.scale > 1e-3)) return;
    const cv::Point2d there = orx::applyPose(pose, p);
    require(cv::norm(orx::applyPose(orx::invertPose(pose), there) - p) <
                1e-6 * (1 + cv::norm(p) + cv::norm(there) / pose.scale),
            "there and back");
    const orx::TPartPose twice = orx::composePoses(pose, pose);
    require(cv::norm(orx::applyPose(twice, p) - orx::applyPose(pose, there)) <
                1e-6 * (1 + cv::norm(there) * pose.scale + cv::norm(p)),
            "one after the other");
    require(orx::applyPoseToPoints(pose, {p})[0] == there, "many as one");
}

void checkTaught(fuzz::Input& input) {
    const cv::Mat image = scene(input);
    const orx::TTeachOptions options = teachOptions(input);
    const orx::TFindOptions search = findOptions(input);
    const cv::Rect region{input.between(0, 12), input.between(0, 12), 96, 80};
    const orx::TPartModel model = orx::teachPart(image, region, options);
    const std::vector<cv::Point2d> corners{{4, 4}, {106, 4}, {106, 90}, {4, 90}};
    const orx::TPartModel inside = orx::teachPart(image, corners, options);
    require(*orx::matchStatusText(inside.report().status) != 0, "a status has a text");
    if (!model.valid()) {
        require(model.report().status != orx::msOk, "no model without a reason");
        require(orx::findParts(image, model, search).status == orx::msBadModel, "and nothing to find");
        return;
    }
    const orx::TPartModel copy = orx::partModelFromBytes(orx::partModelToBytes(model));
    require(copy.valid() && copy.outline() == model.outline(), "a model as bytes is the same model");
    orx::TFindOptions plain;
    plain.minScore = 0.5;
    const orx::TFindResult found = orx::findParts(image, model, plain);
    // Reference points outside the picture are not looked for.
    const cv::Point2d reference(model.taughtPose().x, model.taughtPose().y);
    const bool isSearched = cv::Rect2d({}, image.size()).contains(reference);
    if (isSearched && !model.report().scaleIsFree && !model.report().aShiftIsFree &&
        model.report().leastContrast > 25) {
        require(!found.parts.empty(), "a part is found where it was taught");
    }
    checkFound(image, model, search);
    cv::Mat turned;
    cv::flip(image, turned, -1);
    checkFound(turned, copy, search);
    cv::Mat drawn(image.size(), CV_8UC3, cv::Scalar::all(0));
    orx::drawFoundParts(drawn, model, found.parts);
    if (!found.parts.empty()) checkPoses(found.parts[0].pose, {5, 7});
}

void checkDrawing(fuzz::Input& input) {
    orx::TDrawingOptions options;
    options.pixelsPerUnit = input.option(0.2, 3);
    options.yIsUp = input.flag();
    options.brightSide = static_cast<orx::TBrightSide>(input.between(0, 2));
    options.levels = input.between(0, 5);
    const orx::TFindOptions search = findOptions(input);
    std::vector<orx::TOutline> drawing(static_cast<std::size_t>(input.between(0, 3)));
    for (orx::TOutline& outline : drawing) {
        for (int i = input.between(0, 6); i > 0; --i) {
            const cv::Point2d a{input.option(-40, 40), input.option(-40, 40)};
            const double b = input.option(-40, 40);
            const double c = input.option(-360, 360);
            outline.push_back(input.flag() ? orx::outlineLine(a, {b, c / 9})
                                           : orx::outlineArc(a, std::abs(b), 3 * b, c));
        }
    }
    const orx::TPartModel model = orx::teachPart(drawing, options);
    require(model.valid() == (model.report().status == orx::msOk), "a model, or a reason");
    if (model.valid() && model.outline().size() < 3000) checkFound(scene(input), model, search);
}

void checkAnything(fuzz::Input& input) {
    const cv::Mat image = input.matrix();
    const cv::Rect region{input.integer(), input.integer(), input.integer(), input.integer()};
    std::vector<cv::Point2d> corners;
    for (int i = input.between(0, 7); i > 0; --i)
        corners.push_back({input.option(0, 48), input.option(0, 48)});
    const cv::Mat mask = input.flag() ? cv::Mat(image.size(), CV_8UC1, cv::Scalar(1)) : input.matrix();
    const orx::TTeachOptions options = teachOptions(input);
    const orx::TFindOptions search = findOptions(input);
    for (const orx::TPartModel& model :
         {orx::teachPart(image, region, options), orx::teachPart(image, corners, options),
          orx::teachPart(image, mask, options)}) {
        require(model.valid() == (model.report().status == orx::msOk), "a model, or a reason");
        checkFound(image, model, search);
    }
    orx::findPartRegion(image);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkAnything, checkDrawing, checkTaught, checkTaught}, bytes, size);
    return 0;
}
