// The states of cameras, and cameras that are lost and come back.
#include "orxFunctions/camera/camera_state.h"

#include <gmock/gmock.h>

#include <mutex>
#include <set>
#include <stdexcept>

#include "tests/camera/grabbing.h"

namespace {

using test::eventually;
using test::Message;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr int kReconnectColor = 4;

// What the host is told, as "0 grabbing: as the host asked".
class Told {
  public:
    static void add(const orx::TCameraStatus& status, void* user) {
        auto& told = *static_cast<Told*>(user);
        const std::lock_guard<std::mutex> lock(told.mutex_);
        told.lines_.push_back(std::to_string(status.camera) + " " + orx::cameraStateText(status.state) +
                              ": " + orx::cameraReasonText(status.reason));
        told.changes_.push_back(status.change);
        told.last_ = status;
    }
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return std::exchange(lines_, {});
    }
    std::vector<std::uint64_t> changes() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return changes_;
    }
    orx::TCameraStatus last() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return last_;
    }

  private:
    std::mutex mutex_;
    std::vector<std::string> lines_;
    std::vector<std::uint64_t> changes_;
    orx::TCameraStatus last_;
};

class CameraState : public test::Grabbing {
  protected:
    ~CameraState() override {
        manager_.closeAllThread();
        for (int slot = 0; slot < 3; ++slot) {
            cams_.close(slot);
            orx::setReconnect(slot, {});
        }
        orx::setCameraStateCallback(nullptr, nullptr);
    }
    static orx::TCameraState stateOf(int camera) { return orx::cameraStatus(camera).state; }
    static bool becomes(int camera, orx::TCameraState state) {
        return eventually([=] { return stateOf(camera) == state; });
    }
    bool goesOn(int slot) { return waitForFrames(slot, 5) && stateOf(slot) == orx::csGrabbing; }
    // The driver's calls for a camera: those that end with its slot, or name it first.
    std::vector<std::string> callsOf(int slot) {
        std::vector<std::string> calls;
        for (const std::string& call : driver_->takeCalls()) {
            const std::string words = call.substr(call.find(' '));
            const bool isFirst = call.rfind("VDSetParam", 0) == 0 || call.rfind("VDGetParam", 0) == 0;
            const std::string number = " " + std::to_string(slot);
            const bool isIts =
                isFirst ? words.rfind(number + " ", 0) == 0
                        : words.size() >= number.size() &&
                              words.compare(words.size() - number.size(), number.size(), number) == 0;
            if (isIts) calls.push_back(call);
        }
        return calls;
    }

    Told told_;
};

TEST_F(CameraState, FollowsWhatTheHostDoes) {
    setReady(false);
    EXPECT_EQ(stateOf(1), orx::csOpen);
    EXPECT_EQ(orx::cameraStatus(1).reason, orx::crNoThread);
    orx::setCameraStateCallback(Told::add, &told_);
    configs_[1].name = "left";
    start(1);
    EXPECT_EQ(orx::cameraStatus(1).reason, orx::crNotReady);
    setReady(true);
    ASSERT_TRUE(becomes(1, orx::csGrabbing));
    manager_.setThreadWork(1, false);
    EXPECT_EQ(stateOf(1), orx::csPaused);
    manager_.setCamUpdateImg(1, false);
    manager_.setThreadWork(1, true);
    EXPECT_EQ(stateOf(1), orx::csPaused) << "the other pause lasts";
    manager_.setCamUpdateImg(1, true);
    EXPECT_EQ(stateOf(1), orx::csGrabbing);
    cams_.close(1);
    EXPECT_EQ(stateOf(1), orx::csClosed);
    fakeCamera(1).isPlugged = false;
    EXPECT_FALSE(cams_.open(1, 12));
    EXPECT_EQ(orx::cameraStatus(1).reason, orx::crRefused);
    fakeCamera(1).isPlugged = true;
    EXPECT_TRUE(cams_.open(1, 12));
    EXPECT_EQ(stateOf(1), orx::csGrabbing);
    manager_.closeAllThread();
    EXPECT_EQ(orx::cameraStatus(1).reason, orx::crNoThread);
    cams_.DestoryCamera();
    EXPECT_THAT(told_.take(),
                ElementsAre("1 open: cameraReady is false", "1 grabbing: as the host asked",
                            "1 paused: as the host asked", "1 grabbing: as the host asked",
                            "1 closed: as the host asked", "1 closed: the driver could not open or start it",
                            "1 grabbing: as the host asked", "1 open: no grab thread runs",
                            "0 closed: as the host asked", "1 closed: as the host asked",
                            "2 closed: as the host asked"));
    EXPECT_EQ(orx::cameraStatus(1).name, "left");
    const std::vector<std::uint64_t> changes = told_.changes();
    for (std::size_t i = 1; i < changes.size(); ++i) EXPECT_EQ(changes[i], changes[i - 1] + 1);
    EXPECT_EQ(stateOf(-1), orx::csClosed);
    EXPECT_EQ(stateOf(9), orx::csClosed);
    EXPECT_FALSE(orx::setReconnect(9, {}));
}

