#include "orxFunctions/measuring/recipe_result.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/foundation/text_stream_internal.h"
#include "orxFunctions/measuring/recipe/draw.h"

namespace orx {
namespace recipes {
namespace {

constexpr int kSmall = 900;  // pixels of the larger side
constexpr int kMostEnlarged = 4;
constexpr double kEnlargedPen = 1.5;
constexpr double kDesignHeight = 960.0;  // of a sheet, in which the sizes below are given
constexpr double kTableWidth = 620.0;
constexpr double kRowHeight = 70.0;
constexpr double kMargin = 28.0;
constexpr double kBarWidth = 170.0;
constexpr double kTolerancePart = 0.6;  // of the bar

Ink inkOf(TVerdict verdict) {
    switch (verdict) {
        case vdPass:
            return Ink::kPass;
        case vdFail:
            return Ink::kFail;
        case vdNoLimits:
            return Ink::kSoft;
        default:
            return Ink::kDoubt;
    }
}

// Letters, lines and dots in the units of the design.
class Sheet {
  public:
    Sheet(Canvas table, double scale) : table_(std::move(table)), scale_(scale) {}

    double height() const { return table_.size().height / scale_; }

    double widthOf(const std::string& text, double size) const {
        int baseline = 0;
        return cv::getTextSize(drawable(text), kFont, size * scale_, strokes(size), &baseline).width / scale_;
    }
    void text(const std::string& text, cv::Point2d at, double size, Ink ink) {
        table_.text(drawable(text), pixel(at), kFont, size * scale_, ink, strokes(size));
    }
    void textBefore(const std::string& words, cv::Point2d end, double size, Ink ink) {
        text(words, {end.x - widthOf(words, size), end.y}, size, ink);
    }
    void bar(cv::Point2d from, cv::Point2d to, Ink ink) { table_.bar(pixel(from), pixel(to), ink); }
    void dot(cv::Point2d at, double radius, Ink ink) {
        table_.dot(pixel(at), std::max(1, cvRound(radius * scale_)), ink);
    }

  private:
    static constexpr int kFont = cv::FONT_HERSHEY_DUPLEX;

    cv::Point pixel(cv::Point2d p) const { return {cvRound(p.x * scale_), cvRound(p.y * scale_)}; }
    int strokes(double size) const { return std::max(1, cvRound(1.4 * size * scale_)); }

