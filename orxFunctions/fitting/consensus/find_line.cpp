#include "orxFunctions/fitting/consensus_fit.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/fitting/consensus/finder.h"
#include "orxFunctions/fitting/geometric/line_steps.h"
#include "orxFunctions/fitting/geometric/measured_line.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

using namespace distance_kernels;
using namespace geometric;

class LineModel {
  public:
    using Shape = Line;
    using Measured = TMeasuredLine;
    static constexpr std::size_t kSample = 2;
    static constexpr int kParameters = 2;
    static constexpr std::size_t kLeastPoints = 3;
    static constexpr TFitStatus kNoShape = fsCoincident;

    LineModel(const FitPoints& points, const TConsensusOptions& options)
        : kernels_(consensus_kernels::chosen()),
          rounding_(points.rounding()),
          along_(std::cos(radians(options.angle)), std::sin(radians(options.angle))),
          most_(radians(options.angleTolerance)),
          free_(options.angleTolerance == 90.0),
          leeway_(2.0 * options.tolerance / points.scale()) {}

    bool through(const Columns& points, const std::size_t* at, Line& line, bool& any) const {
        const cv::Point2d a(points.x[at[0]], points.y[at[0]]);
        const cv::Point2d b(points.x[at[1]], points.y[at[1]]);
        if (!lineThrough(a, b, line)) return false;
        any = true;
        return free_ || turn(line) <= most_ + leeway_ / cv::norm(b - a);
    }

    consensus_kernels::Support support(const consensus_kernels::PointSpan& points, const Line& line,
                                       const consensus_kernels::Bar& bar) const {
        return kernels_.ofLine(points, line, bar);
    }

    bool polish(const Columns& points, double /*share*/, double tolerance, Line& line) const {
        for (const auto& [bend, steps] : consensus::kPolish) {
            const Loss loss = consensus::polishLoss(bend * tolerance);
            const LineSolution solution = refineLine(points, line, loss, steps, rounding_);
            if (solution.status == fsCoincident) return false;
            line = solution.line;
        }
        return true;
    }

    void settle(const FitPoints& points, Start<Line>& start) const {
        constexpr int kSteps = 10;
        int iterations = 0;
        settleLine(points.columns(), kSteps, rounding_, start.shape, start.scale, iterations);
    }

    bool accepts(const Line& line, const TMeasuredLine&) const { return allowed(line); }
    // Within the square of this side that the points lie in, at most.
    static double length(const Line&, double side) { return std::sqrt(2.0) * side; }

    bool allowed(const Line& line) const { return free_ || turn(line) <= most_; }

    static void distances(const Columns& points, const Line& line, double* to) {
        distance_kernels::chosen().lineDistances(points, line, to);
    }

    static Line inColumns(const FitPoints& points, const TMeasuredLine& line) {
        const cv::Point2d p = points.fromPixels(line.point);
        return {p.x, p.y, line.normal().x, line.normal().y};
    }

  private:
    // From the angle asked for, radians in [0, pi / 2].
    double turn(const Line& line) const {
        const cv::Point2d normal(line.nx, line.ny);
        return std::atan2(std::abs(normal.dot(along_)), std::abs(normal.cross(along_)));
    }

    const consensus_kernels::Kernels& kernels_;
    double rounding_;
    cv::Point2d along_;
    double most_;
    bool free_;
    double leeway_;
};

}  // namespace

TMeasuredLine findLine(const std::vector<cv::Point2d>& points, const TConsensusOptions& options) {
    return consensus::bestShape<LineModel>(points, options, "findLine");
}

TMeasuredLine findLine(const std::vector<cv::Point2f>& points, const TConsensusOptions& options) {
    return consensus::bestShape<LineModel>(points, options, "findLine");
}

std::vector<TMeasuredLine> findLines(const std::vector<cv::Point2d>& points, const TConsensusOptions& options,
                                     int most) {
    return consensus::allShapes<LineModel>(points, options, most, "findLines");
}

std::vector<TMeasuredLine> findLines(const std::vector<cv::Point2f>& points, const TConsensusOptions& options,
                                     int most) {
    return consensus::allShapes<LineModel>(points, options, most, "findLines");
}

}  // namespace orx
