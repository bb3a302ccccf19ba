// The cameras of a run, from opening to closing.
#ifndef EXAMPLES_INSPECTION_CAMERA_RIG_H
#define EXAMPLES_INSPECTION_CAMERA_RIG_H

#include <opencv2/core.hpp>
#include <ostream>
#include <string>
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
    // As reports tell them: "640x480"; frames lost on the way, "-" where that is not known.
    std::string size(int camera) const;
    std::string lost(int camera) const;

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
