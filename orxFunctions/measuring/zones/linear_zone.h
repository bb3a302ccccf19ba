// The zone of least width and the least bound from above of departures that change linearly with the shift of
// the shape: linear programmes of three and four unknowns.
#ifndef ORXFUNCTIONS_MEASURING_ZONES_LINEAR_ZONE_H
#define ORXFUNCTIONS_MEASURING_ZONES_LINEAR_ZONE_H

#include <cmath>
#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

namespace orx::zones {

// A condition row . x >= least.
template <int kUnknowns>
struct Condition {
    cv::Vec<double, kUnknowns> row;
    double least;
};

// The dual simplex method: minimises cost . x. `basis` are kUnknowns conditions that bound it, of which cost
// is a sum with factors of 0 or more; false where they are not independent.
template <int kUnknowns>
bool minimise(const std::vector<Condition<kUnknowns>>& conditions, const cv::Vec<double, kUnknowns>& cost,
              Condition<kUnknowns> (&basis)[kUnknowns], double rounding, cv::Vec<double, kUnknowns>& x) {
    using Vector = cv::Vec<double, kUnknowns>;
    constexpr int kMostExchanges = 200;
    for (int exchange = 0; exchange < kMostExchanges; ++exchange) {
        cv::Matx<double, kUnknowns, kUnknowns> rows;
        Vector least;
        for (int i = 0; i < kUnknowns; ++i) {
            for (int k = 0; k < kUnknowns; ++k) rows(i, k) = basis[i].row[k];
            least[i] = basis[i].least;
        }
        bool regular = false;
        const auto inverse = rows.inv(cv::DECOMP_LU, &regular);
        if (!regular) return false;
        x = inverse * least;
        const Condition<kUnknowns>* entering = nullptr;
        double most = rounding;
        for (const auto& condition : conditions) {
            const double lacking = condition.least - condition.row.dot(x);
            if (lacking > most) {
                most = lacking;
                entering = &condition;
            }
        }
        if (entering == nullptr) return true;
        const Vector factors = inverse.t() * cost;
        const Vector shares = inverse.t() * entering->row;
        int leaving = -1;
        double smallest = 0.0;
        for (int i = 0; i < kUnknowns; ++i) {
            if (!(shares[i] > 1e-12)) continue;
            const double ratio = std::max(0.0, factors[i]) / shares[i];
            if (leaving < 0 || ratio < smallest) {
                smallest = ratio;
                leaving = i;
            }
        }
        if (leaving < 0) return true;  // only rounding violates it
        basis[leaving] = *entering;
    }
    return true;
}

}  // namespace orx::zones

#endif
