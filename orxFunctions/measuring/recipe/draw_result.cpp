#include "orxFunctions/measuring/recipe_result.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/measuring/recipe/draw.h"

namespace orx {
namespace recipes {
namespace {

const cv::Scalar kGreen(60, 200, 60);
const cv::Scalar kRed(50, 50, 235);
const cv::Scalar kYellow(0, 210, 245);
const cv::Scalar kBlue(235, 160, 40);
const cv::Scalar kGrey(150, 150, 150);
const cv::Scalar kBlack(0, 0, 0);

cv::Scalar colourOf(TVerdict verdict) {
    switch (verdict) {
        case vdPass:
            return kGreen;
        case vdFail:
            return kRed;
        case vdNoLimits:
            return kBlue;
        default:
            return kYellow;
    }
}

// Sizes that suit the picture.
struct Pen {
    explicit Pen(cv::Size size, double broader = 1.0)
        : scale(broader * std::clamp(std::min(size.width, size.height) / 900.0, 0.4, 3.0)),
          thickness(std::max(1, static_cast<int>(std::lround(1.4 * scale)))) {}
    double scale;
    int thickness;
};

constexpr int kShift = 4;  // binary digits of a pixel

cv::Point fine(cv::Point2d p) {
    const auto part = [](double x) {
        return static_cast<int>(std::lround(std::clamp(x, -30000.0, 30000.0) * (1 << kShift)));
    };
    return {part(p.x), part(p.y)};
}

void drawPolyline(cv::Mat& picture, const std::vector<cv::Point2d>& points, const cv::Scalar& colour,
                  int thickness) {
    for (std::size_t i = 1; i < points.size(); ++i) {
        cv::line(picture, fine(points[i - 1]), fine(points[i]), colour, thickness, cv::LINE_AA, kShift);
    }
}

void drawCross(cv::Mat& picture, cv::Point2d at, const cv::Scalar& colour, const Pen& pen) {
    const cv::Point2d across(5.0 * pen.scale, 0.0);
    const cv::Point2d down(0.0, 5.0 * pen.scale);
    drawPolyline(picture, {at - across, at + across}, colour, pen.thickness);
    drawPolyline(picture, {at - down, at + down}, colour, pen.thickness);
}

void drawText(cv::Mat& picture, const std::string& text, cv::Point2d at, const cv::Scalar& colour,
              const Pen& pen) {
    const std::string shown = drawable(text);
    const cv::Point2d inside(std::clamp(at.x, 0.0, std::max(0.0, picture.cols - 1.0)),
                             std::clamp(at.y, 0.0, std::max(0.0, picture.rows - 1.0)));
    const double size = 0.5 * pen.scale;
    cv::putText(picture, shown, cv::Point(inside), cv::FONT_HERSHEY_SIMPLEX, size, kBlack, pen.thickness + 2,
                cv::LINE_AA);
    cv::putText(picture, shown, cv::Point(inside), cv::FONT_HERSHEY_SIMPLEX, size, colour, pen.thickness,
                cv::LINE_AA);
}

// The worst verdict of the values that are told of a feature, of those it is part of included.
std::vector<TVerdict> verdictsOfFeatures(const RecipeData& recipe, const TRecipeResult& result) {
    std::vector<TVerdict> verdicts(recipe.features.size(), vdNoLimits);
    for (std::size_t i = 0; i < recipe.values.size() && i < result.values.size(); ++i) {
        for (const int f : recipe.values[i].of) {
            TVerdict& verdict = verdicts[static_cast<std::size_t>(f)];
            verdict = worseVerdict(verdict, result.values[i].verdict);
        }
    }
    for (auto made = recipe.order.rbegin(); made != recipe.order.rend(); ++made) {
        for (const int part : recipe.features[static_cast<std::size_t>(*made)].of) {
            TVerdict& verdict = verdicts[static_cast<std::size_t>(part)];
            verdict = worseVerdict(verdict, verdicts[static_cast<std::size_t>(*made)]);
        }
    }
    return verdicts;
}

// Beside round features, in the middle of the others: ends are where they meet.
cv::Point2d namePlace(const TRecipeFeature& feature) {
    const std::vector<cv::Point2d>& outline = feature.outline;
    if (outline.size() == 2) return 0.5 * (outline.front() + outline.back());
    const bool isRound = feature.kind == fkCircle || feature.kind == fkEllipse;
    return outline[outline.size() / (isRound ? 8 : 2)];
}

void drawFeature(cv::Mat& picture, const TRecipeFeature& feature, TVerdict verdict, bool points,
                 const Pen& pen) {
    if (!feature.measured) {
        drawPolyline(picture, feature.nominal, kYellow, pen.thickness);
        if (!feature.nominal.empty())
            drawText(picture, feature.name + "?", feature.nominal.front(), kYellow, pen);
        return;
    }
    const cv::Scalar colour = colourOf(verdict);
    if (feature.outline.size() == 1) drawCross(picture, feature.outline.front(), colour, pen);
    drawPolyline(picture, feature.outline, colour, pen.thickness);
    if (points) {
        for (const cv::Point2d& p : feature.points) drawPolyline(picture, {p, p}, kGrey, pen.thickness);
    }
    if (!feature.outline.empty())
        drawText(picture, feature.name, namePlace(feature) + cv::Point2d(4, -4), colour, pen);
}

void drawPose(cv::Mat& picture, const TPartPose& pose, const Pen& pen) {
    const cv::Point2d origin(pose.x, pose.y);
    const double turn = radians(pose.angle);
    const cv::Point2d along = 40.0 * pen.scale * cv::Point2d(std::cos(turn), std::sin(turn));
    drawPolyline(picture, {origin, origin + along}, kBlue, 2 * pen.thickness);
    drawPolyline(picture, {origin, origin + cv::Point2d(-along.y, along.x)}, kBlue, pen.thickness);
}

// Those that did not pass first, as far as there is room.
void drawValues(cv::Mat& picture, const TRecipeResult& result, const Pen& pen) {
    const double step = 20.0 * pen.scale;
    cv::Point2d at(8.0 * pen.scale, step);
    drawText(picture, result.recipe + ": " + verdictText(result.verdict), at, colourOf(result.verdict), pen);
    for (const bool good : {false, true}) {
        for (const TRecipeValue& value : result.values) {
            const bool isGood = value.verdict == vdPass || value.verdict == vdNoLimits;
            if (isGood != good) continue;
            at.y += step;
            if (at.y > picture.rows - step / 2.0) return;
            const std::string told = value.measured ? measuredText(value) + "  " : "";
            drawText(picture, value.name + ": " + told + verdictText(value.verdict), at,
                     colourOf(value.verdict), pen);
        }
    }
}

}  // namespace

cv::Mat inColour(const cv::Mat& img) {
    cv::Mat bytes;
    img.convertTo(bytes, CV_8U, 1.0 / levelUnit(img));
    cv::Mat colour;
    if (bytes.channels() == 3) return bytes.data == img.data ? bytes.clone() : bytes;
    if (bytes.channels() == 4) {
        cv::cvtColor(bytes, colour, cv::COLOR_BGRA2BGR);
        return colour;
    }
    cv::Mat grey;
    cv::extractChannel(bytes, grey, 0);
    cv::cvtColor(grey, colour, cv::COLOR_GRAY2BGR);
    return colour;
}

std::string drawable(const std::string& text) {
    std::string shown = text;
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || static_cast<unsigned char>(c) > 126; },
        '?');
    return shown;
}

void drawShapes(cv::Mat& picture, const RecipeData& recipe, const TRecipeResult& result, double broader) {
    const Pen pen(picture.size(), broader);
    const std::vector<TVerdict> verdicts = verdictsOfFeatures(recipe, result);
    if (recipe.draw.features) {
        for (std::size_t i = 0; i < result.features.size() && i < verdicts.size(); ++i) {
            drawFeature(picture, result.features[i], verdicts[i], recipe.draw.points, pen);
        }
    }
    const bool hasAxes = result.pose.found && recipe.place.kind != PlaceKind::kPicture;
    if (recipe.draw.pose && hasAxes) drawPose(picture, result.pose.pose, pen);
}

}  // namespace recipes

cv::Mat drawRecipeResult(const cv::Mat& img, const TRecipe& recipe, const TRecipeResult& result) {
    using namespace recipes;
    if (!takesPicture(img, "drawRecipeResult")) return {};
    cv::Mat picture = inColour(img);
    drawShapes(picture, *recipe.data(), result);
    if (recipe.data()->draw.values) drawValues(picture, result, Pen(picture.size()));
    return picture;
}

}  // namespace orx
