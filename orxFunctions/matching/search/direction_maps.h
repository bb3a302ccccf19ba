// How well each pixel of a level answers each direction of a model's outline.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_DIRECTION_MAPS_H
#define ORXFUNCTIONS_MATCHING_SEARCH_DIRECTION_MAPS_H

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>

#include "orxFunctions/matching/search/edge_field.h"
#include "orxFunctions/matching/search/kernels.h"

namespace orx::matching {

// A map of responses, 0 to search_kernels::kBestResponse, for each of 16 directions: the cosines between it
// and the directions of a field, so that an edge answers as far as a pixel beside its crest. All maps lie in
// one block of memory, each in a margin of zeros. S. Hinterstoisser et al., "Gradient response maps for
// real-time detection of textureless objects", IEEE Transactions on Pattern Analysis and Machine Intelligence
// 34 (2012).
class DirectionMaps {
  public:
    static constexpr int kBins = 16;
    // A block of this size that overlaps the level by a pixel can be read.
    static constexpr int kBlockRows = 16;
    static constexpr int kBlockColumns = static_cast<int>(search_kernels::kBlockColumns);

    // The field must be made everywhere. `anySign` has a direction answered by its opposite, too.
    DirectionMaps(const EdgeField& field, bool anySign);

    cv::Size size() const { return size_; }
    // Of pixel (0, 0) in the first map.
    const std::uint8_t* responses() const { return maps_.ptr(kBlockRows) + kBlockColumns; }
    std::ptrdiff_t step() const { return static_cast<std::ptrdiff_t>(maps_.step); }
    // From a map to the next one.
    std::ptrdiff_t mapStep() const { return (size_.height + 2 * kBlockRows) * step(); }

    // Pixels of a part of the level that answer any direction.
    int edgesIn(const cv::Rect& part) const;

    // The map that answers a direction; atan2 of its components may be anything.
    static int binOf(double x, double y);

  private:
    cv::Size size_;
    cv::Mat maps_;   // one above the other
    cv::Mat edges_;  // sums over all pixels above and to the left
};

}  // namespace orx::matching

#endif
