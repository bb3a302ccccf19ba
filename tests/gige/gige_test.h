// What the tests with software cameras share: the cameras, as programs of their own, and the modules, loaded
// at run time as the library loads them.
#ifndef ORX_TESTS_GIGE_GIGE_TEST_H
#define ORX_TESTS_GIGE_GIGE_TEST_H

#include <gtest/gtest.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <opencv2/core/mat.hpp>
#include <string>
#include <vector>

#include "drivers/vision_driver.h"
#include "tests/gige/camera_process.h"
#include "tests/support/temporary_folder.h"

namespace gige {

void sleepMs(int duration);

// Asks until the condition holds; false when it does not within `limitMs`.
bool eventually(int limitMs, const std::function<bool()>& condition);

// The procedures of TQVisionDriver and LumoCfg.
struct Modules {
    Modules();

    decltype(&VDInitCamera) initCamera = nullptr;
    decltype(&VDOpen) open = nullptr;
    decltype(&VDStart) start = nullptr;
    decltype(&VDStop) stop = nullptr;
    decltype(&VDGetImage) getImage = nullptr;
    decltype(&VDGetFrameInfo) getFrameInfo = nullptr;
    decltype(&VDSetParam) setParam = nullptr;
    decltype(&VDGetParam) getParam = nullptr;
    decltype(&VDClose) close = nullptr;
    decltype(&VDDestoryCamera) destroy = nullptr;
    decltype(&VDGetCameraType) getCameraType = nullptr;
};

// What a camera with these settings sends as frame `frame`, converted. `exposure` in microseconds, `gain` in
// tenths of a decibel.
cv::Mat expectedPicture(std::uint32_t code, cv::Size size, unsigned frame, std::uint32_t exposure,
                        std::uint32_t gain);

class GigeTest : public testing::Test {
  protected:
    GigeTest();
    ~GigeTest() override;
    void SetUp() override;

    SoftwareCamera& addCamera(const CameraOptions& options);
    void configure(const std::string& settings);
    // Finds the cameras of a type and opens and starts the first `count` of them.
    void openCameras(int type, int count);
    // A search lasts one second, which a busy machine may need for itself.
    bool found(int type);
    bool start(int index);
    // The picture of one fetch, a copy; empty when the fetch fails.
    cv::Mat fetch(int index) const;
    // As fetch, once a frame newer than those before has come. Empty when none comes.
    cv::Mat fetchNew(int index) const;
    float value(int index, int id) const { return modules_.getParam(index, id); }
    // Which frame of the software camera a picture is: 0 to kPatterns - 1, -1 when it is none.
    static int patternOf(const cv::Mat& picture, std::uint32_t code, std::uint32_t exposure,
                         std::uint32_t gain);

    Modules modules_;

  private:
    test::TemporaryFolder folder_;
    std::vector<std::unique_ptr<SoftwareCamera>> cameras_;
};

}  // namespace gige

#endif
