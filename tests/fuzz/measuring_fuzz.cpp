// Form, relations, verdicts and statistics against their definitions.
#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

void checkForm(fuzz::Input& input) {
    orx::TFormOptions options;
    const bool noisy = input.byte() % 8U == 0;  // simulated outlines take their time
    options.noise = noisy ? input.option(0, 1) : 0;
    options.pointNoise = static_cast<orx::TPointNoise>(input.between(0, 2));
    options.smoothing = input.option(0.3, 5);
    const std::vector<cv::Point2d> points = input.points(noisy ? 20 : 60);
    const orx::TRoundness ring = orx::minimumZoneCircle(points, options);
    const orx::TRoundness around = orx::minimumCircumscribedCircle(points, options);
    const orx::TRoundness within = orx::maximumInscribedCircle(points, options);
    const orx::TStraightness strip = orx::minimumZoneLine(points, options);
    double extent = 1;
    for (const cv::Point2d& p : points) extent = std::max({extent, std::abs(p.x), std::abs(p.y)});
    for (const orx::TRoundness* zone : {&ring, &around, &within}) {
        if (!zone->valid()) continue;
        const double slack = 1e-7 * (extent + zone->outerRadius);
        require(fuzz::nearly(zone->value, zone->outerRadius - zone->innerRadius, 1e-6),
                "the width of the zone");
        for (const cv::Point2d& p : points) {
            const double r = cv::norm(p - zone->center);
            require(r <= zone->outerRadius + slack && r >= zone->innerRadius - slack,
                    "the zone holds all points");
        }
        // The share of the noise is that of simulated outlines, and chance may make it less than nothing.
        require(zone->freed >= 0 && zone->freed <= zone->value + zone->deviation + slack,
                "without the noise it is no wider");
        for (const int i : zone->contacts)
            require(i >= 0 && i < static_cast<int>(points.size()), "contacts are points");
    }
    if (ring.valid() && around.valid())
        require(ring.value <= around.value + 1e-6 * extent, "no ring is narrower");
    if (around.valid() && extent < 1e4) {
        cv::Point2f middle;
        float radius = 0;
        cv::minEnclosingCircle(std::vector<cv::Point2f>(points.begin(), points.end()), middle, radius);
        require(around.outerRadius <= radius + 1e-3 * extent, "no circle around is smaller");
    }
    if (!strip.valid()) return;
    double least = 1e300;
    double most = -1e300;
    for (const cv::Point2d& p : points) {
        const double away = strip.direction.cross(p - strip.point);
        least = std::min(least, away);
        most = std::max(most, away);
    }
    require(most - least <= strip.value + 1e-7 * extent, "the strip holds all points");
    for (int i = 0; i < 180; i += 7) {
        const cv::Point2d d(std::cos(i * CV_PI / 180), std::sin(i * CV_PI / 180));
        double low = 1e300;
        double high = -1e300;
        for (const cv::Point2d& p : points) {
            low = std::min(low, d.cross(p));
            high = std::max(high, d.cross(p));
        }
        require(strip.value <= high - low + 1e-7 * extent, "no strip is narrower");
    }
}

void checkValue(const orx::TMeasuredValue& value) {
    require(*orx::relationStatusText(value.status) != 0, "a status has a text");
    if (!value.valid()) return;
    require(std::isfinite(value.value) && value.deviation >= 0, "values have an uncertainty");
}

void checkRelations(fuzz::Input& input) {
    const std::vector<cv::Point2d> points[4] = {input.points(30), input.points(30), input.points(30),
                                                input.points(30)};
    const orx::TMeasuredLine a = orx::fitLineGeometric(points[0]);
    const orx::TMeasuredLine b = orx::fitLineGeometric(points[1]);
    const orx::TMeasuredCircle c = orx::fitCircleGeometric(points[2]);
    const orx::TMeasuredCircle d = orx::fitCircleGeometric(points[3]);
    const orx::TMeasuredEllipse e = orx::fitEllipseGeometric(points[2]);
    const orx::TMeasuredPoint p = orx::centerOf(c);
    const orx::TMeasuredValue apart = orx::distance(c, d);
    const orx::TLineDistance lines = orx::distance(a, b);
    for (const orx::TMeasuredValue& value :
         {apart, orx::distance(p, orx::centerOf(e)), orx::signedDistance(p, a), orx::distance(p, a),
          orx::gap(c, d), orx::angle(a, b), orx::signedAngle(a, b), orx::parallelism(a, b),
          orx::perpendicularity(a, b), orx::concentricity(c, d), lines.middle, lines.least, lines.largest})
        checkValue(value);
    if (apart.valid()) {
        require(fuzz::nearly(apart.value, cv::norm(c.center - d.center), 1e-9),
                "the distance of the centres");
        require(fuzz::nearly(orx::distance(d, c).value, apart.value) &&
                    fuzz::nearly(orx::distance(d, c).deviation, apart.deviation, 1e-6),
                "either way alike");
    }
    if (a.valid() && p.valid())
        require(fuzz::nearly(orx::signedDistance(p, a).value, a.signedDistance(c.center), 1e-9),
                "across the line");
    const orx::TMeasuredValue angle = orx::angle(a, b);
    if (angle.valid()) {
        require(angle.value >= 0 && angle.value <= 90.0001, "angles in range");
        require(fuzz::nearly(orx::angle(b, a).value, angle.value, 1e-6), "either way alike");
    }
    const orx::TMeasuredPoint cross = orx::intersection(a, b);
    const double reach = 1e-6 * (1 + std::abs(cross.position.x) + std::abs(cross.position.y));
    if (cross.valid()) {
        require(std::abs(a.signedDistance(cross.position)) < reach &&
                    std::abs(b.signedDistance(cross.position)) < reach,
                "the intersection is on both lines");
    }
    for (const orx::TMeasuredPoint& q : orx::intersections(a, c).points)
        require(std::abs(a.signedDistance(q.position)) < 1e-5 * (1 + c.radius + cv::norm(q.position)),
                "on the line");
    for (const orx::TMeasuredPoint& q : orx::intersections(c, d).points) {
        require(
            std::abs(c.signedDistance(q.position)) < 1e-5 * (1 + c.radius + d.radius + cv::norm(q.position)),
            "on the circle");
    }
    orx::pointOn(a, input.number());
}

