#include "orxFunctions/foundation/stopwatch.h"

#include <cmath>
#include <opencv2/core.hpp>

namespace orx {

TORXTime::TORXTime() { start(); }

void TORXTime::start() { startTick = static_cast<double>(cv::getTickCount()); }

void TORXTime::restart() { start(); }

int TORXTime::getTimeMs() {
    const double elapsed = static_cast<double>(cv::getTickCount()) - startTick;
    return static_cast<int>(std::lrint(elapsed / cv::getTickFrequency() * 1000.0));
}

}  // namespace orx
