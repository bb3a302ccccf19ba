// What an outline can't tell, whatever its accuracy: a turn, a shift, the scale.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_FREEDOM_H
#define ORXFUNCTIONS_MATCHING_MODEL_FREEDOM_H

#include <opencv2/core.hpp>

#include "orxFunctions/matching/model/self_match.h"

namespace orx::matching {

struct Freedom {
    bool turn = false;
    cv::Point2d centre;  // of the turn
    bool shift = false;
    double direction = 0;  // of the shift, degrees, 0 to 180
    bool scale = false;
};

// Motions that leave every point of the outline on it: eigenvectors of the point-to-line normal equations
// with an eigenvalue of about 0, tried out on the outline, since noise of the normals hides how small it is.
// N. Gelfand, L. Ikemoto, S. Rusinkiewicz, M. Levoy, "Geometrically stable sampling for the ICP algorithm",
// 3DIM 2003.
Freedom findFreedom(const MatchedOutline& outline);

}  // namespace orx::matching

#endif
