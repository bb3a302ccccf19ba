// Finds taught parts in pictures: anywhere, at any angle and scale, partly hidden, in any light.
#ifndef ORXFUNCTIONS_MATCHING_PART_FINDER_H
#define ORXFUNCTIONS_MATCHING_PART_FINDER_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/matching/part_model.h"
#include "orxFunctions/matching/part_pose.h"

namespace orx {

// Whether bright and dark may be exchanged, against the picture that taught the model.
enum TPartPolarity : int {
    ppSame = 0,
    ppReversed = 1,  // all of the part
    ppEither = 2     // same or reversed, all of the part alike
};

struct TFindOptions {
    // [0, 360] Angles of the reference direction, degrees: from startAngle over angleRange, 0 to 360.
    double startAngle = 0.0;
    double angleRange = 360.0;
    // [1, 1] Scales against the model, 0.2 to 5.
    double minScale = 1.0;
    double maxScale = 1.0;
    TPartPolarity polarity = ppSame;
    // [0.6] Least share of the outline that must be seen, 0.1 to 1.
    double minScore = 0.6;
    // [1] Parts at the most, the best first, 1 to 10,000.
    int maxParts = 1;
    // [0.5] Of two parts whose outlines' boxes cover each other by more than this share of the smaller one,
    // only the better is told; 0 to 1.
    double maxOverlap = 0.5;
    // [whole picture] Where reference points may lie, pixels.
    cv::Rect region;
    // [0.7] 0 follows every candidate that could still reach minScore; 1 gives up early on those that look
    // bad on the coarse levels: faster, and may miss parts that are hidden in large part. 0 to 1.
    double greediness = 0.7;
    // [0] Least contrast of an edge, grey levels; 0 takes a share of the model's, above the picture's noise.
    double minContrast = 0.0;
    // [0] Standard deviation of the picture's noise, grey levels; 0 measures it.
    double noise = 0.0;
};

struct TFoundPart {
    TPartPose pose;
    double score = 0.0;     // share of the outline that is seen, 0 to 1
    bool reversed = false;  // bright and dark are exchanged against the model
    // Of x, y (pixels), angle (degrees) and scale, in that order. What the visible outline can't tell (the
    // angle of a ring, the place along a straight edge; the scale where no range of scales was asked for) has
    // no share in it: see `free`.
    cv::Matx44d covariance = cv::Matx44d::zeros();
    // Directions of (x, y, angle, scale) of length 1 (angles counted as pixels at the outline's radius) that
    // the visible outline can't tell. Empty where it tells all.
    std::vector<cv::Vec4d> free;
    // Standard deviations; infinite where a free direction has a share in the parameter.
    double deviationX = 0.0;
    double deviationY = 0.0;
    double deviationAngle = 0.0;
    double deviationScale = 0.0;
    double rms = 0.0;                 // of the seen points' distances from the picture's edges, pixels
    std::vector<unsigned char> seen;  // for each point of TPartModel::outline() 1 where it is seen
};

struct TFindResult {
    TMatchStatus status = msBadModel;
    std::vector<TFoundPart> parts;  // best first; empty where the part is not there

    bool valid() const { return status == msOk; }
};

// Finds a part in a picture: 8- or 16-bit unsigned, 1 to 4 channels.
ORX_API TFindResult findParts(const cv::Mat& img, const TPartModel& model, const TFindOptions& options = {});

}  // namespace orx

#endif
