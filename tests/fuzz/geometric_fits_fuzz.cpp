// The fits for measuring: what each report says of itself against a plain loop over the points, both kinds of
// points, a shift of all points, searches with a seed on one thread and on many.
#include <algorithm>
#include <array>
#include <cmath>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

orx::TFitOptions fitOptions(fuzz::Input& input, std::size_t points) {
    orx::TFitOptions options;
    options.loss = static_cast<orx::TFitLoss>(input.between(0, 4));
    const unsigned kind = input.byte();
    options.noise = static_cast<orx::TPointNoise>(kind % 3U);
    if (kind < 128) return options;
    options.tuning = input.flag() ? input.option(0.1, 20) : 0;
    options.scale = input.flag() ? input.option(0, 4) : 0;
    options.smoothing = input.option(0.3, 5);
    options.maxIterations = input.between(0, 60);
    if (input.flag()) {
        for (std::size_t i = 0; i < points; ++i) options.deviations.push_back(input.byte() / 64.0);
        options.absoluteDeviations = input.flag();
        if (input.byte() % 16U == 0) options.deviations.push_back(input.number());
    }
    return options;
}

template <int n>
void checkCovariance(const cv::Matx<double, n, n>& c, const std::array<double, n>& deviations) {
    for (int i = 0; i < n; ++i) {
        require(std::isfinite(c(i, i)) && c(i, i) >= 0, "variances are numbers");
        require(fuzz::nearly(deviations[static_cast<std::size_t>(i)], std::sqrt(c(i, i))),
                "roots of the diagonal");
        for (int k = 0; k < i; ++k) {
            require(fuzz::nearly(c(i, k), c(k, i)), "a covariance is symmetric");
            require(c(i, k) * c(i, k) <= c(i, i) * c(k, k) * (1 + 1e-6) + 1e-12, "correlations up to 1");
        }
    }
}

// Noise makes curves look larger, and more so where the points leave much of them open: what is taken back of
// it after the distances were measured. Of an ellipse that may be a circle that is all of the axes'
// difference.
double takenBack(const orx::TMeasuredLine&) { return 0; }
double takenBack(const orx::TMeasuredCircle& circle) {
    const double x = circle.xDeviation;
    const double y = circle.yDeviation;
    return (circle.noise * circle.noise + x * x + y * y) / circle.radius;
}
double takenBack(const orx::TMeasuredEllipse& ellipse) {
    const double deviations = ellipse.semiMajorDeviation + ellipse.semiMinorDeviation;
    const bool nearlyRound = ellipse.semiMajor - ellipse.semiMinor < 10 * deviations;
    return ellipse.noise * ellipse.noise * ellipse.semiMajor / (ellipse.semiMinor * ellipse.semiMinor) +
           0.01 * ellipse.noise + (nearlyRound ? 1.0 : 0.1) * deviations;
}

// What a report counts and measures, by plain loops.
template <class Shape>
void checkReport(const Shape& shape, const std::vector<cv::Point2d>& points, bool weighed = false) {
    require(*orx::fitStatusText(shape.status) != 0, "a status has a text");
    require(shape.points == static_cast<int>(points.size()), "points are counted");
    if (!shape.valid()) return;
    require(shape.used.size() == points.size(), "a mark for each point");
    double squares = 0;
    double least = 1e300;
    double largest = -1e300;
    int used = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (shape.used[i] == 0) continue;
        const double d = shape.signedDistance(points[i]);
        squares += d * d;
        least = std::min(least, d);
        largest = std::max(largest, d);
        ++used;
    }
    require(used == shape.usedPoints && used > 0, "used points are marked");
    const double reach = std::max(std::abs(least), std::abs(largest));
    const double rounding = 1e-6 * reach + 1e-6;
    const double moved = takenBack(shape);
    // All points together by no more than their noise, where they weigh alike.
    const double together = weighed ? moved : std::min(moved, 1.5 * shape.noise);
    require(std::abs(shape.rms - std::sqrt(squares / used)) <= rounding + together,
            "the root mean square distance");
    require(std::abs(shape.peakToValley - (largest - least)) <= 2 * (rounding + moved),
            "the largest less the smallest");
    require(shape.noise >= 0 && shape.effectivePoints > 0 && shape.degreesOfFreedom > 0, "a report is told");
    const double factor = orx::coverageFactor(0.95, shape.degreesOfFreedom);
    require(factor >= 1.9599 && std::isfinite(factor), "Student's t is beyond that of many points");
}

