#include "orxFunctions/measuring/recipe/draw_proposal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>

#include "orxFunctions/analysis/grey_input_internal.h"

namespace orx::recipes {
namespace {

constexpr double kLeastSide = 560.0;  // pixels of the picture's shorter side that give numbers room
constexpr int kMostEnlarged = 4;
constexpr double kDimmed = 0.7;  // of the picture's levels, so that colours stand out
constexpr int kShift = 4;        // binary digits of a pixel

cv::Scalar colourOf(TFeatureKind kind) {
    switch (kind) {
        case fkLine:
            return {255, 190, 60};
        case fkCircle:
            return {90, 220, 90};
        case fkArc:
            return {60, 200, 255};
        default:
            return {230, 120, 230};
    }
}

cv::Point fine(cv::Point2d p) { return {cvRound(p.x * (1 << kShift)), cvRound(p.y * (1 << kShift))}; }

class NumberedPicture {
  public:
    explicit NumberedPicture(const cv::Mat& img) {
        const double side = std::min(img.cols, img.rows);
        scale_ = std::clamp(static_cast<int>(std::ceil(kLeastSide / side)), 1, kMostEnlarged);
        pen_ = std::clamp(side * scale_ / 900.0, 0.7, 3.0);
        thickness_ = std::max(1, cvRound(1.5 * pen_));
        cv::Mat bytes;
        greyOf(img).convertTo(bytes, CV_8U, kDimmed / levelUnit(img));
        cv::resize(bytes, bytes, img.size() * scale_, 0, 0, scale_ > 1 ? cv::INTER_CUBIC : cv::INTER_NEAREST);
        cv::cvtColor(bytes, picture_, cv::COLOR_GRAY2BGR);
        outlines_ = cv::Mat(picture_.size(), CV_8UC1, cv::Scalar(0));
    }

    void drawOutline(const TRecipeFeature& feature) {
        for (std::size_t i = 1; i < feature.outline.size(); ++i) {
            const cv::Point from = fine(placed(feature.outline[i - 1]));
            const cv::Point to = fine(placed(feature.outline[i]));
            cv::line(picture_, from, to, colourOf(feature.kind), thickness_, cv::LINE_AA, kShift);
            cv::line(outlines_, from, to, cv::Scalar(255), thickness_ + 2, cv::LINE_8, kShift);
        }
    }

    void drawNumber(const TRecipeFeature& feature, int number) {
        if (feature.outline.size() < 2) return;
        const std::string text = std::to_string(number);
        const double size = 0.55 * pen_;
        int base = 0;
        const cv::Size letters = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, size, thickness_, &base);
        const int pad = cvRound(4.0 * pen_);
        const cv::Size box(letters.width + 2 * pad, letters.height + 2 * pad);
        const Label label = placeFor(feature, box);
        taken_.push_back(label.box);
        const cv::Scalar colour = colourOf(feature.kind);
        const cv::Point2d middle = (cv::Point2d(label.box.tl()) + cv::Point2d(label.box.br())) / 2.0;
        cv::line(picture_, fine(label.anchor), fine(middle), colour, 1, cv::LINE_AA, kShift);
        cv::circle(picture_, fine(label.anchor), cvRound(2.0 * pen_ * (1 << kShift)), colour, cv::FILLED,
                   cv::LINE_AA, kShift);
        cv::rectangle(picture_, label.box, cv::Scalar(30, 30, 30), cv::FILLED);
        cv::rectangle(picture_, label.box, colour, 1);
        cv::putText(picture_, text, label.box.tl() + cv::Point(pad, pad + letters.height),
                    cv::FONT_HERSHEY_SIMPLEX, size, cv::Scalar(255, 255, 255), thickness_, cv::LINE_AA);
    }

    cv::Mat picture() const { return picture_; }

  private:
    struct Label {
        cv::Point2d anchor;  // on the outline
        cv::Rect box;
    };

    cv::Point2d placed(cv::Point2d p) const {
        const double half = (scale_ - 1) / 2.0;
        return {std::clamp(p.x * scale_ + half, -3e4, 3e4), std::clamp(p.y * scale_ + half, -3e4, 3e4)};
    }

    // Near the outline where that hides nothing; else where it hides least.
    Label placeFor(const TRecipeFeature& feature, cv::Size box) const {
        constexpr std::array<double, 9> kPlaces{0.5, 0.25, 0.75, 0.125, 0.375, 0.625, 0.875, 0.05, 0.95};
        Label best;
        double leastCost = 1e300;
        for (const double way : {0.75, 1.4, 2.2, 3.2}) {
            for (const double place : kPlaces) {
                for (const double sense : {1.0, -1.0}) {
                    const Label label = labelAt(feature, box, place, sense * way);
                    const double cost = costOf(label.box) + way;
                    if (cost >= leastCost) continue;
                    leastCost = cost;
                    best = label;
                }
            }
        }
        return best;
    }

    Label labelAt(const TRecipeFeature& feature, cv::Size box, double place, double way) const {
        const auto last = feature.outline.size() - 1;
        const auto i = std::min(last - 1, static_cast<std::size_t>(place * static_cast<double>(last)));
        const cv::Point2d from = placed(feature.outline[i]);
        const cv::Point2d to = placed(feature.outline[i + 1]);
        const cv::Point2d along = (to - from) / std::max(1e-9, cv::norm(to - from));
        const cv::Point2d across(-along.y, along.x);
        Label label;
        label.anchor = last == 1 ? from + place * (to - from) : from;
        const double reach = way * std::hypot(box.width, box.height);
        const cv::Point2d corner =
            label.anchor + reach * across - cv::Point2d(box.width / 2.0, box.height / 2.0);
        label.box = {cv::Point(cvRound(corner.x), cvRound(corner.y)), box};
        return label;
    }

    double costOf(const cv::Rect& box) const {
        constexpr double kOfOutside = 1000.0;
        constexpr double kOfLabels = 100.0;
        constexpr double kOfOutlines = 20.0;
        const cv::Rect whole({}, picture_.size());
        const double area = box.area();
        const cv::Rect inside = box & whole;
        double cost = kOfOutside * (area - inside.area()) / area;
        for (const cv::Rect& other : taken_) cost += kOfLabels * ((box & other).area() > 0 ? 1.0 : 0.0);
        if (inside.area() > 0 && cv::countNonZero(outlines_(inside)) > 0) cost += kOfOutlines;
        return cost;
    }

    cv::Mat picture_;
    cv::Mat outlines_;
    std::vector<cv::Rect> taken_;
    int scale_ = 1;
    double pen_ = 1.0;
    int thickness_ = 1;
};

}  // namespace

cv::Mat drawNumbered(const cv::Mat& img, const std::vector<TRecipeFeature>& features) {
    NumberedPicture picture(img);
    for (const TRecipeFeature& feature : features) picture.drawOutline(feature);
    int number = 0;
    for (const TRecipeFeature& feature : features) picture.drawNumber(feature, ++number);
    return picture.picture();
}

}  // namespace orx::recipes
