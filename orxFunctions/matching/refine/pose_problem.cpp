#include "orxFunctions/matching/refine/pose_problem.h"

namespace orx::matching {

PoseProblem::PoseProblem(double radius, bool turns, bool grows)
    : radius_(radius), turns_(turns), grows_(grows) {}

cv::Vec4d PoseProblem::slope(const Match& match) const {
    const cv::Point2d n = match.normal;
    return {n.x, n.y, turns_ ? (match.arm.x * n.y - match.arm.y * n.x) / radius_ : 0.0,
            grows_ ? match.arm.dot(n) / radius_ : 0.0};
}

void PoseProblem::add(const PoseProblem& other) {
    normal_ += other.normal_;
    right_ += other.right_;
}

void PoseProblem::add(const Match& match, double weight) {
    const cv::Vec4d row = slope(match);
    for (int i = 0; i < 4; ++i) {
        for (int j = i; j < 4; ++j) normal_(i, j) += weight * row[i] * row[j];
    }
    right_ += weight * match.distance * row;
}

void PoseProblem::add(const std::vector<Match>& matches, const std::vector<double>& weights) {
    // As add() has it, one by one, in numbers that stay in registers.
    double normal[4][4];
    double right[4];
    for (int i = 0; i < 4; ++i) {
        right[i] = right_[i];
        for (int j = 0; j < 4; ++j) normal[i][j] = normal_(i, j);
    }
    for (std::size_t k = 0; k < weights.size(); ++k) {
        const double weight = weights[k];
        if (!(weight > 0)) continue;
        const cv::Vec4d row = slope(matches[k]);
        const double pull = weight * matches[k].distance;
        for (int i = 0; i < 4; ++i) {
            const double weighted = weight * row[i];
            for (int j = i; j < 4; ++j) normal[i][j] += weighted * row[j];
            right[i] += pull * row[i];
        }
    }
    for (int i = 0; i < 4; ++i) {
        right_[i] = right[i];
        for (int j = i; j < 4; ++j) normal_(i, j) = normal[i][j];
    }
}

void PoseProblem::solve(double leastShare) {
    const double weight = normal_(0, 0) + normal_(1, 1);  // of all points: normals have length 1
    step_ = {};
    covariance_ = cv::Matx44d::zeros();
    open_.clear();
    cv::Matx44d shares = cv::Matx44d::zeros();
    for (int i = 0; i < 4; ++i) {
        for (int j = i; j < 4; ++j) shares(i, j) = shares(j, i) = weight > 0 ? normal_(i, j) / weight : 0;
    }
    // Out of the way of what was asked for.
    constexpr double kFixed = 1e3;
    if (!turns_) shares(2, 2) = kFixed;
    if (!grows_) shares(3, 3) = kFixed;
    cv::Vec4d values;
    cv::Matx44d vectors;  // in rows
    cv::eigen(shares, values, vectors);
    for (int k = 0; k < 4; ++k) {
        const cv::Vec4d direction(vectors(k, 0), vectors(k, 1), vectors(k, 2), vectors(k, 3));
        if (values[k] >= kFixed / 2) continue;
        if (!(values[k] > leastShare)) {
            open_.push_back(direction);
            continue;
        }
        const double variance = 1 / (values[k] * weight);
        step_ += direction.dot(right_) * variance * direction;
        covariance_ += variance * direction * direction.t();
    }
}

}  // namespace orx::matching
