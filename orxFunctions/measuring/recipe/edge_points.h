// The edge points of a feature, found within its search band.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_EDGE_POINTS_H
#define ORXFUNCTIONS_MEASURING_RECIPE_EDGE_POINTS_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/measuring/recipe/curve.h"
#include "orxFunctions/measuring/recipe/frame.h"
#include "orxFunctions/measuring/recipe/picture.h"
#include "orxFunctions/measuring/recipe/recipe_data.h"

namespace orx::recipes {

struct EdgePoints {
    std::vector<cv::Point2d> points;   // pixels, in order along the outline
    std::vector<cv::Point2d> normals;  // of length 1, across it
    std::vector<double> deviations;    // across it, pixels, by the picture's noise
    bool weighted = false;             // whether fits should weigh the points by them
    TPointNoise noise = pnNormal;
    double smoothing = 1.0;  // for chains, pixels
    bool closed = false;     // the last point is followed by the first
    double blur = 0.0;       // of the edge, pixels; 0 where it is not told
    int searched = 0;
};

// By calipers across the nominal outline, or at most `most` of them (0: as many as the feature wants).
EdgePoints caliperPoints(const Picture& picture, const FeatureSpec& asked, const Frame& frame, int most = 0);

// By a probe on every pixel of an outline known to a pixel or two.
EdgePoints probedPoints(const Picture& picture, const FeatureSpec& asked, const Curve& curve,
                        const ToImage& toImage, double blur);

// Of the metric edges within the band around the nominal outline; of the longest alone if so wanted.
EdgePoints chainPoints(const Picture& picture, const FeatureSpec& asked, const Frame& frame,
                       bool longestAlone);

// The standard deviation along a caliper of an edge found by it, by the picture's noise.
double caliperDeviation(const TContrastEdge& edge, double noise, double sigma, double width);

// How far the band of a feature reaches to either side, pixels.
double bandOf(const FeatureSpec& asked, const Frame& frame);

}  // namespace orx::recipes

#endif
