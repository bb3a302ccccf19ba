// The robust circle by Ceres: geometric distances under Huber's loss, automatic derivatives, dense QR, one
// thread.
#ifndef BENCH_PEERS_CERES_CIRCLE_H
#define BENCH_PEERS_CERES_CIRCLE_H

#include <ceres/ceres.h>

#include <vector>

namespace ceres_circle {

struct Distance {
    double x;
    double y;

    template <class T>
    bool operator()(const T* circle, T* residual) const {
        const T dx = circle[0] - x;
        const T dy = circle[1] - y;
        residual[0] = ceres::sqrt(dx * dx + dy * dy) - circle[2];
        return true;
    }
};

// Turns the start in `circle` (centre, radius) into the result. The loss bends at so many pixels.
template <class Point>
ceres::Solver::Summary fit(const std::vector<Point>& points, double bend, double* circle,
                           ceres::Solver::Options options = {}) {
    ceres::Problem problem;
    for (const Point& p : points) {
        auto* const distance = new Distance{static_cast<double>(p.x), static_cast<double>(p.y)};
        problem.AddResidualBlock(new ceres::AutoDiffCostFunction<Distance, 1, 3>(distance),
                                 new ceres::HuberLoss(bend), circle);
    }
    options.linear_solver_type = ceres::DENSE_QR;
    options.num_threads = 1;
    options.logging_type = ceres::SILENT;
    ceres::Solver::Summary summary;
    ceres::Solve(options, &problem, &summary);
    return summary;
}

}  // namespace ceres_circle

#endif
