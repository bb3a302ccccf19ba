#include "calibration/residual_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>

namespace calibration {
namespace {

constexpr double kWidth = 1200;
constexpr double kTypicalLength = 14;  // of the vectors, pixels of the drawing
constexpr int kFooter = 46;
constexpr int kShift = 4;  // of coordinates for drawing between pixels

const cv::Scalar kUncovered(200, 200, 204);
const cv::Scalar kCovered(250, 250, 250);
const cv::Scalar kPlaneColour(0, 120, 240);
const cv::Scalar kInk(40, 40, 40);

cv::Scalar colourOf(std::size_t view) {
    const cv::Scalar colours[] = {{160, 90, 20}, {60, 140, 30}, {150, 40, 130},
                                  {40, 40, 190}, {150, 140, 0}, {90, 90, 90}};
    return colours[view % 6];
}

cv::Point fixed(cv::Point2d p) {
    return {static_cast<int>(std::lround(p.x * (1 << kShift))),
            static_cast<int>(std::lround(p.y * (1 << kShift)))};
}

// 1, 2 or 5 times a power of ten, not above a value.
double roundDown(double value) {
    const double power = std::pow(10.0, std::floor(std::log10(value)));
    const double digit = value / power;
    return power * (digit >= 5 ? 5 : digit >= 2 ? 2 : 1);
}

double medianLength(const std::vector<std::vector<cv::Point2d>>& residuals) {
    std::vector<double> lengths;
    for (const auto& view : residuals) {
        for (const cv::Point2d& r : view) lengths.push_back(cv::norm(r));
    }
    if (lengths.empty()) return 1;
    std::nth_element(lengths.begin(), lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2),
                     lengths.end());
    return std::max(1e-6, lengths[lengths.size() / 2]);
}

void shadeCovered(const std::vector<orx::TTargetView>& views, double scale, cv::Mat& canvas) {
    for (const orx::TTargetView& view : views) {
        if (!view.found) continue;
        std::vector<cv::Point> points;
        std::vector<cv::Point> hull;
        for (const cv::Point2d& p : view.pixels) points.push_back(fixed(p * scale));
        cv::convexHull(points, hull);
        cv::fillConvexPoly(canvas, hull, kCovered, cv::LINE_AA, kShift);
    }
}

void drawScale(double enlargement, double rms, cv::Mat& canvas) {
    const double length = roundDown(0.2 * kWidth / enlargement);
    const int y = canvas.rows - kFooter / 2;
    cv::rectangle(canvas, cv::Rect(0, canvas.rows - kFooter, canvas.cols, kFooter), cv::Scalar::all(255),
                  cv::FILLED);
    cv::line(canvas, {20, y}, {20 + static_cast<int>(std::lround(length * enlargement)), y}, kInk, 2,
             cv::LINE_AA);
    char text[160];
    std::snprintf(text, sizeof text, "= %g px; root mean square %.3f px; plane's view in orange", length,
                  rms);
    cv::putText(canvas, text, {32 + static_cast<int>(std::lround(length * enlargement)), y + 6},
                cv::FONT_HERSHEY_SIMPLEX, 0.6, kInk, 1, cv::LINE_AA);
}

}  // namespace

cv::Mat drawResiduals(const orx::TPlaneCalibration& calibration, const std::vector<orx::TTargetView>& views,
                      std::size_t planeView) {
    const double scale = kWidth / calibration.imageSize.width;
    const int height = static_cast<int>(std::lround(calibration.imageSize.height * scale));
    cv::Mat canvas(height + kFooter, static_cast<int>(kWidth), CV_8UC3, kUncovered);
    shadeCovered(views, scale, canvas);
    std::vector<std::vector<cv::Point2d>> residuals;
    for (const orx::TTargetView& view : views) residuals.push_back(orx::planeResiduals(calibration, view));
    const double enlargement = roundDown(kTypicalLength / medianLength(residuals));
    for (std::size_t v = 0; v < views.size(); ++v) {
        const cv::Scalar colour = v == planeView ? kPlaneColour : colourOf(v);
        for (std::size_t i = 0; i < residuals[v].size(); ++i) {
            const cv::Point2d from = views[v].pixels[i] * scale;
            const cv::Point2d to = from + residuals[v][i] * enlargement;
            cv::line(canvas, fixed(from), fixed(to), colour, v == planeView ? 2 : 1, cv::LINE_AA, kShift);
            cv::circle(canvas, fixed(from), 2 << kShift, colour, cv::FILLED, cv::LINE_AA, kShift);
        }
    }
    drawScale(enlargement, calibration.rms, canvas);
    return canvas;
}

}  // namespace calibration