std::vector<cv::Point2f> floats(const std::vector<cv::Point2d>& points) {
    return {points.begin(), points.end()};
}

std::vector<cv::Point2d> doubles(const std::vector<cv::Point2f>& points) {
    return {points.begin(), points.end()};
}

void checkLine(fuzz::Input& input) {
    const std::vector<cv::Point2d> points = doubles(floats(input.points(90)));
    const orx::TFitOptions options = fitOptions(input, points.size());
    const orx::TMeasuredLine line = orx::fitLineGeometric(points, options);
    checkReport(line, points, !options.deviations.empty());
    const orx::TMeasuredLine other = orx::fitLineGeometric(floats(points), options);
    require(other.status == line.status && other.point == line.point && other.angle == line.angle,
            "floats give the same line");
    if (!line.valid()) return;
    require(fuzz::nearly(cv::norm(line.direction), 1) && line.from <= line.to, "a direction and a stretch");
    require(line.angle > -180.0001 && line.angle <= 180.0001, "the angle in range");
    checkCovariance<2>(line.covariance, {line.offsetDeviation, line.angleDeviation});
    require(options.noise == orx::pnEdgeChain ||
                line.deviationAt(0) <= line.deviationAt(line.to) * (1 + 1e-6) + 1e-12,
            "known best at its point");
    const orx::TLine slope = line.slopeForm();
    require(slope.valid, "a line has its slope");
}

void checkCircle(fuzz::Input& input) {
    const std::vector<cv::Point2d> points = doubles(floats(input.points(90)));
    const orx::TFitOptions options = fitOptions(input, points.size());
    const orx::TMeasuredCircle circle = orx::fitCircleGeometric(points, options);
    checkReport(circle, points, !options.deviations.empty());
    const orx::TMeasuredArc arc = orx::fitArcGeometric(points, options);
    const orx::TMeasuredCircle other = orx::fitCircleGeometric(floats(points), options);
    const orx::TMeasuredArc otherArc = orx::fitArcGeometric(floats(points), options);
    require(arc.status == circle.status && other.status == circle.status && otherArc.status == circle.status,
            "as arc and of floats alike");
    require(arc.radius == circle.radius && other.radius == circle.radius && other.center == circle.center,
            "the same circle");
    if (!circle.valid()) return;
    require(circle.radius > 0 && circle.sweep >= 0 && circle.sweep <= 360, "a circle and its part");
    checkCovariance<3>(circle.covariance, {circle.xDeviation, circle.yDeviation, circle.radiusDeviation});
    require(std::abs(circle.signedDistance(circle.at(33))) < 1e-6 * (1 + circle.radius),
            "at() is on the outline");
    require(cv::norm(arc.start - arc.at(arc.startAngle)) < 1e-6 * (1 + arc.radius), "arcs begin there");
    require(fuzz::nearly(arc.length, arc.radius * arc.sweep * CV_PI / 180, 1e-6), "the length along the arc");
}

void checkEllipse(fuzz::Input& input) {
    const std::vector<cv::Point2d> points = doubles(floats(input.points(90)));
    const orx::TFitOptions options = fitOptions(input, points.size());
    const orx::TMeasuredEllipse ellipse = orx::fitEllipseGeometric(points, options);
    checkReport(ellipse, points, !options.deviations.empty());
    const orx::TMeasuredEllipse other = orx::fitEllipseGeometric(floats(points), options);
    require(other.status == ellipse.status && other.semiMajor == ellipse.semiMajor, "floats give the same");
    if (!ellipse.valid()) return;
    require(ellipse.semiMajor >= ellipse.semiMinor && ellipse.semiMinor > 0, "axes in order");
    require(ellipse.angle >= 0 && ellipse.angle < 180.0001, "the angle in range");
    checkCovariance<5>(ellipse.covariance,
                       {ellipse.xDeviation, ellipse.yDeviation, ellipse.semiMajorDeviation,
                        ellipse.semiMinorDeviation, ellipse.angleDeviation});
    const cv::Point2d p = points[input.byte() % points.size()];
    if (!std::isfinite(p.x) || !std::isfinite(p.y)) return;
    const double away = std::abs(ellipse.signedDistance(p));
    require(std::abs(cv::norm(ellipse.nearest(p) - p) - away) < 1e-6 * (1 + away), "the foot is so far away");
    for (int t = 0; t < 360; t += 5)
        require(cv::norm(ellipse.at(t) - p) >= away - 1e-6 * (1 + away), "no place is nearer than the foot");
}

