#include "orxFunctions/fitting/consensus_fit.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/consensus/finder.h"
#include "orxFunctions/fitting/geometric/circle_steps.h"
#include "orxFunctions/fitting/geometric/measured_circle.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

using namespace distance_kernels;
using namespace geometric;

class CircleModel {
  public:
    using Shape = Circle;
    using Measured = TMeasuredCircle;
    static constexpr std::size_t kSample = 3;
    static constexpr int kParameters = 3;
    static constexpr std::size_t kLeastPoints = 4;
    static constexpr TFitStatus kNoShape = fsCollinear;

    CircleModel(const FitPoints& points, const TConsensusOptions& options)
        : kernels_(consensus_kernels::chosen()),
          distances_(distance_kernels::chosen()),
          rounding_(points.rounding()),
          least_(options.minRadius / points.scale()),
          most_(options.maxRadius / points.scale()),
          leeway_(2.0 * options.tolerance / points.scale()) {}

    bool through(const Columns& points, const std::size_t* at, Circle& circle, bool& any) const {
        const auto point = [&](std::size_t i) { return cv::Point2d(points.x[at[i]], points.y[at[i]]); };
        if (!circleThrough(point(0), point(1), point(2), circle)) return false;
        any = true;
        return circle.r >= least_ - leeway_ && circle.r <= most_ + leeway_;
    }

    consensus_kernels::Support support(const consensus_kernels::PointSpan& points, const Circle& circle,
                                       const consensus_kernels::Bar& bar) const {
        return kernels_.ofCircle(points, circle, bar);
    }

    bool polish(const Columns& points, double share, double tolerance, Circle& circle) const {
        CircleSums sums{};
        for (const auto& [bend, steps] : consensus::kPolish) {
            const Loss loss = consensus::polishLoss(bend * tolerance);
            for (int k = 0; k < steps; ++k) {
                sums = distances_.circleSteps(points, circle, loss);
                Circle step{};
                double fall = 0.0;
                if (!circleStep(sums, 0.0, step, fall)) return false;
                if (!movedCircle(circle, sums, step, 1.0, circle)) return false;
            }
        }
        return radiusTold(sums, circle.r, share);
    }

    void settle(const FitPoints& points, Start<Circle>& start) const {
        constexpr int kSteps = 10;
        int iterations = 0;
        settleCircle(points.columns(), kSteps, rounding_, start.shape, start.scale, iterations);
    }

    bool accepts(const Circle& circle, const TMeasuredCircle& fit) const {
        return allowed(circle) && fit.radiusDeviation < kTold * fit.radius;
    }
    // Within the square of this side that the points lie in, at most.
    static double length(const Circle& circle, double side) {
        return std::min(2.0 * kPi * circle.r, 4.0 * side);
    }

    bool allowed(const Circle& circle) const { return circle.r >= least_ && circle.r <= most_; }

    static void distances(const Columns& points, const Circle& circle, double* to) {
        distance_kernels::chosen().circleDistances(points, circle, to);
    }

    static Circle inColumns(const FitPoints& points, const TMeasuredCircle& circle) {
        const cv::Point2d center = points.fromPixels(circle.center);
        return {center.x, center.y, circle.radius / points.scale()};
    }

  private:
    // A straight edge is no circle, however well a huge one follows it: its curvature is told by less than
    // five of its deviations.
    static constexpr double kTold = 0.2;
    static bool radiusTold(const CircleSums& s, double radius, double share) {
        const double w = s.distances.w;
        const double vv = w - s.uu;
        const double spread = s.uu * vv - s.uv * s.uv;
        if (!(spread > 1e-12 * w * w)) return false;
        // What the centre leaves of the radius in the normal matrix.
        const double left = w - (s.u * s.u * vv - 2.0 * s.u * s.v * s.uv + s.v * s.v * s.uu) / spread;
        const double deviation = noiseOf(s.distances, kParameters) / (kTold * radius);
        return left > share * deviation * deviation;
    }

    const consensus_kernels::Kernels& kernels_;
    const distance_kernels::Kernels& distances_;
    double rounding_;
    double least_;
    double most_;
    double leeway_;
};

}  // namespace

TMeasuredCircle findCircle(const std::vector<cv::Point2d>& points, const TConsensusOptions& options) {
    return consensus::bestShape<CircleModel>(points, options, "findCircle");
}

TMeasuredCircle findCircle(const std::vector<cv::Point2f>& points, const TConsensusOptions& options) {
    return consensus::bestShape<CircleModel>(points, options, "findCircle");
}

std::vector<TMeasuredCircle> findCircles(const std::vector<cv::Point2d>& points,
                                         const TConsensusOptions& options, int most) {
    return consensus::allShapes<CircleModel>(points, options, most, "findCircles");
}

std::vector<TMeasuredCircle> findCircles(const std::vector<cv::Point2f>& points,
                                         const TConsensusOptions& options, int most) {
    return consensus::allShapes<CircleModel>(points, options, most, "findCircles");
}

}  // namespace orx
