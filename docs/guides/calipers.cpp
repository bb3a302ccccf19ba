// Guide "calipers": widths, pitches and circles where the place is roughly known.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

struct Width {
    double value = 0;
    bool valid = false;
};

// [width]
// The width of something bright that the segment crosses.
Width widthAlong(const cv::Mat& grey, cv::Point2d from, cv::Point2d to, double averaged) {
    orx::TCaliperOptions options;
    options.minContrast = 60;  // half of what the part has
    options.polarity = orx::epDarkToBright;
    options.selection = orx::esFirst;
    const auto left = orx::getContrastEdges(grey, from, to, averaged, options);
    options.polarity = orx::epBrightToDark;
    options.selection = orx::esLast;
    const auto right = orx::getContrastEdges(grey, from, to, averaged, options);
    if (left.empty() || right.empty()) return {};  // orx::lastRefusal() says why
    return {right[0].distance - left[0].distance, true};
}
// [width end]

// [pins]
// The middles of all bright pins that the segment crosses, pixels along it.
std::vector<double> pinsAlong(const cv::Mat& grey, cv::Point2d from, cv::Point2d to) {
    orx::TCaliperOptions options;
    options.minContrast = 30;
    const auto edges = orx::getContrastEdges(grey, from, to, 11, options);  // all, in their order
    std::vector<double> middles;
    for (std::size_t i = 1; i < edges.size(); ++i)
        if (edges[i - 1].contrast > 0 && edges[i].contrast < 0)
            middles.push_back((edges[i - 1].distance + edges[i].distance) / 2);
    return middles;
}
// [pins end]

// [circle]
orx::TMeasuredCircle circleNear(const cv::Mat& grey, cv::Point2d center, double radius,
                                std::vector<orx::TContrastEdge>& edges) {
    orx::TCircleCaliperOptions options;
    options.count = 48;
    options.searchLength = 24;  // half of it to each side of the nominal circle
    options.width = 4;
    options.edge.minContrast = 30;
    options.edge.polarity = orx::epBrightToDark;  // seen outwards
    edges = orx::getCircleEdges(grey, center, radius, options);
    orx::TFitOptions fit;
    fit.loss = orx::flTukey;  // what the burr moved has no say
    return orx::fitCircleGeometric(edges, fit);
}
// [circle end]

constexpr double kPitch = 26.2;
constexpr double kPinWidth = 10.6;
constexpr int kPins = 8;
constexpr int kBent = 5;
constexpr double kBend = 2.3;

double middleOf(int pin) { return 24.35 + kPitch * pin + (pin == kBent ? kBend : 0); }

cv::Mat connector(double noise, std::uint64_t seed) {
    cv::Mat ideal(90, 232, CV_32F, cv::Scalar(50.0));
    for (int pin = 0; pin < kPins; ++pin)
        scenes::paint(ideal, scenes::Bar{{middleOf(pin), 40.0}, 90.0, 120.0, kPinWidth}, 180.0);
    return scenes::expose(ideal, {0.3, 0.8, noise, seed});
}

const scenes::Disk kCap{{80.4, 77.7}, 48.65};

cv::Mat capWithBurr() {
    cv::Mat ideal(156, 160, CV_32F, cv::Scalar(50.0));
    scenes::paint(ideal, kCap, 180.0);
    scenes::paint(ideal, scenes::Bar{{119, 47}, 50.0, 20.0, 12.0}, 180.0);
    return scenes::expose(ideal, {0.2, 0.8, 4, 6});
}

void tellPins() {
    const cv::Mat grey = connector(4, 2);
    const cv::Point2d from(4, 45), to(228, 45);
    const std::vector<double> pins = pinsAlong(grey, from, to);
    guide::expect(pins.size() == kPins, "eight pins");
    guide::Enlarged panel(grey, 4);
    for (const double side : {-5.5, 5.5}) panel.line({4, 45 + side}, {228, 45 + side}, guide::kBlue, 1);
    for (std::size_t i = 0; i < pins.size(); ++i) {
        const double x = from.x + pins[i];
        const double off = pins[i] - pins[0] - kPitch * static_cast<double>(i);
        const bool bent = std::abs(off) > 0.5;
        std::printf("pin %zu: %+.2f from its place%s\n", i + 1, off, bent ? ", bent" : "");
        guide::expectAbout(x, middleOf(static_cast<int>(i)), 0.04, "middle of a pin");
        panel.line({x, 33}, {x, 57}, bent ? guide::kRed : guide::kGreen, 2);
        panel.text(guide::formatted("%+.2f", off), {x - 5.5, 70},
                   bent ? cv::Scalar(110, 110, 255) : cv::Scalar::all(255));
    }
    guide::save("calipers-pins", panel.canvas());
}

// Spread of a width over pictures that differ in noise alone.
double spread(double averaged) {
    double sum = 0, squares = 0;
    constexpr int kPictures = 60;
    for (int i = 0; i < kPictures; ++i) {
        const Width width =
            widthAlong(connector(8, 100 + static_cast<unsigned>(i)), {10, 45}, {37, 45}, averaged);
        guide::expect(width.valid, "the first pin has a width");
        sum += width.value;
        squares += width.value * width.value;
    }
    const double mean = sum / kPictures;
    guide::expectAbout(mean, kPinWidth, 0.06, "mean width of the first pin");
    return std::sqrt(squares / kPictures - mean * mean);
}

void tellWidths() {
    for (const double averaged : {1.0, 3.0, 9.0, 27.0}) {
        const double value = spread(averaged);
        std::printf("| %g | %.3f |\n", averaged, value);
        guide::expectAbout(value * std::sqrt(averaged), 0.23, 0.05,
                           "the spread falls with the root of the width");
    }
}

void tellCircle() {
    const cv::Mat grey = capWithBurr();
    std::vector<orx::TContrastEdge> edges;
    const orx::TMeasuredCircle circle = circleNear(grey, {82, 80}, 47, edges);
    std::printf("diameter %.3f, standard uncertainty %.3f, %d of %d calipers\n", 2 * circle.radius,
                2 * circle.radiusDeviation, circle.usedPoints, circle.points);
    guide::expectAbout(2 * circle.radius, 2 * kCap.radius, 0.03, "diameter of the cap");
    guide::Enlarged panel(grey, 4);
    for (int i = 0; i < 48; ++i) {
        const double angle = 7.5 * i * CV_PI / 180;
        const cv::Point2d out(std::cos(angle), std::sin(angle));
        panel.line(cv::Point2d(82, 80) + 35 * out, cv::Point2d(82, 80) + 59 * out, guide::kBlue, 1);
    }
    panel.circle(circle.center, circle.radius, guide::kGreen, 2);
    for (std::size_t i = 0; i < edges.size(); ++i)
        panel.dot(edges[i].position, 4, circle.used[i] != 0 ? guide::kGreen : guide::kRed);
    guide::save("calipers-circle", panel.canvas());
}

void make() {
    tellPins();
    tellWidths();
    tellCircle();
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
