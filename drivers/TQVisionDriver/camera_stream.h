// The frames of one camera while it acquires.
#ifndef DRIVERS_TQVISIONDRIVER_CAMERA_STREAM_H
#define DRIVERS_TQVISIONDRIVER_CAMERA_STREAM_H

#include <arv.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>

#include "ZULLib/sync_internal.h"
#include "drivers/TQVisionDriver/frame_counters.h"
#include "drivers/TQVisionDriver/glib_object.h"
#include "drivers/TQVisionDriver/settings.h"
#include "drivers/TQVisionDriver/source.h"

namespace vision {

struct ReceivedFrame {
    Ref<ArvBuffer> buffer;
    Clock::time_point arrived;
    std::uint64_t number = 0;  // see FrameCounts::frames
};

// Keeps the newest complete frame and gives all others back to Aravis at once. take and giveBack are for one
// thread; the receiving thread is Aravis' own.
class CameraStream {
  public:
    // Null when the stream can't be made. The camera does not acquire yet.
    static std::shared_ptr<CameraStream> create(ArvCamera* camera, const DeviceSettings& settings,
                                                std::shared_ptr<FrameCounters> counters);
    ~CameraStream();
    CameraStream(const CameraStream&) = delete;
    CameraStream& operator=(const CameraStream&) = delete;

    // The newest frame that was not taken yet; waits for one up to `wait`.
    bool take(std::chrono::milliseconds wait, ReceivedFrame& frame);
    // The number of the frame that take would give without waiting; 0 when there is none.
    std::uint64_t newestNumber();
    // A frame's buffer, to be filled again.
    void giveBack(Ref<ArvBuffer> buffer);

  private:
    explicit CameraStream(std::shared_ptr<FrameCounters> counters) : counters_(std::move(counters)) {}
    bool prepare(ArvCamera* camera, const DeviceSettings& settings);

    static void onEvent(void* self, ArvStreamCallbackType type, ArvBuffer* buffer);
    void drain();
    void keep(ArvStream* stream, Ref<ArvBuffer> buffer, std::uint64_t number);
    void waitForNewest(std::chrono::milliseconds wait) ZUL_REQUIRES(mutex_);

    const std::shared_ptr<FrameCounters> counters_;
    Ref<ArvStream> owned_;
    std::atomic<ArvStream*> stream_{nullptr};  // owned_, for the receiving thread
    GMainContext* context_ = nullptr;          // the receiving thread's own

    zul::Mutex mutex_;
    std::condition_variable_any arrived_;
    ReceivedFrame newest_ ZUL_GUARDED_BY(mutex_);
};

}  // namespace vision

#endif
