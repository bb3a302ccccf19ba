// The cameras of a run, from opening to closing.
#ifndef EXAMPLES_INSPECTION_CAMERA_RIG_H
#define EXAMPLES_INSPECTION_CAMERA_RIG_H

#include <opencv2/core.hpp>
#include <ostream>
#include <vector>

#include "inspection/run/camera_feed.h"
#include "inspection/run/options.h"
#include "orxFunctions/orxfunctions.h"

namespace inspection {

// One at a time in a process, on one thread.
class CameraRig {
  public:
    // `eachOnce` as in CameraFeed.
    CameraRig(const CameraOptions& options, std::ostream& log, bool eachOnce = false)
        : options_(options), log_(log), feed_(eachOnce) {}

    // False, and told, when one of them can't be opened.
    bool open();
    // Starts to grab: pictures come by take() until stop().
    void start();
    // As CameraFeed::take. Cameras that were lost are asked for again meanwhile.
    bool take(std::chrono::steady_clock::time_point end, cv::Mat& picture, int& camera);
    void stop();
    // What the cameras counted stays known.
    void close();

    int cameras() const { return options_.cameras; }
    CameraCount count(int camera) const { return feed_.count(camera); }
    cv::Size size(int camera) const { return sizes_[static_cast<std::size_t>(camera)]; }
    float lost(int camera) const { return lost_[static_cast<std::size_t>(camera)]; }  // NaN: not known

  private:
    void reconnect();
    void showMessages();

    const CameraOptions& options_;
    std::ostream& log_;
    CameraFeed feed_;
    orx::TMultiCamera cams_;
    orx::TCameraConfig config_;
    std::vector<cv::Size> sizes_;
    std::vector<float> lost_;
};

}  // namespace inspection

#endif
