// The part of a picture that teaching looks at: a region, and the pyramid of what lies in and around it.
#ifndef ORXFUNCTIONS_MATCHING_MODEL_TEACH_REGION_H
#define ORXFUNCTIONS_MATCHING_MODEL_TEACH_REGION_H

#include <opencv2/core.hpp>
#include <vector>

namespace orx::matching {

// Where edges count, in pixels of the picture.
struct TeachRegion {
    cv::Rect box;    // not empty, inside the picture
    cv::Mat inside;  // CV_8UC1 of the box's size, 0 where edges don't count; empty where all do

    bool contains(cv::Point2d place) const;
};

// Empty boxes for what does not lie in the picture or holds no pixel.
TeachRegion regionOf(const cv::Rect& rect, cv::Size picture);
TeachRegion regionOf(const std::vector<cv::Point2d>& polygon, cv::Size picture);
TeachRegion regionOf(const cv::Mat& mask, cv::Size picture);

// A pyramid of the region with a margin. Its pixels are those of the whole picture's pyramid.
class TeachPyramid {
  public:
    // `margin`: pixels of each level around the region, as far as the picture goes.
    TeachPyramid(const cv::Mat& img, const TeachRegion& region, int levels, int margin);

    int levels() const { return static_cast<int>(pyramid_.size()); }
    // The region with its margin on a level, and where its first pixel lies on that level of the picture.
    const cv::Mat& view(int level) const { return views_[static_cast<std::size_t>(level)]; }
    cv::Point corner(int level) const { return corners_[static_cast<std::size_t>(level)]; }

  private:
    std::vector<cv::Mat> pyramid_;
    std::vector<cv::Mat> views_;
    std::vector<cv::Point> corners_;
};

}  // namespace orx::matching

#endif