TEST_F(CameraState, ALossIsToldWithItsReasonAndCamera) {
    orx::setCameraStateCallback(Told::add, &told_);
    configs_[2].name = "top";
    start(2);
    ASSERT_TRUE(becomes(2, orx::csGrabbing));
    told_.take();
    fakeCamera(2).picture = fake::Picture::kEmpty;
    ASSERT_TRUE(becomes(2, orx::csLost));
    EXPECT_FALSE(isReady()) << "as it always was";
    EXPECT_EQ(orx::cameraStatus(2).reason, orx::crEmptyPicture);
    EXPECT_EQ(orx::cameraStatus(2).name, "top");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(stateOf(2), orx::csLost) << "until a picture comes";
    fakeCamera(2).picture = fake::Picture::kGood;
    setReady(true);
    ASSERT_TRUE(becomes(2, orx::csGrabbing));
    EXPECT_THAT(told_.take(),
                ElementsAre("2 lost: six fetches in a row failed, the last with an empty picture",
                            "2 grabbing: it was lost and is back"));
    EXPECT_EQ(host_.takeMessages().size(), 1U);
}

TEST_F(CameraState, ALostCameraMayWaitAlone) {
    orx::setReconnect(1, {orx::lpThisOneWaits});
    for (const int slot : {0, 1}) start(slot);
    ASSERT_TRUE(becomes(0, orx::csGrabbing) && becomes(1, orx::csGrabbing));
    ASSERT_TRUE(cams_.stop(1));
    ASSERT_TRUE(becomes(1, orx::csOpen)) << "one that was stopped is not lost";
    EXPECT_TRUE(waitForFrames(0, 5));
    const int fetched = fakeCamera(1).fetches;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(fakeCamera(1).fetches, fetched) << "nor is it asked for pictures";
    EXPECT_EQ(orx::cameraStatus(1).reason, orx::crStopped);
    ASSERT_TRUE(cams_.start(1));

    fakeCamera(1).isPlugged = false;
    ASSERT_TRUE(becomes(1, orx::csLost));
    EXPECT_THAT(host_.takeMessages(),
                ElementsAre(Message{"相机2 取图失败,请重连该相机,其他相机继续工作", kReconnectColor}));
    EXPECT_TRUE(isReady());
    EXPECT_TRUE(goesOn(0));
    fakeCamera(1).isPlugged = true;
    const int fetches = fakeCamera(1).fetches;
    EXPECT_TRUE(goesOn(0));
    EXPECT_EQ(fakeCamera(1).fetches, fetches) << "it is the host's to reconnect";
    cams_.close(1);
    EXPECT_EQ(stateOf(1), orx::csClosed);
    ASSERT_TRUE(cams_.open(1, 12));
    EXPECT_TRUE(goesOn(1));
}

