// Parts that are round but for a few details, as a ring with a notch: the search may find them turned, since
// the details make little of the score.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_TURN_SCAN_H
#define ORXFUNCTIONS_MATCHING_REFINE_TURN_SCAN_H

#include <vector>

#include "orxFunctions/matching/refine/outline_match.h"

namespace orx::matching {

// Angles to look at, radians: from `from` on, over `range`.
struct TurnRange {
    double from = 0.0;
    double range = 0.0;
};

class TurnScan {
  public:
    // Finds the details: points whose edges move when the part turns about its middle. There are none where
    // the part is not nearly round.
    explicit TurnScan(const ReadyOutline& outline);

    // Whether the pose leaves most details unseen.
    bool isDoubtful(const std::vector<Match>& matches) const;
    // The pose, turned so that as many details as possible lie on edges.
    CentredPose turned(const WindowEdges& edges, const CentredPose& pose, bool eitherSign,
                       const TurnRange& range) const;

  private:
    std::size_t hits(const WindowEdges& edges, const CentredPose& pose, bool eitherSign) const;
    CentredPose at(const CentredPose& pose, double angle) const;

    const ReadyOutline& outline_;
    cv::Point2d middle_;                // about the outline's centre, in units of the model
    std::vector<std::size_t> details_;  // points
};

}  // namespace orx::matching

#endif