    Canvas table_;
    double scale_;
};

std::string shortened(const Sheet& sheet, std::string text, double size, double width) {
    if (sheet.widthOf(text, size) <= width) return text;
    while (!text.empty() && sheet.widthOf(text + "...", size) > width) text.pop_back();
    return text + "...";
}

// Six significant digits.
std::string shortText(double value) {
    TextStream text;
    text << value;
    return text.str();
}

// Where the value lies between its limits; a dot at the bar's end for one that lies further out.
void drawBar(Sheet& sheet, const TRecipeValue& value, cv::Point2d from) {
    const double width = value.tolerance.upper - value.tolerance.lower;
    if (!value.measured || !std::isfinite(width) || !(width > 0.0)) return;
    const double middle = from.x + 0.5 * kBarWidth;
    const double half = 0.5 * kTolerancePart * kBarWidth;
    sheet.bar({from.x, from.y - 1}, {from.x + kBarWidth, from.y + 1}, Ink::kTrack);
    sheet.bar({middle - half, from.y - 5}, {middle + half, from.y + 5}, Ink::kTrack);
    for (const bool upper : {false, true}) {
        const double x = upper ? middle + half : middle - half;
        sheet.bar({x - 1, from.y - 9}, {x + 1, from.y + 9}, Ink::kSoft);
        const std::string limit = shortText(upper ? value.tolerance.upper : value.tolerance.lower);
        sheet.text(limit, {x - 0.5 * sheet.widthOf(limit, 0.46), from.y + 22}, 0.46, Ink::kSoft);
    }
    const double share = (value.value - value.tolerance.lower) / width - 0.5;
    const double at = std::clamp(2.0 * half * share, -0.5 * kBarWidth, 0.5 * kBarWidth);
    sheet.dot({middle + at, from.y}, 7.5, inkOf(value.verdict));
}

void drawRow(Sheet& sheet, const TRecipeValue& value, double top) {
    const double right = kTableWidth - kMargin;
    const Ink ink = inkOf(value.verdict);
    const std::string verdict = verdictText(value.verdict);
    sheet.textBefore(verdict, {right, top + 23}, 0.72, ink);
    const double room = right - kMargin - sheet.widthOf(verdict, 0.72) - 20;
    sheet.text(shortened(sheet, value.name, 0.72, room), {kMargin, top + 24}, 0.72, Ink::kText);
    const double beside = value.measured ? kBarWidth + 20 : 0.0;
    const std::string told = shortened(sheet, measuredText(value), 0.66, right - kMargin - beside);
    sheet.text(told, {kMargin, top + 51}, 0.66, value.verdict == vdFail ? ink : Ink::kSoft);
    drawBar(sheet, value, {right - kBarWidth, top + 42});
    sheet.bar({kMargin, top + kRowHeight - 3}, {right, top + kRowHeight - 2}, Ink::kTrack);
}

// Those that did not pass first.
std::vector<const TRecipeValue*> inOrder(const TRecipeResult& result) {
    std::vector<const TRecipeValue*> values;
    for (const TRecipeValue& value : result.values) values.push_back(&value);
    std::stable_partition(values.begin(), values.end(), [](const TRecipeValue* value) {
        return value->verdict != vdPass && value->verdict != vdNoLimits;
    });
    return values;
}

void drawTable(Sheet& sheet, const TRecipeResult& result) {
    const double right = kTableWidth - kMargin;
    const std::string verdict = verdictText(result.verdict);
    sheet.textBefore(verdict, {right, 62}, 1.3, inkOf(result.verdict));
    const double room = right - kMargin - sheet.widthOf(verdict, 1.3) - 20;
    sheet.text(shortened(sheet, result.recipe, 1.3, room), {kMargin, 62}, 1.3, Ink::kText);
    sheet.bar({kMargin, 84}, {right, 87}, inkOf(result.verdict));
    double top = 98;
    if (!result.problem.empty()) {
        const std::string problem = shortened(sheet, result.problem, 0.66, right - kMargin);
        sheet.text(problem, {kMargin, top + 22}, 0.66, Ink::kDoubt);
        top += 40;
    }
    const std::vector<const TRecipeValue*> values = inOrder(result);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::size_t left = values.size() - i;
        const bool isLast = top + 2 * kRowHeight > sheet.height();
        if (top + kRowHeight > sheet.height() || (isLast && left > 1)) {
            sheet.text("and " + std::to_string(left) + " more", {kMargin, top + 24}, 0.66, Ink::kSoft);
            return;
        }
        drawRow(sheet, *values[i], top);
        top += kRowHeight;
    }
}

int enlargement(cv::Size size) {
    const int side = std::max(size.width, size.height);
    return std::clamp((kSmall + side - 1) / side, 1, kMostEnlarged);
}

// Pixels of the enlarged picture, whose centres lie between those of the small one.
TRecipeResult enlarged(TRecipeResult result, int factor) {
    const auto grow = [factor](cv::Point2d p) {
        return factor * (p + cv::Point2d(0.5, 0.5)) - cv::Point2d(0.5, 0.5);
    };
    for (TRecipeFeature& feature : result.features) {
        for (std::vector<cv::Point2d>* points : {&feature.nominal, &feature.outline, &feature.points})
            std::transform(points->begin(), points->end(), points->begin(), grow);
    }
    const cv::Point2d origin = grow({result.pose.pose.x, result.pose.pose.y});
    result.pose.pose.x = origin.x;
    result.pose.pose.y = origin.y;
    return result;
}

// On a canvas of the picture's kind. Pixels are enlarged, not smoothed: an outline lies over what was
// measured, and rows that repeat make small files.
cv::Mat drawSheet(const cv::Mat& picture, const TRecipe& recipe, const TRecipeResult& result) {
    const int factor = enlargement(picture.size());
    const cv::Size size = picture.size() * factor;
    const double scale = std::max(0.4, size.height / kDesignHeight);
    const int table = recipe.data()->draw.values ? cvRound(kTableWidth * scale) : 0;
    Canvas all(cv::Mat(size.height, size.width + table, picture.type()));
    Canvas left = all.columns(0, size.width);
    cv::resize(picture, left.pixels(), size, 0, 0, cv::INTER_NEAREST);
    drawShapes(left, *recipe.data(), enlarged(result, factor), factor > 1 ? kEnlargedPen : 1.0);
    if (table == 0) return all.pixels();
    Canvas right = all.columns(size.width, size.width + table);
    right.bar({0, 0}, {table, size.height}, Ink::kPaper);
    Sheet sheet(std::move(right), scale);
    drawTable(sheet, result);
    return all.pixels();
}

}  // namespace
}  // namespace recipes

cv::Mat drawRecipeSheet(const cv::Mat& img, const TRecipe& recipe, const TRecipeResult& result) {
    using namespace recipes;
    if (!takesPicture(img, "drawRecipeSheet")) return {};
    return drawSheet(inColour(img), recipe, result);
}

cv::Mat drawIndexedRecipeSheet(const cv::Mat& img, const TRecipe& recipe, const TRecipeResult& result,
                               std::vector<cv::Vec3b>& palette) {
    using namespace recipes;
    constexpr const char* kFunction = "drawIndexedRecipeSheet";
    palette.clear();
    if (!takesPicture(img, kFunction)) return {};
    if (img.channels() != 1) {
        refuse(rcImageType, kFunction, "the image has %d channels; one is taken", img.channels());
        return {};
    }
    palette.assign(Canvas::palette().begin(), Canvas::palette().end());
    return drawSheet(Canvas::indicesOf(inBytes(img)), recipe, result);
}

}  // namespace orx
