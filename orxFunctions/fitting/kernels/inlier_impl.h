// The loops of kernels/inlier.h, compiled once for each instruction set.
#ifndef ORXFUNCTIONS_FITTING_KERNELS_INLIER_IMPL_H
#define ORXFUNCTIONS_FITTING_KERNELS_INLIER_IMPL_H

#include "orxFunctions/fitting/kernels/inlier.h"
#include "orxFunctions/platform/simd/vectors.h"

namespace orx::inlier_kernels::ORX_SIMD {

using namespace orx::ORX_SIMD;

static_assert(kPointsPerStep % VecD::kLanes == 0);

// Counts are compared with the floor after this many points.
constexpr std::size_t kBlock = 32 * kPointsPerStep;

// Which of the points at x, y lie on a line, judged by the distance from the foot of the perpendicular.
class FootPointDistance {
  public:
    explicit FootPointDistance(const LineTest& test)
        : across_(VecD::all(test.across)),
          intercept_(VecD::all(test.intercept)),
          turn_(VecD::all(test.turn)),
          threshold_(VecD::all(test.threshold)) {}

    MaskD inliers(VecD x, VecD y) const {
        const VecD c = y - x * across_;
        const VecD footX = (c - intercept_) / turn_;
        const VecD footY = footX * across_ + c;
        return sqrt((x - footX) * (x - footX) + (y - footY) * (y - footY)) <= threshold_;
    }

  private:
    VecD across_, intercept_, turn_, threshold_;
};

class LineResidual {
  public:
    explicit LineResidual(const LineTest& test)
        : a_(VecD::all(test.a)), b_(VecD::all(test.b)), c_(VecD::all(test.c)) {}

    VecD at(VecD x, VecD y) const { return abs(a_ * x + b_ * y + c_); }

  private:
    VecD a_, b_, c_;
};

class LineInliers {
  public:
    explicit LineInliers(const LineTest& test)
        : residual_(test), inside_(VecD::all(test.inside)), outside_(VecD::all(test.outside)), exact_(test) {}

    MaskD inliers(VecD x, VecD y) const {
        const VecD residual = residual_.at(x, y);
        const MaskD certain = residual <= inside_;
        const MaskD possible = residual <= outside_;
        return certain.lanes() == possible.lanes() ? certain : certain | (possible & exact_.inliers(x, y));
    }

    std::size_t count(const PointSpan& points, std::size_t begin, std::size_t end) const {
        LaneCount certain;
        LaneCount possible;
        for (std::size_t i = begin; i < end; i += VecD::kLanes) {
            const VecD residual = residual_.at(VecD::load(points.x + i), VecD::load(points.y + i));
            certain.add(residual <= inside_);
            possible.add(residual <= outside_);
        }
        const std::size_t total = certain.total();
        return total == possible.total() ? total : countExactly(points, begin, end);
    }

  private:
    std::size_t countExactly(const PointSpan& points, std::size_t begin, std::size_t end) const {
        LaneCount total;
        for (std::size_t i = begin; i < end; i += VecD::kLanes) {
            total.add(inliers(VecD::load(points.x + i), VecD::load(points.y + i)));
        }
        return total.total();
    }

    LineResidual residual_;
    VecD inside_, outside_;
    FootPointDistance exact_;
};

class CircleInliers {
  public:
    explicit CircleInliers(const CircleTest& test)
        : x_(VecD::all(test.x)),
          y_(VecD::all(test.y)),
          nearest_(VecD::all(test.nearest)),
          farthest_(VecD::all(test.farthest)) {}

    MaskD inliers(VecD x, VecD y) const {
        const VecD dx = x_ - x;
        const VecD dy = y_ - y;
        const VecD squared = dx * dx + dy * dy;
        return (nearest_ <= squared) & (squared <= farthest_);
    }

    std::size_t count(const PointSpan& points, std::size_t begin, std::size_t end) const {
        LaneCount total;
        for (std::size_t i = begin; i < end; i += VecD::kLanes) {
            total.add(inliers(VecD::load(points.x + i), VecD::load(points.y + i)));
        }
        return total.total();
    }

  private:
    VecD x_, y_, nearest_, farthest_;
};

template <class Inliers>
std::size_t countAbove(const PointSpan& points, const Inliers& inliers, std::size_t floor) {
    std::size_t count = 0;
    for (std::size_t begin = 0; begin < points.size; begin += kBlock) {
        const std::size_t left = points.size - begin;
        if (count + left <= floor) break;
        count += inliers.count(points, begin, begin + (left < kBlock ? left : kBlock));
    }
    return count;
}

template <class Inliers>
std::size_t list(const PointSpan& points, const Inliers& inliers, std::int32_t* indices) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < points.size; i += VecD::kLanes) {
        const unsigned lanes = inliers.inliers(VecD::load(points.x + i), VecD::load(points.y + i)).lanes();
        for (std::size_t lane = 0; lane < VecD::kLanes; ++lane) {
            // Written always, kept when the lane is set: no branch to mispredict. The index written beyond
            // the last kept one stays within the padding.
            indices[count] = static_cast<std::int32_t>(i + lane);
            count += (lanes >> lane) & 1U;
        }
    }
    return count;
}

inline std::size_t countOnLine(const PointSpan& points, const LineTest& test, std::size_t floor) {
    return countAbove(points, LineInliers(test), floor);
}

inline std::size_t countOnCircle(const PointSpan& points, const CircleTest& test, std::size_t floor) {
    return countAbove(points, CircleInliers(test), floor);
}

inline std::size_t listOnLine(const PointSpan& points, const LineTest& test, std::int32_t* indices) {
    return list(points, LineInliers(test), indices);
}

inline std::size_t listOnCircle(const PointSpan& points, const CircleTest& test, std::int32_t* indices) {
    return list(points, CircleInliers(test), indices);
}

inline constexpr Kernels kKernels = {countOnLine, countOnCircle, listOnLine, listOnCircle};

}  // namespace orx::inlier_kernels::ORX_SIMD

#endif
