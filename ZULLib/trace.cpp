// Trace lines and the sink that receives them.
#include "ZULLib/zullib.h"

#include <condition_variable>
#include <memory>
#include <string>
#include <utility>

#include "ZULLib/platform_internal.h"
#include "ZULLib/sync_internal.h"

namespace zul {
namespace {

// One call of setTraceSink. `running` counts the lines that the sink is receiving at the moment.
struct Sink {
    TTraceSink call;
    void* context;
    int running = 0;  // guarded by the holder's mutex
};

// The sink that runs on this thread, from which neither a trace nor a change of the sink may wait.
thread_local const Sink* sinkOfThisThread = nullptr;

// No lock is held while a sink runs: a slow one delays the thread that traces and nobody else.
class SinkHolder {
  public:
    // Null for the default sink. What is not null must be released.
    std::shared_ptr<Sink> acquire() {
        const LockGuard lock(mutex_);
        if (current_) ++current_->running;
        return current_;
    }

    void release(Sink& sink) {
        const LockGuard lock(mutex_);
        --sink.running;
        ended_.notify_all();
    }

    // Returns when the former sink has ended on all other threads.
    void replace(std::shared_ptr<Sink> next) {
        const LockGuard lock(mutex_);
        const std::shared_ptr<Sink> former = std::exchange(current_, std::move(next));
        if (!former) return;
        const int ours = former.get() == sinkOfThisThread ? 1 : 0;
        while (former->running > ours) ended_.wait(mutex_);
    }

  private:
    Mutex mutex_;
    std::condition_variable_any ended_;
    std::shared_ptr<Sink> current_ ZUL_GUARDED_BY(mutex_);
};

// Never destroyed: threads may trace until the process ends.
SinkHolder& holder() {
    static auto* const instance = new SinkHolder;
    return *instance;
}

// While it lives, the sink counts as running on this thread.
class SinkRun {
  public:
    explicit SinkRun(Sink& sink) : sink_(sink) { sinkOfThisThread = &sink; }
    ~SinkRun() {
        sinkOfThisThread = nullptr;
        holder().release(sink_);
    }
    SinkRun(const SinkRun&) = delete;
    SinkRun& operator=(const SinkRun&) = delete;

  private:
    Sink& sink_;
};

}  // namespace

void setTraceSink(TTraceSink sink, void* context) {
    holder().replace(sink == nullptr ? nullptr : std::make_shared<Sink>(Sink{sink, context}));
}

void outPutDebugString(std::string text) {
    if (sinkOfThisThread != nullptr) return;
    const std::shared_ptr<Sink> sink = holder().acquire();
    if (!sink) {
        platform::writeTrace(text);
        return;
    }
    const SinkRun run(*sink);
    sink->call(toUtf8(text).c_str(), sink->context);
}

void outPutDebugString(std::string label, std::string text) { outPutDebugString(label + " " + text); }
void outPutDebugString(std::string label, int value) { outPutDebugString(label + " " + intToStr(value)); }
void outPutDebugString(std::string label, double value, int decimals) {
    outPutDebugString(label + " " + doubleToStr(value, decimals));
}
void outPutDebugString(std::string label, bool value) {
    outPutDebugString(label + (value ? " true" : " false"));
}
void outPutDebugString(std::string label, const char* text) {
    outPutDebugString(std::move(label), std::string(text == nullptr ? "" : text));
}

}  // namespace zul
