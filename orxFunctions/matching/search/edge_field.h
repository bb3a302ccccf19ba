// Where the edges of a picture's level are, and which way they face, as the score of a pose reads it.
#ifndef ORXFUNCTIONS_MATCHING_SEARCH_EDGE_FIELD_H
#define ORXFUNCTIONS_MATCHING_SEARCH_EDGE_FIELD_H

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/analysis/edges/kernels.h"
#include "orxFunctions/matching/search/zeros.h"

namespace orx::matching {

// For each pixel of a level the direction of its gradient, from dark to bright, search_kernels::kFieldUnit
// long on the crest of an edge and falling to nothing about a pixel beside it; 0 where there is no edge.
// Contrast has no share in it. Made in tiles, only where it is asked for; 0 elsewhere and in a margin around
// the level.
class EdgeField {
  public:
    // A window around a place in the level can be read this far outside of it.
    static constexpr int kMargin = 16;

    // `level` is 8 bits, one channel; sigma, pixels, smooths the gradient; `leastSlope`, grey levels a pixel,
    // is the least gradient of an edge.
    EdgeField(const cv::Mat& level, double sigma, double leastSlope);

    cv::Size size() const { return level_.size(); }
    // Makes the field in these parts of the level, on several threads. One thread at a time.
    void prepare(const std::vector<cv::Rect>& parts);
    void prepareAll() { prepare({cv::Rect(cv::Point(), size())}); }

    // The pair of column 0, for rows from -kMargin; reentrant once it is prepared.
    const std::int16_t* row(int r) const { return pairs_.get() + (r + kMargin) * step_ + 2 * kMargin; }
    // Between rows, in 16-bit elements.
    std::ptrdiff_t step() const { return step_; }

  private:
    void makeTile(int tile);

    cv::Mat level_;
    std::vector<edge_kernels::GaussTap> taps_;
    float least_;  // of the squared magnitude
    cv::Size tiles_;
    std::vector<unsigned char> made_;
    std::ptrdiff_t step_;
    Zeros<std::int16_t> pairs_;
};

}  // namespace orx::matching

#endif
