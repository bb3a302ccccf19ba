#include "inspection/parts/part_sections.h"

#include <algorithm>
#include <cmath>

#include "inspection/report/colors.h"
#include "inspection/report/pen.h"
#include "inspection/report/table.h"
#include "orxFunctions/matching/part_drawing.h"

namespace inspection {
namespace {

// Blue, green, red.
const cv::Scalar kTruth(255, 90, 255);

std::string levelsText(const orx::TTeachReport& report) {
    std::string text;
    for (const int points : report.pointsPerLevel)
        text += (text.empty() ? "" : ", ") + std::to_string(points);
    return text + " points on " + std::to_string(report.pointsPerLevel.size()) +
           (report.pointsPerLevel.size() == 1 ? " level" : " levels of the pyramid");
}

// "123.456 ± 0.004"; "free" where the outline can't tell.
std::string valueText(double value, double deviation, int decimals) {
    const std::string number = fixedText(value, decimals);
    if (!std::isfinite(deviation)) return number + " (free)";
    return deviation > 0.0 ? number + " ± " + fixedText(deviation, decimals) : number;
}

constexpr int kAngleDecimals = 3;

// What would be rounded to a whole turn is none.
double belowTurn(double angle) {
    const double units = std::pow(10.0, kAngleDecimals);
    return std::round(angle * units) >= 360.0 * units ? angle - 360.0 : angle;
}

// The pose as it is on a canvas that shows each pixel of the picture as a square of `scale` pixels.
orx::TPartPose enlarged(orx::TPartPose pose, int scale) {
    pose.x = (pose.x + 0.5) * scale - 0.5;
    pose.y = (pose.y + 0.5) * scale - 0.5;
    pose.scale *= scale;
    return pose;
}

cv::Mat drawTaught(const cv::Mat& grey, const TaughtPart& taught) {
    // The part with a margin, which is all that matters in a large picture.
    const int margin = std::max(taught.region.width, taught.region.height) / 4;
    const cv::Rect wider(taught.region.x - margin, taught.region.y - margin, taught.region.width + 2 * margin,
                         taught.region.height + 2 * margin);
    const cv::Rect crop = wider & cv::Rect(cv::Point(), grey.size());
    if (crop.empty()) return {};
    Pen pen(grey(crop));
    const cv::Point2d corner(crop.tl());
    const auto corners = std::vector<cv::Point2d>{
        cv::Point2d(taught.region.tl()) - corner,
        cv::Point2d(taught.region.x + taught.region.width - 1, taught.region.y) - corner,
        cv::Point2d(taught.region.br()) - cv::Point2d(1, 1) - corner,
        cv::Point2d(taught.region.x, taught.region.y + taught.region.height - 1) - corner};
    pen.polyline(corners, true, kLightBlue);
    cv::Mat canvas = pen.canvas().clone();
    orx::TPartPose pose = taught.model.taughtPose();
    pose.x -= corner.x;
    pose.y -= corner.y;
    orx::drawPartModel(canvas, taught.model, enlarged(pose, canvas.cols / crop.width));
    return canvas;
}

cv::Mat drawFound(const cv::Mat& grey, const FoundParts& found) {
    Pen pen(grey);
    for (const PartError& error : found.truth)
        pen.cross({error.truth.x, error.truth.y}, pen.canvasPixels(16.0), kTruth);
    cv::Mat canvas = pen.canvas().clone();
    std::vector<orx::TFoundPart> parts = found.result.parts;
    for (orx::TFoundPart& part : parts) part.pose = enlarged(part.pose, canvas.cols / grey.cols);
    orx::drawFoundParts(canvas, found.model, parts);
    return canvas;
}

}  // namespace

std::vector<std::string> describe(const orx::TTeachReport& report) {
    std::vector<std::string> lines;
    if (report.status != orx::msOk) {
        lines.push_back(std::string("no model: ") + orx::matchStatusText(report.status));
    } else {
        lines.push_back(levelsText(report));
        lines.push_back("radius " + fixedText(report.radius, 1) + " pixels, least contrast " +
                        fixedText(report.leastContrast, 0) + " grey levels");
        if (report.symmetry == 1 && report.nearSymmetry == 1)
            lines.emplace_back("looks different at every angle");
    }
    lines.insert(lines.end(), report.warnings.begin(), report.warnings.end());
    return lines;
}

Section taughtSection(const cv::Mat& grey, const TaughtPart& taught) {
    Section section;
    section.title = "Part taught";
    section.note = taught.file.empty() ? "" : "model written to " + taught.file;
    section.rows.push_back({"", "report"});
    int number = 0;
    for (const std::string& line : describe(taught.model.report()))
        section.rows.push_back({std::to_string(++number), line});
    if (!taught.model.valid()) return section;
    section.suffix = "-model";
    section.picture = drawTaught(grey, taught);
    return section;
}

Section foundSection(const cv::Mat& grey, const FoundParts& found) {
    Section section;
    section.title = "Parts";
    if (!found.result.valid()) {
        section.note = std::string("not looked for: ") + orx::matchStatusText(found.result.status);
        return section;
    }
    section.note = std::to_string(found.result.parts.size()) + " found in " +
                   fixedText(found.milliseconds, 1) + " ms; after ± the standard uncertainty";
    section.rows.push_back({"#", "score", "x", "y", "angle", "scale", "rms", ""});
    int number = 0;
    for (const orx::TFoundPart& part : found.result.parts) {
        section.rows.push_back({std::to_string(++number), fixedText(part.score, 3),
                                valueText(part.pose.x, part.deviationX, 3),
                                valueText(part.pose.y, part.deviationY, 3),
                                valueText(belowTurn(part.pose.angle), part.deviationAngle, kAngleDecimals),
                                valueText(part.pose.scale, part.deviationScale, 5), fixedText(part.rms, 3),
                                part.reversed ? "reversed" : ""});
    }
    section.suffix = "-parts";
    section.picture = drawFound(grey, found);
    return section;
}

Section truthSection(const FoundParts& found) {
    Section section;
    section.title = "Errors against the truth (pixels, degrees)";
    section.rows.push_back({"part", "score", "true x", "true y", "true angle", "x", "y", "angle"});
    double place = 0.0;
    double angle = 0.0;
    int count = 0;
    for (const PartError& error : found.truth) {
        const bool isFound = error.part >= 0;
        const auto number = [&](double value) { return isFound ? fixedText(value, 4) : ""; };
        section.rows.push_back(
            {isFound ? std::to_string(error.part + 1) : "missed",
             isFound ? fixedText(found.result.parts[static_cast<std::size_t>(error.part)].score, 3) : "",
             fixedText(error.truth.x, 3), fixedText(error.truth.y, 3),
             fixedText(belowTurn(error.truth.angle), kAngleDecimals), number(error.x), number(error.y),
             number(error.angle)});
        if (!isFound) continue;
        place += error.x * error.x + error.y * error.y;
        angle += error.angle * error.angle;
        ++count;
    }
    const auto missed = static_cast<int>(found.truth.size()) - count;
    const auto falseFinds = static_cast<int>(found.result.parts.size()) - count;
    section.note = std::to_string(count) + " of " + std::to_string(found.truth.size()) + " found, " +
                   std::to_string(missed) + " missed, " + std::to_string(falseFinds) + " false";
    if (count > 0) {
        section.note += "; rms of x and y " + fixedText(std::sqrt(place / (2 * count)), 4) +
                        ", of the angle " + fixedText(std::sqrt(angle / count), 4);
    }
    return section;
}

}  // namespace inspection
