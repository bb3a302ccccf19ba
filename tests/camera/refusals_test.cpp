// Why the camera functions refuse: each code that their headers name.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "tests/camera/grabbing.h"
#include "tests/support/refusal_check.h"

namespace {

using orx::test::notRefused;
using orx::test::refusedWith;

constexpr int kNoBrand = 9;

struct Case {
    const char* function;
    std::function<void()> call;
};

void expectAll(orx::TRefusalCode code, const std::vector<Case>& cases) {
    for (const Case& one : cases) EXPECT_TRUE(refusedWith(code, one.function, one.call));
}

class Refusals : public test::Grabbing {
  protected:
    // Each operation on one camera of the host's.
    std::vector<Case> operations(orx::TMultiCamera& cams, int i) {
        return {{"open", [=, &cams] { EXPECT_FALSE(cams.open(i, 12)); }},
                {"connectCamera", [=, &cams] { EXPECT_FALSE(cams.connectCamera(i, 12)); }},
                {"start", [=, &cams] { EXPECT_FALSE(cams.start(i)); }},
                {"stop", [=, &cams] { EXPECT_FALSE(cams.stop(i)); }},
                {"close", [=, &cams] { EXPECT_FALSE(cams.close(i)); }},
                {"haveOpen", [=, &cams] { EXPECT_FALSE(cams.haveOpen(i)); }},
                {"getImgSize", [=, &cams] { EXPECT_TRUE(cams.getImgSize(i).empty()); }},
                {"GetParam", [=, &cams] { EXPECT_TRUE(std::isnan(cams.GetParam(i, 1))); }},
                {"SetParam", [=, &cams] { EXPECT_FALSE(cams.SetParam(i, 1, 1)); }},
                {"GetImage", [=, &cams] { EXPECT_FALSE(cams.GetImage(image_, i, false, 0)); }}};
    }
    static std::vector<Case> threadOperations(orx::TImageThreadManager& threads, int slot) {
        return {{"initView", [=, &threads] { threads.initView(slot, 0); }},
                {"setThreadWork", [=, &threads] { threads.setThreadWork(slot, true); }},
                {"setCamUpdateImg", [=, &threads] { threads.setCamUpdateImg(slot, true); }},
                {"setDrawImgCallbackFunc",
                 [=, &threads] { threads.setDrawImgCallbackFunc(false, nullptr, slot); }},
                {"getThreadImage", [=, &threads] { EXPECT_TRUE(threads.getThreadImage(slot).empty()); }},
                {"getCurrentFrameRate", [=, &threads] { EXPECT_EQ(threads.getCurrentFrameRate(slot), 0); }},
                {"getFailedFetches", [=, &threads] { EXPECT_EQ(threads.getFailedFetches(slot), 0); }},
                {"threadIdx2CameraIdx", [=, &threads] { EXPECT_EQ(threads.threadIdx2CameraIdx(slot), 0); }}};
    }

