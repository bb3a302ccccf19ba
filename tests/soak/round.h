// One round: nine cameras, two picture boxes, a worker a camera, and a thread that disturbs them.
#ifndef ORX_TESTS_SOAK_ROUND_H
#define ORX_TESTS_SOAK_ROUND_H

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "drivers/vision_driver.h"
#include "orxFunctions/orxfunctions.h"
#include "support/host_window.h"
#include "tests/soak/frame_ledger.h"
#include "tests/soak/soak_round.h"

namespace soak {

// Two cameras are brought back by the host, the others by their grab threads.
constexpr bool isBroughtBackByHost(int camera) { return camera >= kCameras - 2; }

class RoundRun {
  public:
    explicit RoundRun(const Round& order);
    ~RoundRun();
    RoundRun(const RoundRun&) = delete;
    RoundRun& operator=(const RoundRun&) = delete;

    void run();

  private:
    using Clock = std::chrono::steady_clock;

    // What is to be undone later.
    struct Later {
        Clock::time_point when;
        std::function<void()> work;
    };

    bool begin();
    void end();
    void work(int camera);
    void show(int camera, const orx::TFrame& frame, const orx::TMeasuredCircle& disk);
    void save(const cv::Mat& picture);
    void checkCamera(int camera);
    void checkSaved();

    void disturb();
    void unplug(int camera);
    bool isDevice(int camera) const { return camera >= kScenes && camera < kScenes + order_.devices; }
    void stopDisplay();
    void changeDriver(int camera);
    void changePicture(int camera);
    void pause(int camera);
    void reopen(int camera);
    void changeView();
    void later(double seconds, std::function<void()> work);
    void doWhatIsDue(bool all);
    void helpLostCameras();
    void watchFrames();
    void handleEvents();

    void complain(int camera, const std::string& problem) const;
    int anyOf(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
    double between(double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random_);
    }
    static void count(const orx::TCameraStatus& status, void* self);

    const Round& order_;
    Beat& beat_;
    std::mt19937 random_;
    std::array<std::unique_ptr<host::HostWindow>, kBoxes> windows_;
    std::array<std::unique_ptr<TPictureBox>, kBoxes> boxes_;
    orx::TMultiCamera cameras_;
    std::array<orx::TCameraConfig, kCameras> configs_;
    std::vector<FrameLedger> ledgers_;
    std::array<std::thread, kCameras> workers_;
    std::array<std::atomic<Clock::time_point>, kCameras> lastFrames_{};
    std::atomic<bool> isOver_{false};
    std::atomic<std::uint64_t> saved_{0};
    std::atomic<std::uint64_t> notSaved_{0};
    std::atomic<std::uint64_t> losses_{0};
    std::atomic<std::uint64_t> returns_{0};
    std::vector<Later> later_;
};

}  // namespace soak

#endif
