// The code and the pictures of docs/measuring.md, and the numbers in it.
//
//   measuring_guide FOLDER     writes measuring-fit.png, measuring-shapes.png and measuring-interval.png
//   there,
//                              prints the numbers
//
// What the page shows stands here to the letter; a test compares.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

std::vector<ORXEdge::TMetricContour> findEdges(const cv::Mat& image) {
    ORXEdge::TMetricOptions options;
    options.automaticThresholds = true;
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(image, edges, options);
    return edges;
}

orx::TMeasuredCircle measureCircle(const ORXEdge::TMetricContour& edge) {
    orx::TFitOptions options;
    options.loss = orx::flTukey;
    return orx::fitCircleGeometric(edge, 1.0, options);  // found with the sigma 1
}

void report(const orx::TMeasuredCircle& circle) {
    if (!circle.valid()) {
        std::printf("no circle: %s\n", orx::fitStatusText(circle.status));
        return;
    }
    const double diameter = 2 * circle.radius;
    const double uncertainty = 2 * circle.radiusDeviation;
    const double half = uncertainty * orx::coverageFactor(0.95, circle.degreesOfFreedom);
    std::printf("diameter %.3f, standard uncertainty %.3f\n", diameter, uncertainty);
    std::printf("between %.3f and %.3f with 95 %%\n", diameter - half, diameter + half);
}

orx::TMeasuredCircle measureNominal(const cv::Mat& image, cv::Point2d center, double radius) {
    const auto edges = orx::edgesAcross(image, orx::probesAlongCircle(center, radius));
    orx::TFitOptions options;
    options.noise = orx::pnEdgeChain;
    options.smoothing = orx::kContourEdgeSmoothing;
    options.deviations = orx::deviationsOf(edges);
    return orx::fitCircleGeometric(orx::pointsOf(edges), options);
}

orx::TMeasuredEllipse measureEllipse(const ORXEdge::TMetricContour& edge) {
    return orx::fitEllipseGeometric(edge, 1.0);
}

void report(const orx::TMeasuredEllipse& ellipse) {
    if (!ellipse.valid()) {
        std::printf("no ellipse: %s\n", orx::fitStatusText(ellipse.status));
        return;
    }
    std::printf("axes %.3f and %.3f, standard uncertainties %.3f and %.3f, ", 2 * ellipse.semiMajor,
                2 * ellipse.semiMinor, 2 * ellipse.semiMajorDeviation, 2 * ellipse.semiMinorDeviation);
    if (ellipse.angleTold)
        std::printf("turned by %.2f, standard uncertainty %.2f\n", ellipse.angle, ellipse.angleDeviation);
    else
        std::printf("round: which way it is turned is not told\n");
}

std::vector<orx::TMeasuredCircle> circlesAmong(const std::vector<cv::Point2d>& edgePoints) {
    orx::TConsensusOptions options;
    options.tolerance = 0.2;  // some noises of a point
    options.minRadius = 10;
    options.minSupport = 0.15;
    options.fit.noise = orx::pnEdgeChain;
    options.fit.smoothing = orx::chainSmoothing(1.0);
    return orx::findCircles(edgePoints, options);
}

void reportRoundness(const ORXEdge::TMetricContour& edge, double noise) {
    orx::TFormOptions options;
    options.noise = noise;
    options.pointNoise = orx::pnEdgeChain;
    options.smoothing = orx::chainSmoothing(1.0);
    const orx::TRoundness roundness = orx::minimumZoneCircle(edge.points, options);
    if (!roundness.valid()) return;
    std::printf("roundness %.3f; without the noise's share %.3f, standard uncertainty %.3f\n",
                roundness.value, roundness.freed, roundness.deviation);
}

void reportDistance(const orx::TMeasuredCircle& a, const orx::TMeasuredCircle& b) {
    const orx::TMeasuredValue distance = orx::distance(a, b);
    if (!distance.valid()) {
        std::printf("no distance: %s\n", orx::relationStatusText(distance.status));
        return;
    }
    std::printf("distance %.3f, standard uncertainty %.3f\n", distance.value, distance.deviation);
}

