#include "orxFunctions/fitting/ellipse_grading_internal.h"

#include <algorithm>

namespace orx {

bool gradeEllipse(const ellipse_kernels::CentredConic& conic, const std::vector<cv::Point2f>& points,
                  float threshold, double worstMean, EllipseGrade& out) {
    using ellipse_kernels::kGradingBlock;
    const ellipse_kernels::Kernels& kernels = ellipse_kernels::chosen();
    const auto limit = static_cast<double>(threshold);
    const auto n = static_cast<double>(points.size());
    double sum = 0;
    std::size_t inliers = 0;
    double errors[kGradingBlock];
    for (std::size_t start = 0; start < points.size(); start += kGradingBlock) {
        const std::size_t count = std::min(kGradingBlock, points.size() - start);
        kernels.radialErrors(conic, &points[start].x, count, errors);
        for (std::size_t i = 0; i < count; ++i) {
            sum += errors[i];
            inliers += errors[i] < limit ? 1U : 0U;
        }
        // Errors are never negative: the mean can only grow.
        if (sum / n > worstMean) return false;
    }
    out = {sum / n, static_cast<float>(inliers) / static_cast<float>(points.size())};
    return true;
}

}  // namespace orx
