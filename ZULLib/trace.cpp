// Trace lines and the sink that receives them.
#include <string>

#include "ZULLib/platform_internal.h"
#include "ZULLib/sync_internal.h"
#include "ZULLib/zullib.h"

namespace zul {
namespace {

struct Sink {
    TTraceSink call = nullptr;
    void* context = nullptr;
};

// Held while a sink runs, so that setTraceSink returns only when the former one has ended.
Mutex& sinkMutex() {
    static auto* const mutex = new Mutex;
    return *mutex;
}

Sink currentSink;

}  // namespace

void setTraceSink(TTraceSink sink, void* context) {
    const LockGuard lock(sinkMutex());
    currentSink = {sink, context};
}

void outPutDebugString(std::string text) {
    const LockGuard lock(sinkMutex());
    if (currentSink.call != nullptr) {
        currentSink.call(toUtf8(text).c_str(), currentSink.context);
    } else {
        platform::writeTrace(text);
    }
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
