#include "orxFunctions/matching/part_drawing.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>
#include <string>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/teach_report.h"

namespace orx {
namespace {

using matching::OutlinePoint;

constexpr int kShift = 4;  // fractional bits of OpenCV's coordinates
// What begins farther outside than this is not drawn: longer lines would overflow OpenCV's coordinates.
constexpr double kFarOutside = 1 << 20;
// Points of the outline farther apart are not joined, pixels of the model.
constexpr double kLongestStep = 2.5;
constexpr double kCrossArm = 6;  // pixels

cv::Point fixedPoint(cv::Point2d p) {
    constexpr double kOne = 1 << kShift;
    return {cvRound(p.x * kOne), cvRound(p.y * kOne)};
}

// Draws on one picture.
class PartPainter {
  public:
    PartPainter(cv::Mat& img, const TPartColours& colours)
        : img_(img), colours_(colours), thickness_(std::clamp(colours.thickness, 1, 20)) {}

    // `seen` may be of another size, or empty: all is seen then.
    void drawOutline(const std::vector<OutlinePoint>& outline, const TPartPose& pose,
                     const std::vector<unsigned char>& seen) {
        std::vector<cv::Point2d> points;
        points.reserve(outline.size());
        for (const OutlinePoint& point : outline) points.push_back(point.position);
        points = applyPoseToPoints(pose, points);
        const cv::Scalar colours[] = {inDepth(colours_.unseen), inDepth(colours_.seen)};
        const bool tells = seen.size() == outline.size();
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const std::size_t next = nextOf(outline, i);
            line(points[i], points[next], colours[!tells || seen[i] != 0 ? 1 : 0]);
        }
    }

    void drawPose(const TPartPose& pose, double radius) {
        const cv::Scalar colour = inDepth(colours_.pose);
        const cv::Point2d place(pose.x, pose.y);
        const TPartPose turn{0, 0, pose.angle, 1};
        for (const cv::Point2d arm : {cv::Point2d(kCrossArm, 0), cv::Point2d(0, kCrossArm)}) {
            const cv::Point2d turned = applyPose(turn, arm);
            line(place - turned, place + turned, colour);
        }
        line(place, applyPose(pose, cv::Point2d(radius / 2, 0)), colour);
    }

    void drawScore(const TFoundPart& part, std::size_t number) {
        const cv::Point2d place(part.pose.x + kCrossArm, part.pose.y - kCrossArm);
        if (!isNearPicture(place)) return;
        char text[40];
        std::snprintf(text, sizeof text, "%zu: %.2f", number, part.score);
        cv::putText(img_, text, cv::Point(cvRound(place.x), cvRound(place.y)), cv::FONT_HERSHEY_SIMPLEX, 0.5,
                    inDepth(colours_.score), thickness_, cv::LINE_AA);
    }

  private:
    // The point that follows on the chain, the first one after the last of a closed chain; itself else.
    static std::size_t nextOf(const std::vector<OutlinePoint>& outline, std::size_t i) {
        const auto joins = [&](std::size_t j) {
            const cv::Point2d step = outline[j].position - outline[i].position;
            return outline[j].chain == outline[i].chain && std::hypot(step.x, step.y) <= kLongestStep;
        };
        if (i + 1 < outline.size() && outline[i + 1].chain == outline[i].chain)
            return joins(i + 1) ? i + 1 : i;
        const auto byChain = [](const OutlinePoint& point, int chain) { return point.chain < chain; };
        const auto first = std::lower_bound(outline.begin(), outline.end(), outline[i].chain, byChain);
        const auto j = static_cast<std::size_t>(first - outline.begin());
        return joins(j) ? j : i;
    }

    // False for not-a-number, too.
    bool isNearPicture(cv::Point2d p) const {
        return isBetween(p.x, -kFarOutside, img_.cols + kFarOutside) &&
               isBetween(p.y, -kFarOutside, img_.rows + kFarOutside);
    }

    void line(cv::Point2d from, cv::Point2d to, const cv::Scalar& colour) {
        if (!isNearPicture(from) || !isNearPicture(to)) return;
        cv::line(img_, fixedPoint(from), fixedPoint(to), colour, thickness_, cv::LINE_AA, kShift);
    }

    cv::Scalar inDepth(const cv::Scalar& bgr) const {
        const double unit = fullLevel(img_) / 255;
        const double grey = 0.114 * bgr[0] + 0.587 * bgr[1] + 0.299 * bgr[2];
        if (lightChannels(img_) == 1) return {unit * grey, unit * 255};
        return {unit * bgr[0], unit * bgr[1], unit * bgr[2], unit * 255};
    }

    cv::Mat& img_;
    const TPartColours& colours_;
    int thickness_;
};

bool isDrawable(const cv::Mat& img, const TPartModel& model, const char* function) {
    return takesPicture(img, function) && matching::takesModel(model, function);
}

}  // namespace

void drawPartModel(cv::Mat& img, const TPartModel& model, const TPartPose& pose,
                   const TPartColours& colours) {
    if (!isDrawable(img, model, "drawPartModel")) return;
    PartPainter painter(img, colours);
    painter.drawOutline(model.data()->outline, pose, {});
    painter.drawPose(pose, model.report().radius);
}

void drawFoundParts(cv::Mat& img, const TPartModel& model, const std::vector<TFoundPart>& parts,
                    const TPartColours& colours) {
    if (!isDrawable(img, model, "drawFoundParts")) return;
    PartPainter painter(img, colours);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        painter.drawOutline(model.data()->outline, parts[i].pose, parts[i].seen);
        painter.drawPose(parts[i].pose, model.report().radius);
        painter.drawScore(parts[i], i + 1);
    }
}

}  // namespace orx
