// A stopwatch in milliseconds.
#ifndef ORXFUNCTIONS_FOUNDATION_STOPWATCH_H
#define ORXFUNCTIONS_FOUNDATION_STOPWATCH_H

#include "orxFunctions/api.h"

namespace orx {

// Runs from its construction on. A plain value; one thread at a time.
class ORX_API TORXTime {
  public:
    TORXTime();

    // Both begin anew; one operation under two names.
    void start();
    void restart();

    // Milliseconds since the last start, rounded to the nearest integer with ties to even. The watch runs on.
    int getTimeMs();

    double startTick = 0.0;  // cv::getTickCount() at the last start
};

}  // namespace orx

#endif