orx::TTolerance tolerance(fuzz::Input& input) {
    orx::TTolerance limits;
    if (input.flag()) limits.lower = input.number();
    if (input.flag()) limits.upper = input.number();
    return limits;
}

void checkVerdict(fuzz::Input& input) {
    const orx::TTolerance limits = tolerance(input);
    const double value = input.number();
    const double deviation = input.option(0, 2);
    const double freedom = input.option(1, 50);
    const double confidence = input.option(0.5, 0.9999);
    const orx::TJudgement judged = orx::judge(value, deviation, freedom, limits, confidence);
    require(*orx::verdictText(judged.verdict) != 0, "a verdict has a text");
    if (judged.verdict == orx::vdNotMeasured || judged.verdict == orx::vdNoLimits) return;
    require(judged.conformity >= 0 && judged.conformity <= 1 && judged.guard >= 0,
            "a probability and a guard band");
    const bool inside = value >= limits.lower && value <= limits.upper;
    if (judged.verdict == orx::vdPass)
        require(inside && judged.conformity >= confidence - 1e-9, "a pass is sure enough");
    if (judged.verdict == orx::vdFail) require(!inside, "a fail lies outside");
    // Better known is judged no more cautiously.
    const orx::TJudgement sure = orx::judge(value, 0, freedom, limits, confidence);
    require(sure.verdict == (inside ? orx::vdPass : orx::vdFail), "without uncertainty the limits decide");
    for (int a = 0; a < 5; ++a) {
        const auto verdict = static_cast<orx::TVerdict>(a);
        require(orx::worseVerdict(verdict, judged.verdict) == orx::worseVerdict(judged.verdict, verdict),
                "either way");
    }
}

void checkStatistics(fuzz::Input& input) {
    const orx::TTolerance limits = tolerance(input);
    orx::TRunStatistics run(limits);
    orx::TGaugeStudy study(limits);
    std::vector<double> values;
    const bool modest = input.flag();
    int parts = 0;
    while (!input.atEnd() && parts < 2000) {
        const double value = modest ? 0.25 * input.byte() : input.number();
        const auto verdict = static_cast<orx::TVerdict>(input.between(0, 4));
        run.add(value, verdict);
        const int part = modest ? input.between(-1, 9) : input.integer() % 300;
        require(study.add(part, value) == (part >= 0 && std::isfinite(value)), "parts have numbers");
        if (std::isfinite(value) && verdict != orx::vdNotMeasured) values.push_back(value);
        ++parts;
    }
    std::int64_t verdicts = 0;
    for (int v = 0; v < 5; ++v) verdicts += run.countOf(static_cast<orx::TVerdict>(v));
    require(
        run.parts() == parts && verdicts == parts && run.count() == static_cast<std::int64_t>(values.size()),
        "all are counted");
    const orx::TRunHistogram histogram = run.histogram();
    std::int64_t binned = histogram.below + histogram.above;
    for (const std::int64_t n : histogram.counts) binned += n;
    require(binned == run.count() && histogram.counts.size() <= 64, "each value is in a bin");
    std::int64_t charted = 0;
    for (const orx::TRunChartPoint& point : run.chart()) {
        charted += point.count;
        require(point.least <= point.largest || point.count == 0, "the least is not above the largest");
    }
    require(charted == run.count() && run.chart().size() <= 400, "each value is in the chart");
    run.cp();
    run.cpk();
    study.result();
    if (!modest || values.empty()) return;
    double sum = 0;
    for (const double v : values) sum += v;
    const double mean = sum / static_cast<double>(values.size());
    double squares = 0;
    for (const double v : values) squares += (v - mean) * (v - mean);
    require(fuzz::nearly(run.mean(), mean), "the mean by a plain loop");
    require(run.least() == *std::min_element(values.begin(), values.end()) &&
                run.largest() == *std::max_element(values.begin(), values.end()),
            "least and largest by a plain loop");
    if (values.size() > 1)
        require(fuzz::nearly(run.deviation(), std::sqrt(squares / static_cast<double>(values.size() - 1))),
                "the deviation by a plain loop");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkForm, checkRelations, checkVerdict, checkStatistics}, bytes, size);
    return 0;
}
