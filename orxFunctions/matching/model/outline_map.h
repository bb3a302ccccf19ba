// Looks up which point of an outline is nearest to a place.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_OUTLINE_MAP_H
#define ORXFUNCTIONS_MATCHING_MODEL_OUTLINE_MAP_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/matching/model/model_data.h"

namespace orx::matching {

// A grid of cells over the outline, each with the point nearest to its middle. The outline must outlive it.
class OutlineMap {
  public:
    // Cells of `cell` pixels, larger where the outline needs too many; points are known `reach` cells around.
    OutlineMap(const std::vector<OutlinePoint>& outline, double cell, int reach);

    // The point nearest to a place, -1 where it is farther away than about the reach. Among points of one
    // chain it is the nearest one; of two chains closer together than a cell it may be the other.
    int nearest(cv::Point2d place) const;

    double cell() const { return cell_; }

  private:
    void enter(int index, int reach);
    double squaredDistance(int index, cv::Point2d place) const;
    bool isNearer(int index, int than, cv::Point2d place) const;

    const std::vector<OutlinePoint>& outline_;
    double cell_;
    cv::Point2d origin_;  // corner of the first cell
    cv::Mat indices_;     // CV_32S
    cv::Mat distances_;   // CV_32F, squared, from the middle of the cell
};

}  // namespace orx::matching

#endif
