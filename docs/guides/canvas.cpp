#include "canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/imgproc.hpp>

namespace guide {
namespace {

constexpr int kShift = 4;  // fraction bits of what OpenCV draws
constexpr int kGap = 10;

double share(const Plot::Axis& axis, double value) {
    if (axis.logarithmic) return std::log(value / axis.lowest) / std::log(axis.highest / axis.lowest);
    return (value - axis.lowest) / (axis.highest - axis.lowest);
}

}  // namespace

void expectAbout(double value, double stated, double within, const std::string& what) {
    expect(std::abs(value - stated) <= within, what + ": " + formatted("%.5g", stated) +
                                                   " is stated, and here it is " + formatted("%.5g", value));
}

void write(cv::Mat& canvas, const std::string& text, cv::Point at, const cv::Scalar& colour, double size) {
    cv::putText(canvas, text, at, cv::FONT_HERSHEY_SIMPLEX, size, colour, 1, cv::LINE_AA);
}

cv::Mat inColour(const cv::Mat& picture) {
    cv::Mat colour;
    if (picture.channels() == 1)
        cv::cvtColor(picture, colour, cv::COLOR_GRAY2BGR);
    else
        colour = picture.clone();
    return colour;
}

std::string formatted(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

Enlarged::Enlarged(const cv::Mat& picture, cv::Rect area, int scale) : origin_(area.tl()), scale_(scale) {
    cv::resize(picture(area), canvas_, area.size() * scale, 0, 0, cv::INTER_NEAREST);
    canvas_ = inColour(canvas_);
}

cv::Point Enlarged::fixed(cv::Point2d p) const {
    // The centre of a pixel lies in the middle of the square that stands for it.
    const cv::Point2d q = (p - cv::Point2d(origin_) + cv::Point2d(0.5, 0.5)) * scale_;
    return {cvRound((q.x - 0.5) * (1 << kShift)), cvRound((q.y - 0.5) * (1 << kShift))};
}

void Enlarged::line(cv::Point2d from, cv::Point2d to, const cv::Scalar& colour, int thickness) {
    cv::line(canvas_, fixed(from), fixed(to), colour, thickness, cv::LINE_AA, kShift);
}

void Enlarged::dot(cv::Point2d at, double radius, const cv::Scalar& colour) {
    cv::circle(canvas_, fixed(at), cvRound(radius * (1 << kShift)), colour, cv::FILLED, cv::LINE_AA, kShift);
}

void Enlarged::arc(cv::Point2d center, double radius, double startAngle, double sweep,
                   const cv::Scalar& colour, int thickness) {
    std::vector<cv::Point> corners;
    const int steps = std::max(2, cvRound(std::abs(sweep)));
    for (int i = 0; i <= steps; ++i) {
        const double angle = (startAngle + sweep * i / steps) * CV_PI / 180;
        corners.push_back(fixed(center + radius * cv::Point2d(std::cos(angle), std::sin(angle))));
    }
    cv::polylines(canvas_, corners, false, colour, thickness, cv::LINE_AA, kShift);
}

void Enlarged::text(const std::string& words, cv::Point2d at, const cv::Scalar& colour) {
    const cv::Point place = fixed(at);
    write(canvas_, words, {place.x >> kShift, place.y >> kShift}, colour, 0.5);
}

cv::Mat captioned(const cv::Mat& picture, const std::string& caption, const cv::Scalar& colour) {
    cv::Mat panel = inColour(picture);
    cv::rectangle(panel, {{}, panel.size()}, cv::Scalar::all(190));
    cv::copyMakeBorder(panel, panel, 22, 0, 0, 0, cv::BORDER_CONSTANT, cv::Scalar::all(255));
    write(panel, caption, {2, 15}, colour);
    return panel;
}

cv::Mat sheet(const std::vector<cv::Mat>& panels, int columns) {
    cv::Mat whole;
    for (std::size_t first = 0; first < panels.size(); first += static_cast<std::size_t>(columns)) {
        cv::Mat row;
        for (std::size_t i = first; i < std::min(panels.size(), first + static_cast<std::size_t>(columns));
             ++i) {
            cv::Mat panel = inColour(panels[i]);
            if (!row.empty()) {
                const int height = std::max(row.rows, panel.rows);
                for (cv::Mat* side : {&row, &panel})
                    cv::copyMakeBorder(*side, *side, 0, height - side->rows, side == &row ? 0 : kGap, 0,
                                       cv::BORDER_CONSTANT, cv::Scalar::all(255));
                cv::hconcat(row, panel, panel);
            }
            row = panel;
        }
        if (!whole.empty()) {
            const int width = std::max(whole.cols, row.cols);
            for (cv::Mat* side : {&whole, &row})
                cv::copyMakeBorder(*side, *side, side == &whole ? 0 : kGap, 0, 0, width - side->cols,
                                   cv::BORDER_CONSTANT, cv::Scalar::all(255));
            cv::vconcat(whole, row, row);
        }
        whole = row;
    }
    return whole;
}

Plot::Plot(cv::Size size, Axis x, Axis y)
    : canvas_(size, CV_8UC3, cv::Scalar::all(255)),
      frame_(64, 24, size.width - 84, size.height - 74),
      x_(std::move(x)),
      y_(std::move(y)) {
    for (const double tick : y_.ticks) {
        const cv::Point p = at(x_.lowest, tick);
        cv::line(canvas_, p, {frame_.br().x, p.y}, cv::Scalar::all(225));
        write(canvas_, formatted("%g", tick), p + cv::Point(-50, 5));
    }
    for (const double tick : x_.ticks) {
        const cv::Point p = at(tick, y_.lowest);
        cv::line(canvas_, p, {p.x, frame_.y}, cv::Scalar::all(225));
        const std::string text = formatted("%g", tick);
        write(canvas_, text, p + cv::Point(-4 * static_cast<int>(text.size()), 18));
    }
    cv::rectangle(canvas_, frame_, kInk);
    write(canvas_, x_.name,
          {frame_.x + frame_.width / 2 - 4 * static_cast<int>(x_.name.size()), size.height - 10});
    write(canvas_, y_.name, {6, 15});
}

cv::Point Plot::at(double x, double y) const {
    return {cvRound(frame_.x + share(x_, x) * frame_.width),
            cvRound(frame_.br().y - std::clamp(share(y_, y), 0.0, 1.0) * frame_.height)};
}

void Plot::line(const std::vector<cv::Point2d>& points, const cv::Scalar& colour) {
    std::vector<cv::Point> corners;
    corners.reserve(points.size());
    for (const cv::Point2d& p : points) corners.push_back(at(p.x, p.y));
    cv::polylines(canvas_, corners, false, colour, 2, cv::LINE_AA);
}

void Plot::dots(const std::vector<cv::Point2d>& points, const cv::Scalar& colour) {
    for (const cv::Point2d& p : points) cv::circle(canvas_, at(p.x, p.y), 4, colour, cv::FILLED, cv::LINE_AA);
}

void Plot::bar(double x, double halfWidth, double y, const cv::Scalar& colour) {
    const cv::Point top = at(x - halfWidth, y);
    const cv::Point bottom = at(x + halfWidth, y_.lowest);
    if (top.y < bottom.y) cv::rectangle(canvas_, top, bottom - cv::Point(1, 1), colour, cv::FILLED);
}

void Plot::mark(double x, const cv::Scalar& colour) {
    cv::line(canvas_, at(x, y_.lowest), at(x, y_.highest), colour, 1, cv::LINE_AA);
}

void Plot::legend(const std::string& name, const cv::Scalar& colour, bool right) {
    const int left = frame_.x + (right ? frame_.width / 2 : 0) + 12;
    write(canvas_, name, {left, frame_.y + 20 + 18 * names_++}, colour);
}

}  // namespace guide
