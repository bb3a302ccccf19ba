// How exactly a thread wakes from its pauses.
//
// Windows ends a timed wait at the next tick of its clock, by default every 15.6 ms: a pause of 10 ms would
// take that long, and 50 pictures per second could not be kept. While an object of this class lives, the
// process has ticks of 1 ms, as players of films do; that costs some power, and so only threads that pace
// pictures ask for it, and only while they run. Waits of other systems need no help.
#ifndef ORXFUNCTIONS_PLATFORM_FINE_PAUSES_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_FINE_PAUSES_INTERNAL_H

namespace orx::platform {

class FinePauses {
  public:
    FinePauses();
    ~FinePauses();
    FinePauses(const FinePauses&) = delete;
    FinePauses& operator=(const FinePauses&) = delete;
};

}  // namespace orx::platform

#endif
