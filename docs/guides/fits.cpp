// Guide "fits and uncertainty": losses, outliers, coverage, short arcs, and shapes among other points.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"

namespace {

using Points = std::vector<cv::Point2d>;

// [loss]
orx::TMeasuredCircle circleBy(const Points& points, orx::TFitLoss loss) {
    orx::TFitOptions options;
    options.loss = loss;
    options.noise = orx::pnNormal;  // each point errs across the outline, by itself
    return orx::fitCircleGeometric(points, options);
}
// [loss end]

// [consensus]
orx::TMeasuredCircle circleAmong(const Points& points) {
    orx::TConsensusOptions options;
    options.tolerance = 0.6;  // three times the noise of a point
    options.fit.noise = orx::pnNormal;
    return orx::findCircle(points, options);
}
// [consensus end]

// [interval]
struct Interval {
    double from = 0;
    double to = 0;
};

Interval radiusWithin(const orx::TMeasuredCircle& circle, double probability) {
    const double half = circle.radiusDeviation * orx::coverageFactor(probability, circle.degreesOfFreedom);
    return {circle.radius - half, circle.radius + half};
}
// [interval end]

// [lines]
std::vector<orx::TMeasuredLine> linesAmong(const Points& points) {
    orx::TConsensusOptions options;
    options.tolerance = 0.6;    // three times the noise of a point
    options.minSupport = 0.12;  // each side holds at least so much of all points
    options.fit.noise = orx::pnNormal;
    return orx::findLines(points, options);
}
// [lines end]

const cv::Point2d kCenter(60, 55);
constexpr double kRadius = 40;
constexpr double kNoise = 0.2;

// Points along an arc that err across it; a share of them, side by side, lies on a dent.
Points arcPoints(cv::RNG& random, int count, double sweep, double wrongShare = 0) {
    Points points;
    for (int i = 0; i < count; ++i) {
        const double angle = sweep * i / count * CV_PI / 180;
        const bool wrong = i < wrongShare * count;
        const double inwards = wrong ? 3 + 3 * std::sin(CV_PI * i / (wrongShare * count)) : 0;
        points.push_back(kCenter + (kRadius - inwards + random.gaussian(kNoise)) *
                                       cv::Point2d(std::cos(angle), std::sin(angle)));
    }
    return points;
}

void drawLosses() {
    cv::RNG random(4);
    const Points points = arcPoints(random, 120, 360, 0.25);
    const orx::TMeasuredCircle plain = circleBy(points, orx::flLeastSquares);
    const orx::TMeasuredCircle huber = circleBy(points, orx::flHuber);
    const orx::TMeasuredCircle tukey = circleBy(points, orx::flTukey);
    guide::Enlarged panel(cv::Mat(100, 120, CV_8UC1, cv::Scalar(255)), {12, 8, 98, 92}, 5);
    panel.circle(plain.center, plain.radius, guide::kOrange, 2);
    panel.circle(huber.center, huber.radius, guide::kBlue, 2);
    panel.circle(tukey.center, tukey.radius, guide::kGreen, 2);
    for (std::size_t i = 0; i < points.size(); ++i)
        panel.dot(points[i], 3.5, tukey.used[i] != 0 ? guide::kInk : guide::kRed);
    panel.text("flLeastSquares", {48, 48}, guide::kOrange);
    panel.text("flHuber", {48, 53}, guide::kBlue);
    panel.text("flTukey", {48, 58}, guide::kGreen);
    guide::save("fits-losses", panel.canvas());
}

// Points of a whole circle; a share of them, here and there, lies anywhere along its radius.
Points strewnPoints(cv::RNG& random, int count, double wrongShare) {
    Points points = arcPoints(random, count, 360);
    for (int i = 0; i < count; ++i) {
        cv::Point2d& point = points[static_cast<std::size_t>(i)];
        if (i * 37 % count < wrongShare * count)
            point = kCenter + random.uniform(0.6, 1.4) * (point - kCenter);
    }
    return points;
}

// Root mean square error of the radius over many lists of points.
template <class Fit>
double errorOf(const Fit& fit, double wrongShare) {
    double squares = 0;
    constexpr int kTrials = 40;
    for (int i = 0; i < kTrials; ++i) {
        cv::RNG random(static_cast<std::uint64_t>(i + 1));
        squares += std::pow(fit(arcPoints(random, 120, 360, wrongShare)).radius - kRadius, 2) / kTrials;
    }
    return std::sqrt(squares);
}

template <class Fit>
void tellRow(const char* name, const Fit& fit, const std::array<double, 5>& stated) {
    const std::array<double, 5> shares{0, 0.1, 0.2, 0.3, 0.4};
    std::printf("| `%s` |", name);
    for (std::size_t i = 0; i < shares.size(); ++i) {
        const double error = errorOf(fit, shares[i]);
        std::printf(" %.3f |", error);
        guide::expectAbout(error, stated[i], stated[i] > 0.1 ? 0.05 : 0.003,
                           std::string(name) + " with a dent");
    }
    std::printf("\n");
}

void tellLosses() {
    const auto by = [](orx::TFitLoss loss) {
        return [loss](const Points& points) { return circleBy(points, loss); };
    };
    tellRow("flLeastSquares", by(orx::flLeastSquares), {0.014, 0.486, 0.963, 1.434, 1.905});
    tellRow("flHuber", by(orx::flHuber), {0.016, 0.019, 0.021, 0.027, 1.872});
    tellRow("flCauchy", by(orx::flCauchy), {0.016, 0.020, 0.021, 0.027, 1.889});
    tellRow("flTukey", by(orx::flTukey), {0.016, 0.020, 0.021, 0.027, 1.882});
    tellRow("flGemanMcClure", by(orx::flGemanMcClure), {0.016, 0.020, 0.021, 0.027, 1.888});
    tellRow("findCircle", circleAmong, {0.016, 0.020, 0.021, 0.027, 0.49});
}

void tellStrewn() {
    double worst = 0;
    for (int i = 0; i < 40; ++i) {
        cv::RNG random(static_cast<std::uint64_t>(i + 1));
        const orx::TMeasuredCircle circle = circleBy(strewnPoints(random, 120, 0.4), orx::flTukey);
        worst = std::max(worst, std::abs(circle.radius - kRadius));
    }
    std::printf("40 %% strewn: the radius errs by %.3f at most\n", worst);
    guide::expect(worst < 0.15, "strewn outliers are borne to 40 %");
}

void tellCoverage() {
    int held68 = 0, held95 = 0;
    constexpr int kTrials = 1000;
    for (int i = 0; i < kTrials; ++i) {
        cv::RNG random(static_cast<std::uint64_t>(i + 1));
        const orx::TMeasuredCircle circle = circleBy(arcPoints(random, 12, 360), orx::flLeastSquares);
        const Interval likely = radiusWithin(circle, 0.6827), sure = radiusWithin(circle, 0.95);
        held68 += likely.from <= kRadius && kRadius <= likely.to;
        held95 += sure.from <= kRadius && kRadius <= sure.to;
    }
    guide::expectAbout(100.0 * held68 / kTrials, 67.5, 1, "intervals of 68.3 %");
    guide::expectAbout(100.0 * held95 / kTrials, 94.2, 1, "intervals of 95 %");
    std::printf("coverage %.1f and %.1f %%\n", 100.0 * held68 / kTrials, 100.0 * held95 / kTrials);
}

void tellArcs() {
    std::vector<cv::Point2d> stated, spread;
    for (const double sweep : {360.0, 180.0, 90.0, 60.0, 45.0, 30.0, 20.0, 10.0, 5.0}) {
        double squares = 0, variance = 0;
        int valid = 0;
        constexpr int kTrials = 100;
        orx::TFitStatus status = orx::fsOk;
        for (int i = 0; i < kTrials; ++i) {
            cv::RNG random(static_cast<std::uint64_t>(i + 1));
            const orx::TMeasuredCircle circle = circleBy(arcPoints(random, 60, sweep), orx::flLeastSquares);
            if (!circle.valid()) {
                status = circle.status;
                continue;
            }
            ++valid;
            squares += std::pow(circle.radius - kRadius, 2);
            variance += circle.radiusDeviation * circle.radiusDeviation;
        }
        std::printf("| %g | %d | %.3f | %.3f | %s\n", sweep, valid, std::sqrt(squares / valid),
                    std::sqrt(variance / valid), orx::fitStatusText(status));
        if (sweep >= 20)
            guide::expectAbout(std::sqrt(squares / variance), 1, 0.1, "arcs err as they state");
        else
            guide::expect(valid < 50, "arcs as short as that are mostly refused");
        if (valid > 90) stated.emplace_back(sweep, std::sqrt(variance / valid));
        if (valid > 90) spread.emplace_back(sweep, std::sqrt(squares / valid));
    }
    guide::Plot plot({640, 380}, {"arc, degrees", 8, 400, {10, 20, 45, 90, 180, 360}, true},
                     {"error of the radius, pixels", 0.01, 30, {0.01, 0.1, 1, 10}, true});
    plot.line(stated, guide::kInk);
    plot.dots(spread, guide::kGreen);
    plot.legend("stated", guide::kInk, true);
    plot.legend("true", guide::kGreen, true);
    guide::save("fits-arcs", plot.canvas());
}

const std::array<cv::Point2d, 4> kCorners{{{14, 20}, {104, 8}, {118, 78}, {30, 92}}};

void tellLines() {
    cv::RNG random(8);
    Points points;
    for (std::size_t side = 0; side < 4; ++side) {
        const cv::Point2d from = kCorners[side], to = kCorners[(side + 1) % 4];
        const cv::Point2d along = (to - from) / cv::norm(to - from);
        for (int i = 1; i < 60; ++i)
            points.push_back(from + i / 60.0 * (to - from) +
                             random.gaussian(kNoise) * cv::Point2d(-along.y, along.x));
    }
    for (int i = 0; i < 100; ++i) points.emplace_back(random.uniform(3.0, 127.0), random.uniform(3.0, 97.0));
    const auto lines = linesAmong(points);
    guide::Enlarged panel(cv::Mat(100, 130, CV_8UC1, cv::Scalar(255)), 5);
    std::vector<bool> taken(points.size());
    for (const orx::TMeasuredLine& line : lines) {
        panel.line(line.point + line.from * line.direction, line.point + line.to * line.direction,
                   guide::kBlue);
        for (std::size_t i = 0; i < points.size(); ++i) taken[i] = taken[i] || line.used[i] != 0;
        std::printf("angle %.3f, standard uncertainty %.3f, %d points\n", line.angle, line.angleDeviation,
                    line.usedPoints);
    }
    for (std::size_t i = 0; i < points.size(); ++i)
        panel.dot(points[i], 3, taken[i] ? guide::kGreen : guide::kOrange);
    guide::save("fits-lines", panel.canvas());
    guide::expect(lines.size() == 4, "four sides are found among 100 other points");
}

// Points from one place to another that err across the way.
Points edgePoints(cv::RNG& random, cv::Point2d from, cv::Point2d to) {
    const cv::Point2d along = (to - from) / cv::norm(to - from);
    Points points;
    for (int i = 0; i <= 60; ++i)
        points.push_back(from + i / 60.0 * (to - from) +
                         random.gaussian(kNoise) * cv::Point2d(-along.y, along.x));
    return points;
}

orx::TMeasuredLine lineBy(const Points& points) {
    orx::TFitOptions options;
    options.noise = orx::pnNormal;
    return orx::fitLineGeometric(points, options);
}

void tellRelations() {
    cv::RNG random(5);
    const orx::TMeasuredCircle hole = circleBy(arcPoints(random, 120, 360), orx::flLeastSquares);
    const orx::TMeasuredLine edge = lineBy(edgePoints(random, {0, 30}, {120, 30}));
    const orx::TMeasuredLine opposite = lineBy(edgePoints(random, {0, 80}, {120, 80}));
    const orx::TMeasuredLine chamfer = lineBy(edgePoints(random, {120, 30}, {146, 45}));
    // [relations]
    const orx::TMeasuredPoint center = orx::centerOf(hole);
    const orx::TMeasuredValue off = orx::distance(center, edge);       // 25
    const orx::TMeasuredValue turn = orx::signedAngle(edge, chamfer);  // 30, clockwise on the screen
    const orx::TLineDistance width = orx::distance(edge, opposite);    // 50: middle, least, largest
    const orx::TMeasuredPoint corner = orx::pointOn(edge, edge.to);    // the end that was measured
    const orx::TIntersections cuts = orx::intersections(edge, hole);   // two points, or why there are none
    orx::TMeasuredValue chord;
    if (cuts.valid()) chord = orx::distance(cuts.points[0], cuts.points[1]);  // 62.4
    // [relations end]
    std::printf("off %.3f +- %.3f, turn %.2f +- %.2f, width %.3f +- %.3f, chord %.3f +- %.3f\n", off.value,
                off.deviation, turn.value, turn.deviation, width.middle.value, width.middle.deviation,
                chord.value, chord.deviation);
    guide::expectAbout(off.value, 25, 4 * off.deviation, "the hole's centre from the edge");
    guide::expectAbout(turn.value, std::atan2(15, 26) * 180 / CV_PI, 4 * turn.deviation, "the chamfer");
    guide::expectAbout(width.middle.value, 50, 4 * width.middle.deviation, "the width in the middle");
    guide::expect(width.least.value <= width.middle.value && width.middle.value <= width.largest.value,
                  "the width at the ends");
    guide::expectAbout(corner.position.x, 120, 1, "the end of the edge");
    guide::expectAbout(chord.value, 2 * std::sqrt(1600 - 625.0), 4 * chord.deviation, "the chord");
    const orx::TRelationStatus none = orx::intersections(chamfer, hole).status;
    guide::expect(none == orx::rsApart, "the chamfer passes by the hole");
}

void tellForm() {
    cv::RNG random(6);
    const Points outline = arcPoints(random, 200, 360), edge = edgePoints(random, {0, 30}, {120, 30});
    // [form]
    orx::TFormOptions options;
    options.noise = 0.2;  // of a point; else the noise counts as form
    options.pointNoise = orx::pnNormal;
    const orx::TRoundness ring = orx::minimumZoneCircle(outline, options);
    const orx::TRoundness around =
        orx::minimumCircumscribedCircle(outline, options);                         // what a hole must have
    const orx::TRoundness within = orx::maximumInscribedCircle(outline, options);  // what a shaft must have
    const orx::TStraightness strip = orx::minimumZoneLine(edge, options);
    // [form end]
    std::printf(
        "ring %.3f, freed %.3f; around %.3f, freed %.3f; within %.3f, freed %.3f; strip %.3f, freed %.3f\n",
        ring.value, ring.freed, around.outerRadius, around.freedOuter, within.innerRadius, within.freedInner,
        strip.value, strip.freed);
    guide::expect(ring.valid() && around.valid() && within.valid() && strip.valid(), "each has a zone");
    guide::expectAbout(ring.value, 1.02, 0.01, "the ring, with the noise");
    guide::expectAbout(ring.freed, 0, 0.01, "the ring, without");
    guide::expectAbout(around.outerRadius, 40.55, 0.01, "the circle around, with the noise");
    guide::expectAbout(around.freedOuter, 40.08, 0.01, "the circle around, without");
    guide::expectAbout(within.innerRadius, 39.58, 0.01, "the circle within, with the noise");
    guide::expectAbout(within.freedInner, 40.07, 0.01, "the circle within, without");
    guide::expectAbout(strip.value, 1.02, 0.01, "the strip, with the noise");
    guide::expectAbout(strip.freed, 0.13, 0.01, "the strip, without");
    guide::expect(ring.value <= around.value + 1e-9 && ring.value <= within.value + 1e-9,
                  "no ring is narrower");
}

void make() {
    drawLosses();
    tellLosses();
    tellStrewn();
    tellCoverage();
    tellArcs();
    tellLines();
    tellRelations();
    tellForm();
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
