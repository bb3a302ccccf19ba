// Cameras that go away, come back, and belong to others.
#include <cmath>
#include <opencv2/core.hpp>

#include "drivers/TQVisionDriver/frame_conversion.h"
#include "tests/gige/control_socket.h"
#include "tests/gige/gige_test.h"
#include "tests/support/trace_log.h"

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

TEST_F(Absence, ACameraOfAProgramThatDiedIsHadWhenItsControlExpires) {
    addCamera({});
    ASSERT_TRUE(found(VD_TYPE_HIKVISION));
    EXPECT_TRUE(ControlSocket("127.0.0.2").takeControl());  // and the program dies
    double waited = duration([this] { EXPECT_TRUE(modules_.open(VD_TYPE_HIKVISION, 0)); });
    EXPECT_GT(waited, 1000.0) << "the camera was not busy";
    EXPECT_TRUE(start(0));
    EXPECT_FALSE(fetchNew(0).empty());
}

TEST_F(Absence, ACameraOfAnotherProgramCannotBeOpened) {
    addCamera({});
    ASSERT_TRUE(found(VD_TYPE_HIKVISION));
    const ControlSocket other("127.0.0.2");
    ASSERT_TRUE(other.takeControl());
    ASSERT_TRUE(other.write(ControlSocket::kHeartbeatTimeout, 60000));
    const test::TraceLog log;
    EXPECT_FALSE(modules_.open(VD_TYPE_HIKVISION, 0));
    EXPECT_EQ(log.count("TQVisionDriver: camera S1 at 127.0.0.2 is controlled by another program"), 1);
}

TEST_F(Absence, ACameraThatFellSilentRefusesTheNextCall) {
    camera_ = &addCamera({});
    const test::TraceLog log;
    const std::string lost = "TQVisionDriver: camera S1 at 127.0.0.2 is lost: it does not answer";
    const std::vector<std::function<bool()>> calls = {
        [this] { return start(0); },
        [this] { return modules_.setParam(0, VD_PARAM_EXPOSURE, 99); },
        [this] { return !std::isnan(value(0, VD_PARAM_EXPOSURE)); },
    };
    for (std::size_t i = 0; i < calls.size(); ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(found(VD_TYPE_HIKVISION));
        ASSERT_TRUE(modules_.open(VD_TYPE_HIKVISION, 0));
        camera_->pause();
        sleepMs(50);  // what was asked before may still be answered
        double waited = duration([&] { EXPECT_FALSE(calls[i]()); });
        EXPECT_LT(waited, 1000.0);
        EXPECT_EQ(log.count(lost), static_cast<long>(i) + 1);
        camera_->kill();
        camera_->start();  // so that farewells are answered
        ASSERT_EQ(camera_->problem(), "");
        modules_.destroy();
    }
}

TEST_F(Absence, ACameraWithANewAddressIsFoundAgain) {
    openOne();
    ASSERT_TRUE(eventually(1000, [this] { return isBackAsItWas(); }));
    camera_->kill();
    const test::TraceLog log;
    CameraOptions moved;
    moved.address = "127.0.0.7";
    addCamera(moved);
    const std::string back = "TQVisionDriver: camera S1 at 127.0.0.7 is back";
    EXPECT_TRUE(eventually(15000, [&] { return log.count(back) == 1; }));
    EXPECT_TRUE(eventually(2000, [this] { return isBackAsItWas(); }));
}

TEST_F(Absence, ACameraIsLookedForWhenItIsOpened) {
    camera_ = &addCamera({});
    ASSERT_TRUE(found(VD_TYPE_HIKVISION));
    camera_->kill();
    const test::TraceLog log;
    EXPECT_FALSE(modules_.open(VD_TYPE_HIKVISION, 0));
    EXPECT_EQ(log.count("TQVisionDriver: camera S1 is not connected"), 1);
    CameraOptions moved;
    moved.address = "127.0.0.7";
    addCamera(moved);
    EXPECT_TRUE(eventually(5000, [this] { return modules_.open(VD_TYPE_HIKVISION, 0); }));
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
