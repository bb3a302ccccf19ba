// A host that remembers what the library tells it, and a loaded fake driver.
#ifndef ORX_TESTS_CAMERA_HOST_H
#define ORX_TESTS_CAMERA_HOST_H

#include <gtest/gtest.h>

#include <chrono>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/fake_driver/fake_driver.h"
#include "tests/fake_driver/fake_module.h"
#include "tests/support/loaded_module.h"
#include "tests/support/trace_log.h"

namespace test {

struct Message {
    std::string text;  // UTF-8
    int color;

    friend bool operator==(const Message& a, const Message& b) {
        return a.text == b.text && a.color == b.color;
    }
    friend std::ostream& operator<<(std::ostream& out, const Message& message) {
        return out << message.text << " (colour " << message.color << ")";
    }
};

// The colour of messages that have none of their own; other than any that the library names.
constexpr int kPlainColor = 77;
constexpr int kErrorColor = 1;
constexpr const char* kNoDriver = "load相机dll失败";

class Host {
  public:
    Host() {
        zul::G_appshowMsg_defaultColor = kPlainColor;
        takeMessages();
    }
    std::vector<Message> takeMessages() {
        std::vector<Message> messages;
        std::string text;
        int color = 0;
        while (orx::APPgetMessage(text, color)) messages.push_back({zul::toUtf8(text), color});
        return messages;
    }

    std::vector<std::string> takeTraces() { return traces_.take(); }

  private:
    TraceLog traces_;
};

// Waits for what another thread is to bring about; false when that takes too long.
template <typename Condition>
bool eventually(const Condition& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// A host with a complete driver and `number` cameras, not open yet.
class CameraTest : public testing::Test {
  protected:
    explicit CameraTest(int number = 3) { cams_.setCameraNumber(number); }
    ~CameraTest() override {
        orx::imgThreadManager.closeAllThread();
        cams_.DestoryCamera();
        cams_.freeDll();
    }

    fake::Camera& fakeCamera(int slot) { return driver_->cameras[static_cast<std::size_t>(slot)]; }

    LoadedModule module_{fakeModule("complete", "TQVisionDriver")};
    fake::Driver* const driver_ = reinterpret_cast<decltype(&fakeDriver)>(module_.function("fakeDriver"))();
    Host host_;
    orx::TMultiCamera cams_;
};

}  // namespace test

#endif