// All points moved by whole pixels: the same shape there.
void checkMoved(fuzz::Input& input) {
    const std::vector<cv::Point2d> points = input.points(60);
    const cv::Point2d by{16.0 * input.between(-60, 60), 16.0 * input.between(-60, 60)};
    for (const cv::Point2d& p : points) {
        if (!(std::abs(p.x) < 1e4 && std::abs(p.y) < 1e4)) return;
    }
    std::vector<cv::Point2d> moved = points;
    for (cv::Point2d& p : moved) p += by;
    const orx::TMeasuredCircle circle = orx::fitCircleGeometric(points);
    const orx::TMeasuredCircle there = orx::fitCircleGeometric(moved);
    // Beside a limit, rounding may decide.
    if (!circle.valid() || !there.valid()) return;
    const double slack = 1e-3 * circle.radiusDeviation + 1e-6 * circle.radius;
    require(cv::norm(there.center - circle.center - by) <= slack &&
                std::abs(there.radius - circle.radius) <= slack,
            "a moved circle is the same circle");
}

orx::TConsensusOptions searchOptions(fuzz::Input& input) {
    orx::TConsensusOptions options;
    options.tolerance = input.option(0.2, 6);
    options.maxTrials = input.between(0, 300);
    options.seed = input.byte();
    options.minSupport = input.option(0, 0.8);
    options.minPoints = input.between(-1, 20);
    if (input.flag()) {
        options.confidence = input.option(0.5, 0.999);
        options.minRadius = input.option(0, 20);
        options.maxRadius = input.option(10, 300);
        options.angle = input.option(-200, 200);
        options.angleTolerance = input.option(1, 90);
    }
    return options;
}

void checkSearch(fuzz::Input& input) {
    const orx::TConsensusOptions options = searchOptions(input);
    const int most = input.between(-1, 4);
    const std::vector<cv::Point2d> points = doubles(floats(input.points(90)));
    const auto all = [&] {
        std::vector<double> numbers;
        const orx::TMeasuredLine line = orx::findLine(points, options);
        const orx::TMeasuredCircle circle = orx::findCircle(points, options);
        const orx::TMeasuredEllipse ellipse = orx::findEllipse(points, options);
        checkReport(line, points);
        checkReport(circle, points);
        checkReport(ellipse, points);
        for (const double v : {line.angle, line.point.x, circle.radius, circle.center.y, ellipse.semiMajor})
            numbers.push_back(v);
        return numbers;
    };
    cv::setNumThreads(1);
    const std::vector<double> one = all();
    cv::setNumThreads(3);
    require(all() == one, "as on one thread");
    cv::setNumThreads(1);
    require(orx::findCircle(floats(points), options).radius == one[2], "floats give the same");
    std::vector<int> owners(points.size());
    for (const orx::TMeasuredLine& line : orx::findLines(points, options, most)) {
        for (std::size_t i = 0; i < points.size(); ++i) owners[i] += line.used[i];
    }
    require(std::count_if(owners.begin(), owners.end(), [](int n) { return n > 1; }) == 0,
            "no point of two lines");
    const std::vector<orx::TMeasuredCircle> circles = orx::findCircles(points, options, most);
    require(most <= 0 || static_cast<int>(circles.size()) <= most, "so many at the most");
    for (const orx::TMeasuredCircle& circle : circles) {
        require(circle.valid(), "what is found is valid");
        require(circle.usedPoints >= options.minPoints, "with the support asked for");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkLine, checkCircle, checkEllipse, checkMoved, checkSearch}, bytes, size);
    return 0;
}
