// Cameras that go away, come back, and belong to others.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <opencv2/core.hpp>

#include "drivers/TQVisionDriver/frame_conversion.h"
#include "tests/gige/gige_test.h"

namespace gige {
namespace {

constexpr std::uint32_t kExposure = 4321;

// Milliseconds that a call takes.
template <typename Call>
double duration(const Call& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

class Absence : public GigeTest {
  protected:
    void openOne() {
        camera_ = &addCamera({});
        openCameras(VD_TYPE_HIKVISION, 1);
        ASSERT_TRUE(modules_.setParam(0, VD_PARAM_EXPOSURE, kExposure));
        ASSERT_EQ(value(0, VD_PARAM_TRIGGER_MODE), 0.0F);
    }
    bool isLost() const { return fetch(0).empty(); }
    bool isBackAsItWas() const {
        const cv::Mat picture = fetch(0);
        return !picture.empty() && picture.cols == 64 &&
               patternOf(picture, vision::kMono8, kExposure, 0) >= 0;
    }

    SoftwareCamera* camera_ = nullptr;
};

TEST_F(Absence, AStoppedCameraIsNoticedWithinASecondAndUsedAgain) {
    openOne();
    ASSERT_TRUE(eventually(1000, [this] { return isBackAsItWas(); }));
    camera_->pause();
    EXPECT_FALSE(isLost()) << "the last picture is repeated at first";
    double noticed = duration([this] { EXPECT_TRUE(eventually(5000, [this] { return isLost(); })); });
    // Under a second on an idle machine.
    EXPECT_LT(noticed, 1500.0);
    EXPECT_FALSE(modules_.setParam(0, VD_PARAM_EXPOSURE, 99));
    EXPECT_TRUE(std::isnan(value(0, VD_PARAM_EXPOSURE)));
    camera_->resume();
    EXPECT_TRUE(eventually(10000, [this] { return isBackAsItWas(); }));
}

TEST_F(Absence, ARestartedCameraGetsItsSettingsBack) {
    openOne();
    ASSERT_TRUE(modules_.stop(0));
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_WIDTH, 40));
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_OFFSET_Y, 8));
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_FRAME_RATE, 30));
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_GAIN, 25));
    ASSERT_TRUE(start(0));
    camera_->kill();
    camera_->start();
    ASSERT_EQ(camera_->problem(), "");
    EXPECT_TRUE(eventually(10000, [this] {
        const cv::Mat picture = fetch(0);
        return picture.cols == 40 && value(0, VD_PARAM_FRAME_AGE) < 300.0F &&
               value(0, VD_PARAM_EXPOSURE) == static_cast<float>(kExposure);
    }));
    const cv::Mat picture = fetchNew(0);
    ASSERT_EQ(picture.size(), cv::Size(40, 48));
    EXPECT_NE(patternOf(picture, vision::kMono8, kExposure, 25), -1);
    EXPECT_EQ(value(0, VD_PARAM_OFFSET_Y), 8.0F);
    EXPECT_NEAR(value(0, VD_PARAM_FRAME_RATE), 30.0F, 0.01F);
    EXPECT_EQ(value(0, VD_PARAM_GAIN), 25.0F);
}

TEST_F(Absence, ClosingADeadCameraDoesNotWait) {
    openOne();
    camera_->kill();
    EXPECT_LT(duration([this] { EXPECT_TRUE(modules_.stop(0)); }), 500.0);
    EXPECT_LT(duration([this] { EXPECT_TRUE(modules_.close(0)); }), 500.0);
    // It can be opened again, and the library's own order of calls works on a lost camera, too.
    camera_->start();
    ASSERT_EQ(camera_->problem(), "");
    ASSERT_TRUE(modules_.open(VD_TYPE_HIKVISION, 0));
    ASSERT_TRUE(start(0));
    EXPECT_FALSE(fetchNew(0).empty());
    camera_->pause();
    EXPECT_TRUE(eventually(5000, [this] { return isLost(); }));
    EXPECT_LT(duration([this] { modules_.stop(0); }), 500.0);
    EXPECT_LT(duration([this] { EXPECT_TRUE(modules_.close(0)); }), 500.0);
    // Else the end of the test waits for the farewell.
    camera_->resume();
}

// As a program does that takes control and dies: the camera is free when its heartbeat has not come for 3 s.
void takeControlAndDie(const char* address) {
    const int control = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in camera{};
    camera.sin_family = AF_INET;
    camera.sin_port = htons(3956);
    inet_pton(AF_INET, address, &camera.sin_addr);
    // Write 2 (control access) to the register of the control privilege.
    const unsigned char command[] = {0x42, 0x01, 0x00, 0x82, 0x00, 0x08, 0x00, 0x01,
                                     0x00, 0x00, 0x0A, 0x00, 0x00, 0x00, 0x00, 0x02};
    sendto(control, command, sizeof(command), 0, reinterpret_cast<const sockaddr*>(&camera), sizeof(camera));
    unsigned char answer[16];
    EXPECT_GT(recv(control, answer, sizeof(answer), 0), 0);
    close(control);
}

TEST_F(Absence, ACameraOfAProgramThatDiedIsHadWhenItsControlExpires) {
    addCamera({});
    ASSERT_TRUE(found(VD_TYPE_HIKVISION));
    takeControlAndDie("127.0.0.2");
    double waited = duration([this] { EXPECT_TRUE(modules_.open(VD_TYPE_HIKVISION, 0)); });
    EXPECT_GT(waited, 1000.0) << "the camera was not busy";
    EXPECT_TRUE(start(0));
    EXPECT_FALSE(fetchNew(0).empty());
}

TEST_F(Absence, ATriggeredCameraIsNotLostWhileItWaits) {
    openOne();
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_TRIGGER_MODE, VD_TRIGGER_SOFTWARE));
    EXPECT_EQ(value(0, VD_PARAM_TRIGGER_MODE), static_cast<float>(VD_TRIGGER_SOFTWARE));
    sleepMs(1300);
    EXPECT_FALSE(isLost());
    const float before = value(0, VD_PARAM_FRAME_NUMBER);
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_SOFTWARE_TRIGGER, 1));
    EXPECT_TRUE(eventually(2000, [&] { return value(0, VD_PARAM_FRAME_NUMBER) == before + 1.0F; }));
    sleepMs(100);
    EXPECT_EQ(value(0, VD_PARAM_FRAME_NUMBER), before + 1.0F);
    ASSERT_TRUE(modules_.setParam(0, VD_PARAM_TRIGGER_MODE, VD_TRIGGER_LINE_2));
    EXPECT_EQ(value(0, VD_PARAM_TRIGGER_MODE), static_cast<float>(VD_TRIGGER_LINE_2));
    EXPECT_FALSE(modules_.setParam(0, VD_PARAM_SOFTWARE_TRIGGER, 1)) << "it waits for its input";
    for (const long wrong : {-1L, 4L, 1L << 40}) {
        EXPECT_FALSE(modules_.setParam(0, VD_PARAM_TRIGGER_MODE, wrong)) << wrong;
        EXPECT_FALSE(modules_.setParam(0, VD_PARAM_OFFSET_X, wrong < 0 ? wrong : wrong * 10000)) << wrong;
        EXPECT_FALSE(modules_.setParam(0, VD_PARAM_EXPOSURE, wrong < 0 ? wrong : 0)) << wrong;
    }
    EXPECT_FALSE(modules_.setParam(0, VD_PARAM_GAIN, 241)) << "the camera ends at 24 dB";
    EXPECT_FALSE(modules_.setParam(0, VD_PARAM_FRAME_RATE, 0));
}

}  // namespace
}  // namespace gige
