// The score of a pose on a level of the picture, and climbing to the best pose nearby.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_POSE_SCORE_H
#define ORXFUNCTIONS_MATCHING_SEARCH_POSE_SCORE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/search/edge_field.h"
#include "orxFunctions/matching/search/kernels.h"
#include "orxFunctions/matching/search/search_plan.h"

namespace orx::matching {

// A place of the middle of the outline, in pixels of a level.
struct LevelPose {
    double x = 0.0;
    double y = 0.0;
    double angle = 0.0;  // radians
    double scale = 1.0;
    bool reversed = false;
    double score = 0.0;
};

// How signs of gradients count against those of the model.
enum class SignRule { same, either, any };

// The score is the mean over the model's points of the cosines between their normals and the directions of
// the edges there, points without an edge and those outside of the picture counting as 0. For SignRule::same
// edges of the other polarity count as 0, too: they belong to what hides the part. For SignRule::either the
// score is the mean's magnitude, for SignRule::any the mean of magnitudes.
// C. Steger, "Occlusion, clutter, and illumination invariant object recognition", International Archives of
// Photogrammetry and Remote Sensing 34 (2002).
//
// One thread at a time; each thread has its own.
class PoseScore {
  public:
    PoseScore(const EdgeField& field, const SearchPlan& plan, const ScaleBand& band, int level,
              SignRule rule);

    // Climbs from a pose that is a few pixels off to the best one nearby.
    LevelPose climbed(const LevelPose& start);
    // The best of the pixels next to a pose, at its angle and scale.
    LevelPose moved(const LevelPose& start);
    // The score at a pose, of as many points as climbed() looks at, with the field between the pixels.
    double exactScore(const LevelPose& pose) const;
    // A pose that climbed() gave, moved to the summit between the pixels, with the score of all points.
    LevelPose refined(const LevelPose& pose) const;

  private:
    // The best place of a window, and its sums.
    struct Place {
        int x = 0;
        int y = 0;
        double angle = 0.0;
        double scale = 1.0;
        std::int32_t sum = 0;                                           // signed
        std::int32_t value = std::numeric_limits<std::int32_t>::min();  // unknown
        double offsetX = 0.0;                                           // of the summit between the pixels
        double offsetY = 0.0;
    };

    Place bestPlace(int x, int y, double angle, double scale);
    // `reach` is how far from the window's middle.
    Place lookAt(int x, int y, double angle, double scale, int reach);
    void place(int x, int y, double angle, double scale);
    // Interpolates the field between pixels, at the points' first `count`.
    double exactScore(const LevelPose& pose, std::size_t count) const;
    LevelPose poseOf(const Place& best) const;
    std::int32_t valueOf(std::int32_t sum) const;
    // Steps to the best of the poses that lookAtStep(i, near) gives for the steps i to either side of 0: of
    // those near 0 first, then as long as it gets better. `best` becomes that pose; returns the summit's
    // place between the steps.
    template <typename LookAtStep>
    double climbSteps(Place& best, const LookAtStep& lookAtStep);
    double climbAngle(Place& best, double step);
    double climbScale(Place& best, double step);
    double allowedAngle(double angle) const;

    const EdgeField& field_;
    const SearchPlan& plan_;
    const ScaleBand& band_;
    int level_;
    SignRule rule_;
    const search_kernels::Kernels& kernels_;
    std::size_t pointCount_ = 0;
    std::vector<std::int32_t> offsets_;
    std::vector<std::int32_t> normals_;
    std::array<std::int32_t, search_kernels::kWindowRows * search_kernels::kWindowColumns> sums_{};
};

}  // namespace orx::matching

#endif
