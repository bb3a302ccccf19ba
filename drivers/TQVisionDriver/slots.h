// The cameras of the module by their slots, and the states that a slot goes through.
#ifndef DRIVERS_TQVISIONDRIVER_SLOTS_H
#define DRIVERS_TQVISIONDRIVER_SLOTS_H

#include <array>
#include <memory>

#include "ZULLib/sync_internal.h"
#include "drivers/TQVisionDriver/source.h"

namespace vision {

class Slot {
  public:
    explicit Slot(std::unique_ptr<Source> source);
    ~Slot();
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

    bool open();
    bool start(PictureFormat& format);
    bool stop();
    bool fetch(VDImage& image);
    bool frameInfo(VDFrameInfo& info);
    bool close();
    bool setParameter(int id, long value);
    float parameter(int id);

  private:
    enum class State { kClosed, kOpen, kRunning };

    zul::Mutex mutex_;
    const std::unique_ptr<Source> source_ ZUL_GUARDED_BY(mutex_);
    State state_ ZUL_GUARDED_BY(mutex_) = State::kClosed;
    PictureFormat format_ ZUL_GUARDED_BY(mutex_);
};

// Thread-safe, also against a host that mixes up its threads. One call per slot at a time: calls for
// different slots do not wait for each other.
class SlotTable {
  public:
    // Closes all cameras and finds those of `type`. True when there is at least one.
    bool initialise(int type);
    // Closes all cameras and empties the slots.
    void clear();
    // The slot's camera; null for a slot number that is out of range or has none. Whoever holds it keeps it
    // alive.
    std::shared_ptr<Slot> at(int index);

  private:
    using Table = std::array<std::shared_ptr<Slot>, VD_MAX_CAMERAS>;

    // Not held while cameras are closed or searched for.
    zul::Mutex mutex_;
    Table slots_ ZUL_GUARDED_BY(mutex_);
};

}  // namespace vision

#endif