TEST_F(CameraState, ALostCameraIsConnectedAgainAndSetAsItWas) {
    orx::setCameraStateCallback(Told::add, &told_);
    orx::setReconnect(1, {orx::lpReconnect, 20, 80});
    ASSERT_TRUE(cams_.SetParam(1, 5000, VD_PARAM_EXPOSURE));
    EXPECT_FALSE(cams_.SetParam(1, 60, VD_PARAM_GAIN)) << "what it refuses is no setting";
    ASSERT_TRUE(cams_.SetParam(1, 7000, VD_PARAM_EXPOSURE));
    for (const int slot : {0, 1}) start(slot);
    ASSERT_TRUE(becomes(0, orx::csGrabbing) && becomes(1, orx::csGrabbing));
    told_.take();
    driver_->takeCalls();
    const auto lost = std::chrono::steady_clock::now();
    fakeCamera(1).isPlugged = false;
    ASSERT_TRUE(eventually([] { return orx::cameraStatus(1).attempts >= 4; }));
    // After 20, 40, 80 and 80 ms.
    EXPECT_GE(std::chrono::steady_clock::now() - lost, std::chrono::milliseconds(220));
    EXPECT_EQ(orx::cameraStatus(1).reason, orx::crRefused);
    EXPECT_TRUE(isReady());
    EXPECT_TRUE(goesOn(0));
    for (const std::string& call : callsOf(1)) {
        EXPECT_TRUE(call == "VDStop 1" || call == "VDClose 1" || call == "VDOpen 12 1") << call;
    }
    fakeCamera(1).isPlugged = true;
    ASSERT_TRUE(becomes(1, orx::csGrabbing));
    EXPECT_TRUE(goesOn(1));
    const std::vector<std::string> calls = callsOf(1);
    const std::vector<std::string> opened = {"VDOpen 12 1", "VDSetParam 1 1 7000", "VDStart 1"};
    ASSERT_GE(calls.size(), opened.size());
    EXPECT_EQ(std::vector<std::string>(calls.end() - 3, calls.end()), opened);
    EXPECT_THAT(told_.take(), ElementsAre("1 lost: six fetches in a row failed",
                                          "1 reconnecting: six fetches in a row failed",
                                          "1 reconnecting: the driver could not open or start it",
                                          "1 grabbing: it was lost and is back"));
    EXPECT_THAT(host_.takeMessages(),
                ElementsAre(Message{"相机2 取图失败,正在自动重连,其他相机继续工作", kReconnectColor},
                            Message{"相机2 已恢复取图", kReconnectColor}));

    fakeCamera(1).isPlugged = false;
    ASSERT_TRUE(becomes(1, orx::csReconnecting));
    cams_.close(1);
    EXPECT_TRUE(becomes(1, orx::csClosed)) << "the host's again";
    fakeCamera(1).isPlugged = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
    EXPECT_EQ(stateOf(1), orx::csClosed);
    EXPECT_FALSE(cams_.haveOpen(1));
}

TEST_F(CameraState, ACameraThatOpensAndStaysMuteIsStillSought) {
    orx::setReconnect(1, {orx::lpReconnect, 5, 10});
    start(1);
    ASSERT_TRUE(becomes(1, orx::csGrabbing));
    fakeCamera(1).picture = fake::Picture::kFailure;
    ASSERT_TRUE(eventually([] { return orx::cameraStatus(1).attempts >= 3; }));
    EXPECT_EQ(stateOf(1), orx::csReconnecting);
    EXPECT_EQ(orx::cameraStatus(1).reason, orx::crNoPicture) << "it can be opened";
    fakeCamera(1).picture = fake::Picture::kGood;
    EXPECT_TRUE(becomes(1, orx::csGrabbing));
}

