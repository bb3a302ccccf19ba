#include "orxFunctions/fitting/ellipse_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "orxFunctions/fitting/ellipse_conic_internal.h"
#include "orxFunctions/fitting/ellipse_grading_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/runtime_random_internal.h"

namespace orxFit {
namespace {

using orx::Conic;
using orx::EllipseGrade;
using orx::TEllipse;
using orx::ellipse_kernels::CentredConic;

constexpr std::size_t kSampleSize = 6;

// The axes that a caller accepts.
struct AxisBands {
    double minLow;
    double minHigh;
    double maxLow;
    double maxHigh;

    bool accept(const TEllipse& ellipse) const {
        if (std::isnan(ellipse.width) || std::isnan(ellipse.height)) return false;
        const auto shorter = static_cast<double>(std::min(ellipse.width, ellipse.height));
        const auto longer = static_cast<double>(std::max(ellipse.width, ellipse.height));
        return minLow <= shorter && shorter <= minHigh && maxLow <= longer && longer <= maxHigh;
    }
};

float toFloat(double v) {
    constexpr auto kLargest = static_cast<double>(std::numeric_limits<float>::max());
    return static_cast<float>(std::isnan(v) ? v : std::clamp(v, -kLargest, kLargest));
}

// An ellipse as it is reported, and as it is graded: without the rounding to single precision.
struct FittedEllipse {
    TEllipse record;
    CentredConic centred{};
    bool found = false;
};

FittedEllipse ellipseOf(const Conic& conic) {
    const auto [A, B, C, D, E, F] = conic;
    const double x0 = (B * E - 2 * C * D) / (4 * A * C - B * B);
    const double y0 = (B * D - 2 * A * E) / (4 * A * C - B * B);
    const double g = 2 * (A * x0 * x0 + C * y0 * y0 + B * x0 * y0 - 1);
    const double q = std::sqrt((A - C) * (A - C) + B * B);
    const double a1 = std::sqrt(g / (A + C - q));
    const double a2 = std::sqrt(g / (A + C + q));
    const double angle = orx::degrees(std::atan2(B, A - C) * 0.5) + (a2 > a1 ? 90 : 0);
    FittedEllipse out;
    out.record.x = toFloat(x0);
    out.record.y = toFloat(y0);
    // a2 is the half axis along atan2(B, A - C) / 2 and a1 the one across it. Which of them is shorter
    // depends on the sign that F = 1 gave the conic; the added 90 degrees follow it, so along the angle
    // always lies the shorter.
    out.record.width = toFloat(2 * (a2 > a1 ? a1 : a2));
    out.record.height = toFloat(2 * (a2 > a1 ? a2 : a1));
    out.record.angle = toFloat(angle);
    out.record.A = toFloat(A);
    out.record.B = toFloat(B);
    out.record.C = toFloat(C);
    out.record.D = toFloat(D);
    out.record.E = toFloat(E);
    out.record.F = toFloat(F);
    out.centred = {x0, y0, A, B, C, -g / 2};
    return out;
}

// Fits and compares with the bands. False when there is no ellipse (an all-zero record) or no acceptable one.
bool fitWithin(const cv::Point2f* points, std::size_t count, const AxisBands& bands, FittedEllipse& out) {
    out = {};
    Conic conic{};
    if (!orx::fitConic(points, count, conic)) return false;
    out = ellipseOf(conic);
    out.found = true;
    return bands.accept(out.record);
}

void sortByPolarAngle(std::vector<cv::Point2f>& points) {
    double sumX = 0;
    double sumY = 0;
    for (const cv::Point2f& p : points) {
        sumX += static_cast<double>(p.x);
        sumY += static_cast<double>(p.y);
    }
    const double meanX = sumX / static_cast<double>(points.size());
    const double meanY = sumY / static_cast<double>(points.size());
    struct Keyed {
        double angle;
        cv::Point2f point;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(points.size());
    for (const cv::Point2f& p : points) {
        keyed.push_back({std::atan2(static_cast<double>(p.y) - meanY, static_cast<double>(p.x) - meanX), p});
    }
    // Stable, so that the same list always gives the same order on every platform.
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const Keyed& l, const Keyed& r) { return l.angle < r.angle; });
    std::transform(keyed.begin(), keyed.end(), points.begin(), [](const Keyed& k) { return k.point; });
}

bool allFinite(const std::vector<cv::Point2f>& points) {
    return std::all_of(points.begin(), points.end(),
                       [](const cv::Point2f& p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

// Why such points determine no ellipse.
void refusePoints(const std::vector<cv::Point2f>& points, const char* function) {
    if (points.size() < kSampleSize)
        orx::refuse(orx::rcTooFew, function, "%zu points; at least %zu are taken", points.size(),
                    kSampleSize);
    else if (!allFinite(points))
        orx::refuse(orx::rcNotFinite, function, "a coordinate is not a finite number");
    else
        orx::refuse(orx::rcDegenerate, function, "the points lie on a line or in too few places");
}

// Six points, `step` apart in the sorted list.
std::array<cv::Point2f, kSampleSize> sampleFrom(const std::vector<cv::Point2f>& points, std::size_t start,
                                                std::size_t step) {
    std::array<cv::Point2f, kSampleSize> sample;
    for (std::size_t i = 0; i < kSampleSize; ++i) {
        sample[i] = points[std::min(start + i * step, points.size() - 1)];
    }
    return sample;
}

}  // namespace

TEllipse fitEllipseNorm(std::vector<cv::Point2f> points, double errorThreshold, double minInlierRatio,
                        double minAxisLow, double minAxisHigh, double maxAxisLow, double maxAxisHigh) {
    const AxisBands bands{minAxisLow, minAxisHigh, maxAxisLow, maxAxisHigh};
    FittedEllipse fitted;
    if (!fitWithin(points.data(), points.size(), bands, fitted)) {
        if (fitted.found)
            orx::refuse(orx::rcNoResult, "fitEllipseNorm",
                        "axes of %g and %g pixels lie outside of the bands",
                        static_cast<double>(fitted.record.width), static_cast<double>(fitted.record.height));
        else
            refusePoints(points, "fitEllipseNorm");
        return fitted.record;
    }
    EllipseGrade grade{};
    constexpr double kAnyMean = std::numeric_limits<double>::infinity();
    orx::gradeEllipse(fitted.centred, points, toFloat(errorThreshold), kAnyMean, grade);
    fitted.record.meanError = grade.meanError;
    fitted.record.inlierRatio = grade.inlierRatio;
    if (static_cast<double>(grade.inlierRatio) > minInlierRatio)
        fitted.record.valid = 1;
    else
        orx::refuse(orx::rcNoResult, "fitEllipseNorm",
                    "a share of %g of the points lies near; more than %g is asked for",
                    static_cast<double>(grade.inlierRatio), minInlierRatio);
    return fitted.record;
}

TEllipse fitEllipseRansac(std::vector<cv::Point2f> points, double errorThreshold, double iterations,
                          double minInlierRatio, double minAxisLow, double minAxisHigh, double maxAxisLow,
                          double maxAxisHigh) {
    constexpr double kGoodRatio = 0.9;
    constexpr double kGoodMean = 0.2;
    if (points.size() < kSampleSize || !allFinite(points)) {
        refusePoints(points, "fitEllipseRansac");
        return {};
    }
    if (!(iterations > 0)) {
        orx::refuse(orx::rcOption, "fitEllipseRansac", "%g trials; more than 0 are taken", iterations);
        return {};
    }
    const AxisBands bands{minAxisLow, minAxisHigh, maxAxisLow, maxAxisHigh};
    const float threshold = toFloat(errorThreshold);
    sortByPolarAngle(points);

    const std::size_t step = points.size() / kSampleSize;
    std::vector<bool> seen(step + 1);
    std::size_t unseen = step + 1;
    TEllipse best;
    double bestMean = 9999999.0;
    // Larger counts could not be counted down, nor would they seed anything new.
    double counter = std::min(iterations, static_cast<double>(std::numeric_limits<int>::max()));
    orx::platform::RuntimeRandom random;
    while (counter > 0 && unseen > 0) {
        counter -= 1;
        random.seed(static_cast<unsigned>(static_cast<int>(counter)));
        const std::size_t start = static_cast<std::size_t>(random.draw()) % (step + 1);
        if (seen[start]) continue;
        seen[start] = true;
        --unseen;
        FittedEllipse trial;
        if (!fitWithin(sampleFrom(points, start, step).data(), kSampleSize, bands, trial)) continue;
        EllipseGrade grade{};
        // A worse mean can neither win nor end the search.
        if (!orx::gradeEllipse(trial.centred, points, threshold, std::max(bestMean, kGoodMean), grade))
            continue;
        const auto ratio = static_cast<double>(grade.inlierRatio);
        if (ratio > minInlierRatio && grade.meanError < bestMean) {
            best = trial.record;
            best.meanError = grade.meanError;
            best.inlierRatio = grade.inlierRatio;
            best.valid = 1;
            bestMean = grade.meanError;
        }
        if (ratio > kGoodRatio && grade.meanError < kGoodMean) break;
    }
    random.leaveToRuntime();
    if (best.valid == 0)
        orx::refuse(orx::rcNoResult, "fitEllipseRansac",
                    "no ellipse within the bands is near more than %g of the points", minInlierRatio);
    return best;
}

}  // namespace orxFit
