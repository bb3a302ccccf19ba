// What is searched on which level of the pyramid, and in which steps.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_SEARCH_PLAN_H
#define ORXFUNCTIONS_MATCHING_SEARCH_SEARCH_PLAN_H

#include <cstddef>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/part_finder.h"

namespace orx::matching {

// Points of one level of the model about the middle of the outline, in pixels of the finest level, with
// their normals as the polarity wants them. Any first part of them is spread over the whole outline.
struct SearchPoints {
    std::vector<float> x, y;
    std::vector<float> normalX, normalY;

    std::size_t size() const { return x.size(); }
};

// A range of angles, radians, in equal steps; the first follows the last where the range is closed.
struct AngleSteps {
    double start = 0.0;
    double range = 0.0;
    double step = 0.0;
    int count = 1;
    bool closed = false;
    double angle(int i) const { return start + i * step; }
};

// Scales that are searched together. Levels are those of the picture's pyramid.
struct ScaleBand {
    double least = 1.0;
    double most = 1.0;
    int top = 0;
    int bottom = 0;              // where the candidates are near enough for the refinement
    std::vector<double> scales;  // looked at on the top level
    AngleSteps angles;           // as well
};

class SearchPlan {
  public:
    SearchPlan(const ModelData& model, const TFindOptions& options, cv::Size picture);

    const std::vector<ScaleBand>& bands() const { return bands_; }
    // The points to use on a level of the picture for a scale.
    const SearchPoints& points(int level, double scale) const { return levels_[modelLevel(level, scale)]; }
    // The middle of the outline, in the model's plane, and the largest distance of a point from it.
    cv::Point2d middle() const { return middle_; }
    double radius() const { return radius_; }
    // Radians after which the part looks the same; 0 if it does at every angle.
    double period() const { return period_; }
    // Turns about symmetryCentre(), counted from the middle of the outline, after which the part looks nearly
    // the same, so that coarse levels may take one for the other; radians. `level`: where they are told
    // apart.
    std::vector<double> nearTurns(int level, double scale) const;
    cv::Point2d symmetryCentre() const { return symmetryCentre_; }
    // Angles that candidates may have, radians.
    double startAngle() const { return startAngle_; }
    double angleRange() const { return angleRange_; }
    bool anglesAreClosed() const { return period_ > 0 && angleRange_ >= period_; }
    // Whether the angle, or one that looks the same, lies in the range.
    bool isAllowed(double angle) const;
    double sigma() const { return sigma_; }  // smoothing of gradients
    // The least slope of the gradient that is an edge on a level, grey levels a pixel.
    double leastSlope(int level) const;

  private:
    std::size_t modelLevel(int level, double scale) const;
    void addLevels(const ModelData& model, bool reversed);
    void addBand(double least, double most, cv::Size picture);
    // Whether a level of the picture shows enough of the part to look for it there.
    bool isFineEnough(int level, double scale) const;
    int topFor(double scale, cv::Size picture) const;
    AngleSteps angleSteps(double radius) const;

    std::vector<SearchPoints> levels_;
    std::vector<ScaleBand> bands_;
    cv::Point2d middle_;
    double radius_ = 0.0;
    double typicalRadius_ = 0.0;
    double period_ = 0.0;
    int symmetry_ = 1;
    int nearSymmetry_ = 1;
    cv::Point2d symmetryCentre_;
    double startAngle_ = 0.0;
    double angleRange_ = 0.0;
    double sigma_ = 1.0;
    double contrast_ = 0.0;
    double noise_ = 0.0;
    double leastShare_ = 1.0;
};

}  // namespace orx::matching

#endif
