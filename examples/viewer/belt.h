// Live pictures without a camera: parts that move past on a belt.
#ifndef EXAMPLES_VIEWER_BELT_H
#define EXAMPLES_VIEWER_BELT_H

#include <chrono>
#include <cstdint>
#include <mutex>
#include <opencv2/core.hpp>

namespace viewer {

// Thread-safe: all who ask at one time get the same picture.
class Belt {
  public:
    explicit Belt(std::uint64_t seed);

    // The picture of this moment, in colour. Its pixels are never changed afterwards.
    cv::Mat picture();

  private:
    static constexpr int kPicturesPerSecond = 25;

    const std::chrono::steady_clock::time_point start_;
    const cv::Mat belt_;  // wider than a picture; its ends fit together

    std::mutex mutex_;
    std::int64_t number_ = -1;
    cv::Mat picture_;
};

}  // namespace viewer

#endif
