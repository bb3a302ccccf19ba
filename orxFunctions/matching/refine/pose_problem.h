// The least-squares problem of a pose: which step lays the outline over its edges, what it leaves open, and
// what can't be told at all.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_POSE_PROBLEM_H
#define ORXFUNCTIONS_MATCHING_REFINE_POSE_PROBLEM_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/refine/outline_match.h"

namespace orx::matching {

// Steps are (x, y, turn, growth) of the outline about its centre, all in pixels: turn and growth are what
// they move a point at the outline's radius by.
class PoseProblem {
  public:
    // `radius` of the outline in the picture, pixels. A turn or a growth that is not asked for stays 0.
    PoseProblem(double radius, bool turns, bool grows);

    // How match.distance falls with a step.
    cv::Vec4d slope(const Match& match) const;
    // The outline's point asks to move by match.distance along its normal.
    void add(const Match& match, double weight);
    // Each match by its weight, where that is above 0.
    void add(const std::vector<Match>& matches, const std::vector<double>& weights);
    // All that the other problem, of the same outline, was asked.
    void add(const PoseProblem& other);
    // `leastShare`: directions in which an outline point tells on average less than this share of what it
    // tells across itself are not told at all.
    void solve(double leastShare);

    // All about the last solve():
    cv::Vec4d step() const { return step_; }
    // Of the step where 1 / weight is the variance of a match's distance, and matches are independent;
    // without the directions that are not told.
    const cv::Matx44d& covariance() const { return covariance_; }
    // Those directions, of length 1. A turn that was not asked for is none of them, nor is a growth.
    const std::vector<cv::Vec4d>& open() const { return open_; }

  private:
    double radius_;
    bool turns_;
    bool grows_;
    cv::Matx44d normal_ = cv::Matx44d::zeros();
    cv::Vec4d right_;
    cv::Vec4d step_;
    cv::Matx44d covariance_ = cv::Matx44d::zeros();
    std::vector<cv::Vec4d> open_;
};

}  // namespace orx::matching

#endif