const cv::Scalar kGreen(60, 190, 40);
const cv::Scalar kOrange(0, 110, 235);
const cv::Scalar kBlue(255, 200, 60);
const cv::Scalar kInk(50, 40, 30);

const scenes::Disk kPart{{79.3, 80.6}, 52.0};

cv::Mat dentedPart() {
    cv::Mat ideal(160, 160, CV_32F, cv::Scalar(50.0));
    scenes::paint(ideal, kPart, 190.0);
    scenes::paint(ideal, scenes::Disk{{133.0, 66.0}, 17.0}, 50.0);
    return scenes::expose(ideal, {0.15, 0.8, 2.5, 5});
}

ORXEdge::TMetricContour longestOf(const std::vector<ORXEdge::TMetricContour>& edges) {
    const auto shorter = [](const auto& a, const auto& b) { return a.points.size() < b.points.size(); };
    const auto longest = std::max_element(edges.begin(), edges.end(), shorter);
    return longest == edges.end() ? ORXEdge::TMetricContour() : *longest;
}

const scenes::Disk kTogether[] = {{{46.4, 52.7}, 33.0}, {{88.8, 61.3}, 27.0}};

cv::Mat twoDisksAndABar(std::uint64_t seed) {
    cv::Mat ideal(130, 130, CV_32F, cv::Scalar(50.0));
    for (const scenes::Disk& disk : kTogether) scenes::paint(ideal, disk, 190.0);
    scenes::paint(ideal, scenes::Bar{{61.0, 90.0}, 24.0, 90.0, 18.0}, 190.0);
    return scenes::expose(ideal, {0.0, 0.8, 2.5, seed});
}

// A disk seen askew: axes of 100 and 66.67, upright.
cv::Mat tiltedDisk() {
    cv::Mat ideal(260, 390, CV_32F, cv::Scalar(50.0));
    scenes::paint(ideal, scenes::Disk{{194.0, 131.0}, 100.0}, 190.0);
    cv::resize(ideal, ideal, {130, 130}, 0, 0, cv::INTER_AREA);
    return scenes::expose(ideal, {0.0, 0.8, 2.5, 5});
}

std::vector<cv::Point2d> pointsOf(const std::vector<ORXEdge::TMetricContour>& edges) {
    std::vector<cv::Point2d> points;
    for (const auto& edge : edges) points.insert(points.end(), edge.points.begin(), edge.points.end());
    return points;
}

// Part of a picture, each of its pixels `scale` wide, to draw on in the picture's coordinates.
class Enlarged {
  public:
    Enlarged(const cv::Mat& grey, cv::Rect area, int scale) : origin_(area.tl()), scale_(scale) {
        cv::resize(grey(area), canvas_, area.size() * scale, 0, 0, cv::INTER_NEAREST);
        cv::cvtColor(canvas_, canvas_, cv::COLOR_GRAY2BGR);
    }
    void line(cv::Point2d from, cv::Point2d to, const cv::Scalar& color, int thickness) {
        cv::line(canvas_, fixed(from), fixed(to), color, thickness, cv::LINE_AA, kShift);
    }
    template <class Shape>
    void outline(const Shape& shape, const cv::Scalar& color) {
        std::vector<cv::Point> corners;
        for (int i = 0; i < 720; ++i) corners.push_back(fixed(shape.at(0.5 * i)));
        cv::polylines(canvas_, corners, true, color, 2, cv::LINE_AA, kShift);
    }
    void dot(cv::Point2d at, double pixels, const cv::Scalar& color) {
        cv::circle(canvas_, fixed(at), cvRound(pixels * (1 << kShift)), color, cv::FILLED, cv::LINE_AA,
                   kShift);
    }
    const cv::Mat& canvas() const { return canvas_; }

