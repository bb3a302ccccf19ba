// The edge of an object along its contour, and how far it lies from a shape.
#ifndef EXAMPLES_INSPECTION_CONTOUR_EDGES_H
#define EXAMPLES_INSPECTION_CONTOUR_EDGES_H

#include <opencv2/core.hpp>
#include <vector>

#include "inspection/measure/measurement.h"
#include "inspection/run/settings.h"

namespace inspection {

// What stays the same for all contours of a picture that are measured alike.
struct EdgeContext {
    const cv::Mat& grey;
    bool brightObjects;
    const Settings& settings;
    bool subPixel;  // by the grey profile, where it has an edge
};

// Where the edge passes at a contour pixel, looking along `outward`: by the grey profile, or else half a
// pixel outwards.
cv::Point2d edgeAt(cv::Point pixel, cv::Point2d outward, const EdgeContext& context);

// The same for every pixel but one in the centre, looking away from it.
std::vector<cv::Point2d> edgesOfCircle(const std::vector<cv::Point>& pixels, cv::Point2d center,
                                       const EdgeContext& context);

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
