// What a model is made of: what teaching makes, what the search and the refinement read.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_MODEL_DATA_H
#define ORXFUNCTIONS_MATCHING_MODEL_MODEL_DATA_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/part_model.h"

namespace orx::matching {

// A point of the outline in the model's plane: about the reference point, along the reference direction, in
// pixels of the finest level.
struct OutlinePoint {
    cv::Point2d position;
    cv::Point2d normal;      // unit, from dark to bright
    double deviation = 0.0;  // standard deviation of the position along the normal, pixels; 0 from drawings
    double contrast = 0.0;   // grey levels; 0 from drawings
    int chain = 0;           // points of one chain follow each other along the edge
};

struct LevelPoint {
    cv::Point2f position;  // as OutlinePoint's: in pixels of the finest level on all levels
    cv::Point2f normal;
};

// The outline as it looks on one level of a pyramid (pyramid.h); about one point a pixel of that level.
struct ModelLevel {
    std::vector<LevelPoint> points;
};

struct ModelData {
    std::vector<OutlinePoint> outline;
    std::vector<ModelLevel> levels;  // [0] is the finest; each next one is half as large
    double sigma = 1.0;              // smoothing of the edge finder that found the outline
    double contrast = 0.0;           // typical contrast of the outline, grey levels; 0 from drawings
    // Normals say which side is bright. False for drawings that do not: then a normal may point either way,
    // at each point.
    bool signsAreKnown = true;
    TPartPose taught;
    TTeachReport report;  // radius and symmetry among others
};

}  // namespace orx::matching

#endif