  private:
    static constexpr int kShift = 4;
    cv::Point fixed(cv::Point2d p) const {
        const cv::Point2d q = ((p - cv::Point2d(origin_) + cv::Point2d(0.5, 0.5)) * scale_) * (1 << kShift);
        return {cvRound(q.x), cvRound(q.y)};
    }
    cv::Mat canvas_;
    cv::Point origin_;
    int scale_;
};

void write(cv::Mat& canvas, const std::string& text, cv::Point at, const cv::Scalar& color) {
    cv::putText(canvas, text, at, cv::FONT_HERSHEY_SIMPLEX, 0.45, color, 1, cv::LINE_AA);
}

cv::Mat besides(const cv::Mat& left, const cv::Mat& right) {
    cv::Mat picture;
    cv::hconcat(std::vector<cv::Mat>{left, cv::Mat(left.rows, 12, CV_8UC3, cv::Scalar::all(255)), right},
                picture);
    return picture;
}

// Left the part with both circles, right its dent from near, with each point's deviation thirty times
// enlarged.
cv::Mat drawFit(const cv::Mat& image, const ORXEdge::TMetricContour& edge, const orx::TMeasuredCircle& robust,
                const orx::TMeasuredCircle& plain) {
    Enlarged whole(image, {15, 15, 130, 130}, 4);
    Enlarged near(image, {112, 66, 26, 26}, 20);
    for (Enlarged* panel : {&whole, &near}) {
        panel->outline(plain, kOrange);
        panel->outline(robust, kBlue);
    }
    for (std::size_t i = 0; i < edge.points.size(); ++i) {
        const cv::Point2d point = edge.points[i];
        const cv::Scalar& color = robust.used[i] != 0 ? kGreen : kOrange;
        const double direction = static_cast<double>(edge.direction[i]);
        const cv::Point2d bar = 30 * static_cast<double>(edge.deviation[i]) *
                                cv::Point2d(std::cos(direction), std::sin(direction));
        near.line(point - bar, point + bar, color, 1);
        near.dot(point, 3.5, color);
        whole.dot(point, 2.4, color);
    }
    return besides(whole.canvas(), near.canvas());
}

// Left the ellipse with its axes, right the circles among the edges of other things.
cv::Mat drawShapes(const cv::Mat& tilted, const orx::TMeasuredEllipse& ellipse, const cv::Mat& mixed,
                   const std::vector<cv::Point2d>& points, const std::vector<orx::TMeasuredCircle>& circles) {
    Enlarged left(tilted, {0, 0, 130, 130}, 4);
    left.outline(ellipse, kBlue);
    for (const double end : {0.0, 90.0}) left.line(ellipse.at(end), ellipse.at(end + 180), kBlue, 1);
    Enlarged right(mixed, {0, 0, 130, 130}, 4);
    for (const auto& circle : circles) right.outline(circle, kBlue);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto supports = [&](const auto& circle) { return circle.used[i] != 0; };
        right.dot(points[i], 2.4, std::any_of(circles.begin(), circles.end(), supports) ? kGreen : kOrange);
    }
    return besides(left.canvas(), right.canvas());
}

// Errors of the diameter over what a fit states, of many pictures that differ in place and noise.
struct Ratios {
    std::vector<double> naive;  // residual over root of n
    std::vector<double> chain;  // the fit, told that the points are an edge chain
    double within68 = 0.0;      // shares of the chain's intervals that hold the truth
    double within95 = 0.0;
};

double rootMeanSquare(const std::vector<double>& values) {
    double squares = 0.0;
    for (const double value : values) squares += value * value;
    return std::sqrt(squares / static_cast<double>(values.size()));
}

