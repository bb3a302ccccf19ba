// The outline laid over the edges of a window: for each of its points the edge it belongs to.
#ifndef ORXFUNCTIONS_MATCHING_REFINE_OUTLINE_MATCH_H
#define ORXFUNCTIONS_MATCHING_REFINE_OUTLINE_MATCH_H

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/refine/window_edges.h"

namespace orx::matching {

// A point of the outline, made ready: about the outline's centre, in units of the model.
struct ReadyPoint {
    cv::Point2d position;
    cv::Point2d normal;
    double direction = 0.0;  // of the normal, radians
    double variance = 0.0;   // of the position along the normal
    double length = 0.0;     // of the outline that it stands for
};

struct ReadyOutline {
    std::vector<ReadyPoint> points;
    std::vector<int> chains;  // number of each point's chain
    cv::Point2d centre;       // in the model's plane
    double length = 0.0;
    double radius = 0.0;  // root mean square distance from the centre, above 0
};

// `reversed`: normals point the other way.
ReadyOutline readyOutline(const ModelData& model, bool reversed);

// A pose by where the outline's centre lies.
struct CentredPose {
    cv::Point2d centre;
    double angle = 0.0;  // radians
    double scale = 1.0;
};

CentredPose centredPose(const TPartPose& pose, const ReadyOutline& outline);
TPartPose partPose(const CentredPose& pose, const ReadyOutline& outline);

// A point of the outline in the picture and the edge next to it.
struct Match {
    bool found = false;
    cv::Point2d arm;     // from the outline's centre to the point, pixels
    cv::Point2d normal;  // of the point, in the picture
    // From the point to the edge along the mean of both normals, pixels: between two points of the edge,
    // linearly as far as the edge is an arc, so that it does not matter where on the edge they stand.
    double distance = 0.0;
    double turn = 0.0;      // from the outline's normal to the edge's, radians
    double variance = 0.0;  // of the distance, from the edge and from the model, pixels squared
    KnownEdge known;
};

// Of every `stride`-th point; the others are not found. `matches` may be those of another pose: where they
// are near they make it quicker, and change nothing.
void matchOutline(const ReadyOutline& outline, const WindowEdges& edges, const CentredPose& pose,
                  const EdgeWish& wish, int stride, std::vector<Match>& matches);

}  // namespace orx::matching

#endif
