// Pictures of several cameras, from their grab threads to one consumer.
#ifndef EXAMPLES_INSPECTION_CAMERA_FEED_H
#define EXAMPLES_INSPECTION_CAMERA_FEED_H

#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <opencv2/core.hpp>

#include "orxFunctions/orxfunctions.h"

namespace inspection {

// What came from one camera.
struct CameraCount {
    int delivered = 0;  // pictures
    int dropped = 0;    // of them, because a newer one came before the consumer took them
    int repeated = 0;   // not counted otherwise: the last one again, and what comes before the first
    std::chrono::steady_clock::time_point first;
    std::chrono::steady_clock::time_point last;

    // Pictures per second; 0 with less than two.
    double rate() const;
};

// Keeps the newest picture of each camera until the consumer takes it. A grab thread only hands over the
// picture's header: measuring in its callback would hold up the camera. One feed at a time in a process.
class CameraFeed {
  public:
    // A driver may give its newest picture again while there is no newer one, and a black one before the
    // first. With `eachOnce` these are left out: where the driver numbers its pictures by the number, else
    // what is the last one to the byte, which no camera's noise makes, and black before anything else.
    // The frame callbacks of all cameras are the feed's own then.
    explicit CameraFeed(bool eachOnce = false);
    ~CameraFeed();
    CameraFeed(const CameraFeed&) = delete;
    CameraFeed& operator=(const CameraFeed&) = delete;

    // What the thread manager calls.
    static void receive(cv::Mat& picture, int camera);
    // What the cameras call before that with each new frame, and with none for a picture given again.
    static void announce(const orx::TFrame& frame, void* feed);

    // Waits for a picture of any camera, but not beyond `end`, and takes it. False when there was none.
    bool take(std::chrono::steady_clock::time_point end, cv::Mat& picture, int& camera);
    CameraCount count(int camera) const;

  private:
    bool takeNow(cv::Mat& picture, int& camera);
    // What is known of a camera's pictures, to its grab thread alone.
    struct Seen {
        cv::Mat last;             // where pictures are not numbered
        bool isNumbered = false;  // by the driver
        bool isNew = false;       // announced, and not received yet
    };
    static bool isRepeated(const cv::Mat& picture, Seen& seen);

    const bool eachOnce_;
    std::array<Seen, orx::MAXCameraNum> seen_;
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::array<cv::Mat, orx::MAXCameraNum> newest_;
    std::array<CameraCount, orx::MAXCameraNum> counts_;
    std::size_t next_ = 0;  // the camera that is looked at first, so that each gets its turn
};

}  // namespace inspection

#endif
