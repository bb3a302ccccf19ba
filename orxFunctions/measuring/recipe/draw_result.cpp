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

Ink colourOf(TVerdict verdict) {
    switch (verdict) {
        case vdPass:
            return Ink::kGreen;
        case vdFail:
            return Ink::kRed;
        case vdNoLimits:
            return Ink::kBlue;
        default:
            return Ink::kYellow;
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

void drawCross(Canvas& picture, cv::Point2d at, Ink colour, const Pen& pen) {
    const cv::Point2d across(5.0 * pen.scale, 0.0);
    const cv::Point2d down(0.0, 5.0 * pen.scale);
    picture.polyline({at - across, at + across}, colour, pen.thickness);
    picture.polyline({at - down, at + down}, colour, pen.thickness);
}

void drawText(Canvas& picture, const std::string& text, cv::Point2d at, Ink colour, const Pen& pen) {
    const std::string shown = drawable(text);
    const cv::Point2d inside(std::clamp(at.x, 0.0, std::max(0.0, picture.size().width - 1.0)),
                             std::clamp(at.y, 0.0, std::max(0.0, picture.size().height - 1.0)));
    const double size = 0.5 * pen.scale;
    const int font = cv::FONT_HERSHEY_SIMPLEX;
    picture.text(shown, cv::Point(inside), font, size, Ink::kBlack, pen.thickness + 2);
    picture.text(shown, cv::Point(inside), font, size, colour, pen.thickness);
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

void drawFeature(Canvas& picture, const TRecipeFeature& feature, TVerdict verdict, bool points,
                 const Pen& pen) {
    if (!feature.measured) {
        picture.polyline(feature.nominal, Ink::kYellow, pen.thickness);
        if (!feature.nominal.empty())
            drawText(picture, feature.name + "?", feature.nominal.front(), Ink::kYellow, pen);
        return;
    }
    const Ink colour = colourOf(verdict);
    if (feature.outline.size() == 1) drawCross(picture, feature.outline.front(), colour, pen);
    picture.polyline(feature.outline, colour, pen.thickness);
    if (points) {
        for (const cv::Point2d& p : feature.points) picture.polyline({p, p}, Ink::kGrey, pen.thickness);
    }
    if (!feature.outline.empty())
        drawText(picture, feature.name, namePlace(feature) + cv::Point2d(4, -4), colour, pen);
}

void drawPose(Canvas& picture, const TPartPose& pose, const Pen& pen) {
    const cv::Point2d origin(pose.x, pose.y);
    const double turn = radians(pose.angle);
    const cv::Point2d along = 40.0 * pen.scale * cv::Point2d(std::cos(turn), std::sin(turn));
    picture.polyline({origin, origin + along}, Ink::kBlue, 2 * pen.thickness);
    picture.polyline({origin, origin + cv::Point2d(-along.y, along.x)}, Ink::kBlue, pen.thickness);
}

// Those that did not pass first, as far as there is room.
void drawValues(Canvas& picture, const TRecipeResult& result, const Pen& pen) {
    const double step = 20.0 * pen.scale;
    cv::Point2d at(8.0 * pen.scale, step);
    drawText(picture, result.recipe + ": " + verdictText(result.verdict), at, colourOf(result.verdict), pen);
    for (const bool good : {false, true}) {
        for (const TRecipeValue& value : result.values) {
            const bool isGood = value.verdict == vdPass || value.verdict == vdNoLimits;
            if (isGood != good) continue;
            at.y += step;
            if (at.y > picture.size().height - step / 2.0) return;
            const std::string told = value.measured ? measuredText(value) + "  " : "";
            drawText(picture, value.name + ": " + told + verdictText(value.verdict), at,
                     colourOf(value.verdict), pen);
        }
    }
}

}  // namespace

cv::Mat inBytes(const cv::Mat& img) {
    if (img.depth() == CV_8U) return img;
    cv::Mat bytes;
    img.convertTo(bytes, CV_8U, 1.0 / levelUnit(img));
    return bytes;
}

cv::Mat inColour(const cv::Mat& img) {
    const cv::Mat bytes = inBytes(img);
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

void drawShapes(Canvas& picture, const RecipeData& recipe, const TRecipeResult& result, double broader) {
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
    Canvas picture(inColour(img));
    drawShapes(picture, *recipe.data(), result);
    if (recipe.data()->draw.values) drawValues(picture, result, Pen(picture.size()));
    return picture.pixels();
}

}  // namespace orx