TEST_F(CameraState, HealthyCamerasAreNotTouched) {
    for (int slot = 0; slot < 3; ++slot) {
        orx::setReconnect(slot, {orx::lpReconnect, 5, 10});
        start(slot);
    }
    for (int slot = 0; slot < 3; ++slot) ASSERT_TRUE(becomes(slot, orx::csGrabbing));
    driver_->takeCalls();
    for (int round = 0; round < 5; ++round) {
        fakeCamera(2).isPlugged = false;
        ASSERT_TRUE(eventually([] { return orx::cameraStatus(2).attempts >= 3; }));
        fakeCamera(2).isPlugged = true;
        ASSERT_TRUE(becomes(2, orx::csGrabbing));
    }
    for (const int slot : {0, 1}) {
        EXPECT_TRUE(goesOn(slot));
        EXPECT_EQ(manager_.getFailedFetches(slot), 0);
    }
    for (const std::string& call : driver_->takeCalls()) {
        EXPECT_EQ(call.back(), '2') << call;
    }
}

TEST_F(CameraState, AModuleThatReconnectsByItselfIsOnlyAsked) {
    fakeCamera(0).isNumbered = true;
    fakeCamera(0).frameFlags = VD_FRAME_RETURNS;
    orx::setReconnect(0, {orx::lpReconnect, 5, 10});
    start(0);
    ASSERT_TRUE(becomes(0, orx::csGrabbing));
    driver_->takeCalls();
    fakeCamera(0).isPlugged = false;
    ASSERT_TRUE(eventually([] { return orx::cameraStatus(0).attempts >= 3; }));
    EXPECT_EQ(orx::cameraStatus(0).reason, orx::crNoPicture);
    fakeCamera(0).isPlugged = true;
    ASSERT_TRUE(becomes(0, orx::csGrabbing));
    EXPECT_THAT(driver_->takeCalls(), testing::IsEmpty());
}

TEST_F(CameraState, ACallbackThatThrowsIsNoLossOfACameraThatWaitsAlone) {
    orx::setReconnect(0, {orx::lpThisOneWaits});
    start(0);
    manager_.setDrawImgCallbackFunc(
        true, [](cv::Mat&, int) { throw std::runtime_error("no disk"); }, 0);
    ASSERT_TRUE(waitForFrames(0, 20));
    EXPECT_EQ(stateOf(0), orx::csGrabbing);
    EXPECT_TRUE(isReady());
}

// The host's callback may do what a host does, on whichever thread it runs.
TEST_F(CameraState, ACallbackMayCallBack) {
    static std::atomic<int> calls;
    static orx::TMultiCamera* cams;
    static orx::TCameraConfig* config;
    calls = 0;
    cams = &cams_;
    config = configs_.data();
    orx::setCameraStateCallback(
        [](const orx::TCameraStatus& status, void*) {
            if (++calls > 40) return;
            orx::cameraStatus(status.camera);
            orx::imgThreadManager.getThreadImage(0);
            if (calls % 3 == 0)
                orx::imgThreadManager.startThread(cams, config, 1);  // refused on a grab thread
            if (calls % 4 == 0) orx::imgThreadManager.closeAllThread();
            if (calls % 5 == 0) throw std::runtime_error("no screen");
        },
        nullptr);
    for (int round = 0; round < 60 && calls < 40; ++round) {
        start(0);
        manager_.setThreadWork(0, round % 2 == 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        manager_.closeAllThread();
    }
    EXPECT_GE(calls, 40);
    std::set<std::string> texts;
    for (const Message& message : host_.takeMessages()) texts.insert(message.text);
    EXPECT_THAT(texts, testing::Contains(HasSubstr("的状态回调函数出错: no screen")));
    orx::setCameraStateCallback(nullptr, nullptr);
    const int ended = calls;
    start(0);
    manager_.closeAllThread();
    EXPECT_EQ(calls, ended);
}

}  // namespace
