// Which picture of a camera it is, as far as its driver module tells.
#ifndef ORXFUNCTIONS_CAMERA_FRAME_ORIGIN_INTERNAL_H
#define ORXFUNCTIONS_CAMERA_FRAME_ORIGIN_INTERNAL_H

#include <chrono>
#include <cstdint>

#include "drivers/vision_driver.h"

namespace orx {

struct FrameOrigin {
    std::uint64_t start = 0;   // of the camera it comes from; later starts have higher numbers
    std::uint64_t number = 0;  // from 1 since that start; 0 is the black picture before the first
    bool isNumbered = false;   // by the driver; else each fetch counts as a new picture
    std::int64_t deviceTime = 0;
    std::chrono::system_clock::time_point hostTime;
    bool isFirstPending = false;  // the first one is on its way
    bool returns = false;         // the module itself brings a lost camera back
};

// Whether the driver has a picture that was not fetched yet.
enum class NewerPicture { kNone, kThere, kUnknown };

// Holds what one camera's module says to what it said before. One thread at a time.
class FrameNumbers {
  public:
    // The camera was started: numbers begin anew.
    void begin();
    std::uint64_t start() const { return start_; }

    // The origin of the picture just fetched. `info` is what the module answered, null when it does not.
    FrameOrigin take(const VDFrameInfo* info);

    // Whether the module has a newer picture than the last one, by its answer.
    NewerPicture newer(const VDFrameInfo* info) const;

    // How many cameras have been started in this process: the number of the last start.
    static std::uint64_t starts();

  private:
    bool isCredible(const VDFrameInfo& info) const;

    std::uint64_t start_ = 0;
    std::uint64_t last_ = 0;
    bool isRefused_ = false;  // its numbers went back, or made no sense
};

}  // namespace orx

#endif