    cv::Mat image_;
};

TEST_F(Refusals, OfNumbersThatNoCameraHas) {
    for (const int i : {-1, 3, 9}) expectAll(orx::rcNoCamera, operations(cams_, i));
    int slots[9] = {7, 1, 2, 3, 4, 5, 6, 0, 8};
    cams_.SetSortedCameraIdx(slots);
    EXPECT_TRUE(refusedWith(orx::rcNoCamera, "haveOpen", [&] { cams_.haveOpen(0); })) << "its slot is 7";
    orx::TFrame frame;
    for (const int camera : {-1, 9}) {
        expectAll(orx::rcNoCamera, threadOperations(manager_, camera));
        expectAll(
            orx::rcNoCamera,
            {{"startThread", [=] { manager_.startThread(&cams_, nullptr, camera); }},
             {"openFrames", [=] { EXPECT_FALSE(orx::openFrames(camera)); }},
             {"closeFrames", [=] { orx::closeFrames(camera); }},
             {"takeFrame", [=, &frame] { EXPECT_FALSE(orx::takeFrame(camera, frame, 0)); }},
             {"frameCounts", [=] { EXPECT_EQ(orx::frameCounts(camera).delivered, 0U); }},
             {"setFrameCallback", [=] { EXPECT_FALSE(orx::setFrameCallback(camera, nullptr, nullptr)); }},
             {"cameraStatus", [=] { EXPECT_EQ(orx::cameraStatus(camera).state, orx::csClosed); }},
             {"setReconnect", [=] { EXPECT_FALSE(orx::setReconnect(camera, {})); }}});
    }
    EXPECT_EQ(orx::lastRefusal().text, "setReconnect: there can't be a camera 9; they are 0 to 8");
    EXPECT_TRUE(refusedWith(orx::rcTooMany, "setCameraNumber", [&] { cams_.setCameraNumber(10); }));
    EXPECT_EQ(orx::lastRefusal().text, "setCameraNumber: 10 cameras; 9 at the most are taken");
}

TEST_F(Refusals, OfWhatIsNotOpenedOrStarted) {
    ASSERT_TRUE(cams_.close(1));
    for (Case& one : operations(cams_, 1)) {
        const std::string name = one.function;
        if (name == "start" || name == "stop" || name == "GetParam" || name == "SetParam" ||
            name == "GetImage") {
            EXPECT_TRUE(refusedWith(orx::rcNotReady, name, one.call));
        }
    }
    EXPECT_TRUE(refusedWith(orx::rcNotReady, "start", [&] { cams_.cameras[1]->start(); }));
    EXPECT_EQ(orx::lastRefusal().text, "start: camera 1 is not open");
    orx::TImageThreadManager unused;
    expectAll(orx::rcNotReady, threadOperations(unused, 2));
    orx::TFrame frame;
    orx::closeFrames(0);
    expectAll(orx::rcNotReady, {{"takeFrame", [&] { orx::takeFrame(0, frame, 5); }},
                                {"frameCounts", [] { orx::frameCounts(0); }}});
}

TEST_F(Refusals, OfTheDriver) {
    fake::Camera& camera = fakeCamera(0);
    camera.stops = false;
    EXPECT_TRUE(refusedWith(orx::rcDriver, "stop", [&] { EXPECT_FALSE(cams_.stop(0)); }));
    camera.stops = true;
    camera.isPlugged = false;
    expectAll(orx::rcDriver, {{"GetImage", [&] { EXPECT_FALSE(cams_.GetImage(image_, 0, false, 0)); }},
                              {"SetParam", [&] { EXPECT_FALSE(cams_.SetParam(0, 5, 77)); }},
                              {"start", [&] { EXPECT_FALSE(cams_.start(0)); }},  // and closes it
                              {"open", [&] { EXPECT_FALSE(cams_.open(0, 12)); }},
                              {"connectCamera", [&] { EXPECT_FALSE(cams_.connectCamera(0, 12)); }}});
    EXPECT_EQ(orx::lastRefusal().text, "connectCamera: the driver did not open camera 0");
    driver_->parameter = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(
        refusedWith(orx::rcDriver, "GetParam", [&] { EXPECT_TRUE(std::isnan(cams_.GetParam(1, 7))); }));
    EXPECT_EQ(orx::lastRefusal().text, "GetParam: the driver refused parameter 7 of camera 1");
    driver_->parameter = 0.0F;
    driver_->findsCameras = false;
    EXPECT_TRUE(refusedWith(orx::rcDriver, "InitCamera",
                            [&] { EXPECT_FALSE(cams_.InitCamera(12, nullptr, false, false)); }));
    EXPECT_TRUE(refusedWith(orx::rcOption, "CheckCameraDriverValid",
                            [&] { EXPECT_FALSE(cams_.CheckCameraDriverValid(kNoBrand, nullptr)); }));
}

// Nothing of these tests' own answers as a probe.
TEST_F(Refusals, OfBrandsThatAreNotConnected) {
    orx::TCamera camera(2);
    expectAll(orx::rcNoCamera, {{"CheckCameraType", [&] { EXPECT_FALSE(camera.CheckCameraType(7)); }},
                                {"open", [&] { EXPECT_FALSE(camera.open(7, true)); }},
                                {"connectCamera", [&] { EXPECT_FALSE(camera.connectCamera(7, true)); }}});
    EXPECT_TRUE(refusedWith(orx::rcDriver, "getCameraType", [&] { EXPECT_EQ(camera.getCameraType(), -3); }));
}

TEST_F(Refusals, OfWaitingThatIsOver) {
    ASSERT_TRUE(orx::openFrames(2));
    orx::TFrame frame;
    EXPECT_TRUE(refusedWith(orx::rcTimeout, "takeFrame", [&] { EXPECT_FALSE(orx::takeFrame(2, frame, 3)); }));
    EXPECT_EQ(orx::lastRefusal().text, "takeFrame: no frame of camera 2 came within 3 ms");
    orx::closeFrames(2);
}

std::string toldInCallback;
void startInCallback(const orx::TFrame& /*frame*/, void* manager) {
    static_cast<orx::TImageThreadManager*>(manager)->startThread(nullptr, nullptr, 1);
    toldInCallback = orx::lastRefusal().text;
}

TEST_F(Refusals, OfThreadsInACallback) {
    orx::setFrameCallback(0, startInCallback, &manager_);
    start(0);
    ASSERT_TRUE(waitForFrames(0, 3));
    manager_.closeAllThread();
    orx::setFrameCallback(0, nullptr, nullptr);
    EXPECT_EQ(toldInCallback, "startThread: a grab thread, in a callback, can't wait for threads");
    EXPECT_NE(orx::lastRefusal().text, toldInCallback) << "it is that thread's";
}

TEST_F(Refusals, AreNotSetByWhatSucceeds) {
    EXPECT_TRUE(notRefused([&] {
        EXPECT_TRUE(cams_.InitCamera(12, nullptr, false, false));
        EXPECT_TRUE(cams_.CheckCameraDriverValid(12, nullptr));
        cams_.setCameraNumber(3);
        EXPECT_TRUE(cams_.close(0) && cams_.open(0, 12) && cams_.haveOpen(0));
        EXPECT_TRUE(cams_.stop(0) && cams_.start(0) && cams_.SetParam(0, 1, 1));
        EXPECT_FALSE(std::isnan(cams_.GetParam(0, 1)));
        EXPECT_TRUE(cams_.GetImage(image_, 0, false, 0));
        EXPECT_FALSE(cams_.getImgSize(0).empty());
        EXPECT_TRUE(orx::setReconnect(0, {}));
        EXPECT_EQ(orx::cameraStatus(0).camera, 0);
        EXPECT_TRUE(orx::openFrames(0));
        start(0);
        manager_.setDrawImgCallbackFunc(false, nullptr, 0);
        EXPECT_TRUE(waitForFrames(0, 2));
        orx::TFrame frame;
        EXPECT_TRUE(orx::takeFrame(0, frame, 5000));
        EXPECT_GT(orx::frameCounts(0).delivered, 0U);
        EXPECT_FALSE(manager_.getThreadImage(0).empty());
        manager_.setThreadWork(0, true);
        manager_.closeAllThread();
        orx::closeFrames(0);
        EXPECT_TRUE(cams_.DestoryCamera());
    }));
}

// Without a module, or with one that lacks what may be lacking.
TEST(RefusalsOfModules, SayWhatIsMissing) {
    test::Host host;
    EXPECT_TRUE(refusedWith(orx::rcDriver, "TMultiCamera", [] {
        orx::TMultiCamera cams;
        EXPECT_EQ(cams.dllLoaded, 0);
    }));
    orx::TMultiCamera cams;
    expectAll(orx::rcDriver,
              {{"InitCamera", [&] { EXPECT_FALSE(cams.InitCamera(12, nullptr, false, false)); }},
               {"open", [&] { EXPECT_FALSE(cams.open(0, 12)); }},
               {"DestoryCamera", [&] { EXPECT_FALSE(cams.DestoryCamera()); }}});
    orx::TCamera camera(0);
    EXPECT_TRUE(refusedWith(orx::rcDriver, "open", [&] { EXPECT_FALSE(camera.open(12, false)); }));
    EXPECT_EQ(orx::lastRefusal().text, "open: no driver module that can open camera 0 is loaded");

    const test::LoadedModule small(test::fakeModule("no_optional", "TQVisionDriver"));
    orx::TMultiCamera smallCams;
    smallCams.setCameraNumber(1);
    ASSERT_TRUE(smallCams.open(0, 12));
    EXPECT_TRUE(refusedWith(orx::rcDriver, "GetParam", [&] { smallCams.GetParam(0, 1); }));
    EXPECT_TRUE(
        refusedWith(orx::rcDriver, "DestoryCamera", [&] { EXPECT_FALSE(smallCams.DestoryCamera()); }));
    smallCams.close(0);
    smallCams.freeDll();
}

}  // namespace
