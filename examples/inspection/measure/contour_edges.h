// The edge of an object along its contour, and how far it lies from a shape.
#ifndef EXAMPLES_INSPECTION_CONTOUR_EDGES_H
#define EXAMPLES_INSPECTION_CONTOUR_EDGES_H

#include <opencv2/core.hpp>
#include <vector>

#include "inspection/measure/measurement.h"
#include "inspection/run/settings.h"
#include "orxFunctions/analysis/contour_edges.h"
#include "orxFunctions/fitting/fit_report.h"

namespace inspection {

using Edges = std::vector<orx::TContourEdge>;

// What stays the same for all contours of a picture that are measured alike.
struct EdgeContext {
    const cv::Mat& grey;
    bool brightObjects;
    const Settings& settings;
    bool subPixel;  // by the grey profile, where it has an edge
    double noise;   // of the picture, grey levels
};

// The edge at a contour pixel lies half a pixel outwards, before the grey profile tells it better.
orx::TEdgeProbe probeAt(cv::Point pixel, cv::Point2d outward, double curvature = 0.0);

// Short, so that the rim inside a round object's edge takes little part in the level of the object.
constexpr double kRoundReach = 2.75;

// For each probe the edge that the grey profile shows, or else the probe's own place. The profile
// reaches so many pixels to either side.
Edges edgesAt(const std::vector<orx::TEdgeProbe>& probes, const EdgeContext& context, double reach = 3.0);

// The same for every pixel but one in the centre, looking away from it.
Edges edgesOfCircle(const std::vector<cv::Point>& pixels, const Circle& circle, const EdgeContext& context);

// Of all, whether the grey profile showed an edge or not.
std::vector<cv::Point2d> placesOf(const Edges& edges);

// For points in order along a contour, all of which belong to the shape.
orx::TFitOptions contourFit();

// Adds up the distances of contour points from a shape.
class Residuals {
  public:
    explicit Residuals(double tolerance) : tolerance_(tolerance) {}

    void add(double distance);
    void writeTo(Feature& feature, double minInliers) const;

  private:
    double tolerance_;
    int count_ = 0;
    int inliers_ = 0;
    double sum_ = 0.0;
    double inlierSum_ = 0.0;
};

}  // namespace inspection

#endif