Ratios errorRatios(int scenes) {
    Ratios ratios;
    for (int i = 0; i < scenes; ++i) {
        const scenes::Disk disk{{50.0 + 0.37 * (i % 17) / 17.0, 50.0 + 0.91 * (i % 23) / 23.0},
                                30.0 + i % 7 / 7.0};
        cv::Mat ideal(100, 100, CV_32F, cv::Scalar(50.0));
        scenes::paint(ideal, disk, 190.0);
        const cv::Mat image = scenes::expose(ideal, {0.0, 0.8, 4.0, static_cast<std::uint64_t>(i) + 1});
        const ORXEdge::TMetricContour edge = longestOf(findEdges(image));
        const orx::TMeasuredCircle circle = orx::fitCircleGeometric(edge, 1.0);
        if (!circle.valid()) continue;
        const double error = circle.radius - disk.radius;
        // The radius of a full circle is known sqrt(n) times better than one of n independent points.
        ratios.naive.push_back(error / (circle.rms / std::sqrt(circle.points)));
        ratios.chain.push_back(error / circle.radiusDeviation);
        const auto holds = [&](double probability) {
            const double factor = orx::coverageFactor(probability, circle.degreesOfFreedom);
            return std::abs(error) <= factor * circle.radiusDeviation ? 1.0 : 0.0;
        };
        ratios.within68 += holds(0.6827);
        ratios.within95 += holds(0.95);
    }
    ratios.within68 /= static_cast<double>(ratios.chain.size());
    ratios.within95 /= static_cast<double>(ratios.chain.size());
    return ratios;
}

// The larger disk's radius over many pictures, where both disks were found.
void keepHeights(const cv::Mat& heights, const std::string& file) {
    if (orx::image2StreamFile(heights, heights.size(), file, "heights in mm")) return;
    const orx::TRefusal refusal = orx::lastRefusal();
    if (refusal.code == orx::rcFileUnwritable) std::printf("give another name, or make room\n");
    std::printf("%s\n", refusal.text.c_str());
}

void reportAmongOthers(int scenes) {
    int both = 0;
    double sum = 0;
    double squares = 0;
    double stated = 0;
    for (int i = 0; i < scenes; ++i) {
        const cv::Mat image = twoDisksAndABar(static_cast<std::uint64_t>(i) + 1);
        const auto circles = circlesAmong(pointsOf(findEdges(image)));
        if (circles.size() != 2) continue;
        ++both;
        const double error = circles[0].radius - kTogether[0].radius;
        sum += error;
        squares += error * error;
        stated += circles[0].radiusDeviation * circles[0].radiusDeviation;
    }
    const double bias = sum / both;
    std::printf("Of %d pictures %d show both; radius %.4f off on average, spread over stated %.2f\n", scenes,
                both, bias, std::sqrt((squares / both - bias * bias) / (stated / both)));
}

void drawHistogram(cv::Mat canvas, const std::vector<double>& values, const cv::Scalar& color,
                   const std::string& title) {
    constexpr double kReach = 5.0;
    constexpr int kBins = 25;
    const int ground = canvas.rows - 40;
    const double unit = canvas.cols / (2 * kReach);
    std::vector<int> counts(kBins);
    for (const double value : values) {
        const int bin = static_cast<int>((value + kReach) / (2 * kReach) * kBins);
        if (bin >= 0 && bin < kBins) ++counts[static_cast<std::size_t>(bin)];
    }
    const double width = 2 * kReach / kBins;
    const double height = 2.0 * (ground - 30);  // of a density of 1
    const double total = static_cast<double>(values.size()) * width;
    for (int i = 0; i < kBins; ++i) {
        const int left = cvRound(i * width * unit);
        const int top = ground - cvRound(counts[static_cast<std::size_t>(i)] / total * height);
        cv::rectangle(canvas, {left + 1, top}, {cvRound((i + 1) * width * unit) - 1, ground}, color,
                      cv::FILLED);
    }
    std::vector<cv::Point> bell;
    for (int x = 0; x < canvas.cols; ++x) {
        const double t = x / unit - kReach;
        bell.emplace_back(x, ground - cvRound(0.3989422804 * std::exp(-t * t / 2) * height));
    }
    cv::polylines(canvas, bell, false, kInk, 2, cv::LINE_AA);
    cv::line(canvas, {0, ground}, {canvas.cols, ground}, kInk, 1);
    for (int tick = -4; tick <= 4; tick += 2) {
        const int x = cvRound((tick + kReach) * unit);
        cv::line(canvas, {x, ground}, {x, ground + 5}, kInk, 1);
        write(canvas, std::to_string(tick), {x - (tick < 0 ? 9 : 4), ground + 20}, kInk);
    }
    write(canvas, title, {14, 22}, kInk);
}

