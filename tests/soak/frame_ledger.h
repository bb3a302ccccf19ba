// Holds each frame of a camera to the one before it, and to what its source must have drawn.
#ifndef ORX_TESTS_SOAK_FRAME_LEDGER_H
#define ORX_TESTS_SOAK_FRAME_LEDGER_H

#include <string>

#include "orxFunctions/orxfunctions.h"
#include "tests/soak/soak_round.h"

namespace soak {

class FrameLedger {
  public:
    FrameLedger(int camera, bool isDevice) : camera_(camera), isDevice_(isDevice) {}

    // "" when all is right, else what is wrong. `disk` is the circle of a scene, where it was measured.
    std::string enter(const orx::TFrame& frame, orx::TMeasuredCircle& disk);

    const CameraTally& tally() const { return tally_; }

  private:
    std::string follow(const orx::TFrame& frame);
    std::string measure(const cv::Mat& picture, orx::TMeasuredCircle& disk);

    const int camera_;
    const bool isDevice_;
    std::uint64_t start_ = 0;
    std::uint64_t number_ = 0;
    CameraTally tally_;
};

}  // namespace soak

#endif
