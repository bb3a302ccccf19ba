#include "orxFunctions/fitting/consensus_fit.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/consensus/finder.h"
#include "orxFunctions/fitting/geometric/ellipse_steps.h"
#include "orxFunctions/fitting/geometric/measured_ellipse.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

using namespace geometric;

class EllipseModel {
  public:
    using Shape = Ellipse;
    using Measured = TMeasuredEllipse;
    static constexpr std::size_t kSample = 5;
    static constexpr int kParameters = kEllipseParameters;
    static constexpr std::size_t kLeastPoints = kFewestEllipsePoints;
    static constexpr TFitStatus kNoShape = fsNotThatShape;

    EllipseModel(const FitPoints& points, const TConsensusOptions& options)
        : kernels_(consensus_kernels::chosen()),
          rounding_(points.rounding()),
          least_(options.minRadius / points.scale()),
          most_(options.maxRadius / points.scale()),
          leeway_(2.0 * options.tolerance / points.scale()) {}

    bool through(const Columns& points, const std::size_t* at, Ellipse& ellipse, bool& any) const {
        if (!ellipseThrough(points, at, ellipse)) return false;
        any = true;
        return ellipse.b >= least_ - leeway_ && ellipse.a <= std::min(most_ + leeway_, kLargest);
    }

    consensus_kernels::Support support(const consensus_kernels::PointSpan& points, const Ellipse& e,
                                       const consensus_kernels::Bar& bar) const {
        const double a = 1.0 / (e.a * e.a);
        const double b = 1.0 / (e.b * e.b);
        const double xx = a * e.cosine * e.cosine + b * e.sine * e.sine;
        const double xy = 2.0 * (a - b) * e.cosine * e.sine;
        return kernels_.ofEllipse(points, {e.x, e.y, xx, xy, a + b - xx}, bar);
    }

    // Too few of them for a step leave it as it is.
    bool polish(const Columns& points, double /*share*/, double tolerance, Ellipse& ellipse) const {
        for (const auto& [bend, steps] : consensus::kPolish) {
            const Loss loss = consensus::polishLoss(bend * tolerance);
            const EllipseSolution solution = refineEllipse(points, ellipse, loss, steps, rounding_);
            if (solution.status != fsOk && solution.status != fsNotConverged)
                return shapely(ellipse, tolerance);
            ellipse = solution.ellipse;
        }
        return shapely(ellipse, tolerance);
    }

    void settle(const FitPoints& points, Start<Ellipse>& start) const {
        constexpr int kSteps = 10;
        int iterations = 0;
        settleEllipse(points.columns(), kSteps, rounding_, start.shape, start.scale, iterations);
    }

    bool accepts(const Ellipse& ellipse, const TMeasuredEllipse&) const { return allowed(ellipse); }
    // Within the square of this side that the points lie in, at most.
    static double length(const Ellipse& e, double side) {
        return std::min(2.0 * kPi * std::sqrt((e.a * e.a + e.b * e.b) / 2.0), 4.0 * side);
    }

    bool allowed(const Ellipse& ellipse) const { return ellipse.b >= least_ && ellipse.a <= most_; }

    static void distances(const Columns& points, const Ellipse& ellipse, double* to) {
        foot_kernels::chosen().nearDistances(points, ellipse, to);
    }

    static Ellipse inColumns(const FitPoints& points, const TMeasuredEllipse& e) {
        const cv::Point2d center = points.fromPixels(e.center);
        const double angle = radians(e.angle);
        return {center.x,        center.y,       e.semiMajor / points.scale(), e.semiMinor / points.scale(),
                std::cos(angle), std::sin(angle)};
    }

  private:
    // Columns reach to 1: what is so much longer is a parabola or a straight edge, and what is flatter than
    // the tolerance a straight edge on both sides.
    static constexpr double kLargest = 20.0;
    static bool shapely(const Ellipse& e, double tolerance) { return e.a <= kLargest && e.b > tolerance; }

    const consensus_kernels::Kernels& kernels_;
    double rounding_;
    double least_;
    double most_;
    double leeway_;
};

}  // namespace

TMeasuredEllipse findEllipse(const std::vector<cv::Point2d>& points, const TConsensusOptions& options) {
    return consensus::bestShape<EllipseModel>(points, options, "findEllipse");
}

TMeasuredEllipse findEllipse(const std::vector<cv::Point2f>& points, const TConsensusOptions& options) {
    return consensus::bestShape<EllipseModel>(points, options, "findEllipse");
}

}  // namespace orx