cv::Mat drawIntervals(const Ratios& ratios) {
    cv::Mat picture(300, 1052, CV_8UC3, cv::Scalar::all(255));
    drawHistogram(picture.colRange(0, 520), ratios.naive, kOrange, "error / (residual / root n)");
    drawHistogram(picture.colRange(532, 1052), ratios.chain, kGreen,
                  "error / deviation of the fit (edge chain)");
    return picture;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "measuring_guide: give the folder for the pictures\n");
        return 2;
    }
    const std::string folder = argv[1];
    const cv::Mat image = dentedPart();
    const ORXEdge::TMetricContour edge = longestOf(findEdges(image));
    const orx::TMeasuredCircle robust = measureCircle(edge);
    const orx::TMeasuredCircle plain = orx::fitCircleGeometric(edge.points);
    if (!robust.valid() || !plain.valid()) return 1;
    std::printf("The part has a diameter of %.3f.\nTukey: ", 2 * kPart.radius);
    report(robust);
    std::printf("%d of %d points used, noise %.4f\nLeast squares: ", robust.usedPoints, robust.points,
                robust.noise);
    report(plain);
    std::printf("Nominal circle, without the dent: ");
    cv::Mat whole(160, 160, CV_32F, cv::Scalar(50.0));
    scenes::paint(whole, kPart, 190.0);
    const cv::Mat sound = scenes::expose(whole, {0.15, 0.8, 2.5, 5});
    const orx::TMeasuredCircle nominal = measureNominal(sound, {79, 81}, 52);
    report(nominal);
    const ORXEdge::TMetricContour outline = longestOf(findEdges(sound));
    std::printf("The sound part's ");
    reportRoundness(outline, measureCircle(outline).noise);
    std::printf("The dented part from the sound one: ");
    reportDistance(robust, nominal);
    std::printf("Two points: ");
    report(orx::fitCircleGeometric(std::vector<cv::Point2f>{{1, 1}, {2, 2}}));
    keepHeights(cv::Mat::ones(2, 2, CV_64F), "missing/heights");

    const cv::Mat tilted = tiltedDisk();
    const orx::TMeasuredEllipse ellipse = measureEllipse(longestOf(findEdges(tilted)));
    std::printf("The tilted disk: ");
    report(ellipse);
    std::printf("The sound part as an ellipse: ");
    report(measureEllipse(outline));
    const cv::Mat mixed = twoDisksAndABar(1);
    const std::vector<cv::Point2d> points = pointsOf(findEdges(mixed));
    const std::vector<orx::TMeasuredCircle> circles = circlesAmong(points);
    std::printf("%d circles among %d points\n", static_cast<int>(circles.size()),
                static_cast<int>(points.size()));
    for (const orx::TMeasuredCircle& circle : circles) {
        std::printf("%d points: ", circle.usedPoints);
        report(circle);
    }
    reportAmongOthers(300);

    const Ratios ratios = errorRatios(1000);
    std::printf("Over %d pictures: error over naive uncertainty %.2f, over the fit's %.2f;\n",
                static_cast<int>(ratios.chain.size()), rootMeanSquare(ratios.naive),
                rootMeanSquare(ratios.chain));
    std::printf("its intervals of 68.3 and 95 %% hold %.1f and %.1f %%\n", 100 * ratios.within68,
                100 * ratios.within95);
    const bool written =
        cv::imwrite(folder + "/measuring-fit.png", drawFit(image, edge, robust, plain)) &&
        cv::imwrite(folder + "/measuring-shapes.png", drawShapes(tilted, ellipse, mixed, points, circles)) &&
        cv::imwrite(folder + "/measuring-interval.png", drawIntervals(ratios));
    if (!written) std::fprintf(stderr, "measuring_guide: can't write into %s\n", folder.c_str());
    return written ? 0 : 1;
}
