// Cameras by their logical numbers: opening, closing, indices, parameters.
#include <gmock/gmock.h>

#include <atomic>
#include <climits>
#include <cmath>
#include <cstring>

#include "tests/camera/host.h"

namespace {

using test::Message;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kTooLarge = "相机idx大于相机个数";
constexpr const char* kNegative = "相机idx小于0";

Message plain(const std::string& text) { return {text, test::kPlainColor}; }
Message error(const std::string& text) { return {text, test::kErrorColor}; }

class MultiCamera : public test::CameraTest {
  protected:
    MultiCamera() {
        host_.takeMessages();
        host_.takeTraces();
    }
    orx::TCamera& camera(int slot) { return *cams_.cameras[static_cast<std::size_t>(slot)]; }
};

TEST_F(MultiCamera, OpensStartsStopsAndCloses) {
    EXPECT_EQ(camera(1).channels, 1);
    EXPECT_EQ(cams_.getImgSize(1), cv::Size());
    fakeCamera(1).channels = 3;
    ASSERT_TRUE(cams_.open(1, 10));
    EXPECT_THAT(driver_->takeCalls(), ElementsAre("VDOpen 10 1", "VDStart 1"));
    EXPECT_TRUE(cams_.haveOpen(1));
    EXPECT_TRUE(camera(1).isWorking);
    EXPECT_EQ(cams_.getImgSize(1), cv::Size(8, 6));
    EXPECT_EQ(camera(1).channels, 3);

    EXPECT_TRUE(cams_.connectCamera(1, 10)) << "open already";
    EXPECT_THAT(driver_->takeCalls(), IsEmpty());
    EXPECT_TRUE(cams_.stop(1));
    EXPECT_TRUE(cams_.haveOpen(1));
    EXPECT_FALSE(camera(1).isWorking);
    EXPECT_TRUE(cams_.start(1));
    EXPECT_TRUE(camera(1).isWorking);
    EXPECT_THAT(driver_->takeCalls(), ElementsAre("VDStop 1", "VDStart 1"));

    fakeCamera(1).stops = false;
    EXPECT_FALSE(cams_.stop(1));
    EXPECT_TRUE(camera(1).isWorking);
    EXPECT_TRUE(cams_.close(1)) << "whatever the driver says";
    EXPECT_FALSE(cams_.haveOpen(1));
    EXPECT_FALSE(camera(1).isWorking);
    EXPECT_THAT(driver_->takeCalls(), ElementsAre("VDStop 1", "VDStop 1", "VDClose 1"));

    EXPECT_TRUE(cams_.close(1));
    EXPECT_FALSE(cams_.start(1));
    EXPECT_FALSE(cams_.stop(1));
    EXPECT_THAT(driver_->takeCalls(), IsEmpty());
    EXPECT_THAT(host_.takeMessages(), IsEmpty());
}

TEST_F(MultiCamera, FailuresToOpenAreTold) {
    fakeCamera(2).isPlugged = false;
    EXPECT_FALSE(cams_.open(2, 12));
    EXPECT_THAT(driver_->takeCalls(), ElementsAre("VDOpen 12 2"));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(plain("camera3 start failed"),
                                                  error("请检查相机3 的IP是否设置正确以及相机是否被占用!")));
    fakeCamera(2).isPlugged = true;
    fakeCamera(2).starts = false;
    EXPECT_FALSE(cams_.connectCamera(2, 12));
    EXPECT_THAT(driver_->takeCalls(), ElementsAre("VDOpen 12 2", "VDStart 2", "VDClose 2"));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(plain("camera3 start failed")));
    EXPECT_FALSE(cams_.haveOpen(2));

    fakeCamera(2).starts = true;
    ASSERT_TRUE(cams_.open(2, 12));
    fakeCamera(2).starts = false;
    driver_->takeCalls();
    EXPECT_FALSE(cams_.start(2));
    EXPECT_THAT(driver_->takeCalls(), ElementsAre("VDStart 2", "VDClose 2"));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(plain("camera3 start failed")));
    EXPECT_FALSE(cams_.haveOpen(2));
    EXPECT_FALSE(camera(2).isWorking);
}

TEST_F(MultiCamera, NumberIsLimitedToNine) {
    orx::TCamera* const first = cams_.cameras[0];
    cams_.setCameraNumber(10);
    EXPECT_THAT(host_.takeMessages(), ElementsAre(error("最多支持9个相机")));
    EXPECT_EQ(cams_.cameraNumber, 3);
    cams_.setCameraNumber(9);
    EXPECT_EQ(cams_.cameras[0], first) << "existing cameras are kept";
    for (int slot = 0; slot < 9; ++slot) EXPECT_EQ(camera(slot).index, slot);
    cams_.setCameraNumber(-4);
    EXPECT_EQ(cams_.cameraNumber, -4);
    EXPECT_NE(cams_.cameras[8], nullptr);
    EXPECT_FALSE(cams_.haveOpen(0));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(error(kTooLarge)));
}

TEST_F(MultiCamera, LogicalNumbersAreMappedToSlots) {
    int order[9] = {1, 0, 2, 3, -7, 5, 6, 7, 8};
    EXPECT_TRUE(cams_.SetSortedCameraIdx(order));
    EXPECT_TRUE(cams_.SetSortedCameraIdx(nullptr)) << "leaves the order";
    ASSERT_TRUE(cams_.open(0, 12));
    EXPECT_TRUE(camera(1).isOpen);
    EXPECT_FALSE(camera(0).isOpen);
    cv::Mat image;
    ASSERT_TRUE(cams_.GetImage(image, 0, false, 0));
    EXPECT_EQ(image.at<uchar>(5, 7), fake::sampleOf(1, 7, 5, 0));
    EXPECT_THAT(host_.takeMessages(), IsEmpty());

    cams_.setCameraNumber(1);
    EXPECT_FALSE(cams_.GetImage(image, 0, false, 0));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(error(kTooLarge))) << "slot 1 of 1";
    cams_.setCameraNumber(5);
    EXPECT_FALSE(cams_.GetImage(image, 4, false, 0));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(error(kNegative))) << "slot -7";

    cams_.cameraNumber = 12;  // more than there can be
    order[0] = 10;
    cams_.SetSortedCameraIdx(order);
    EXPECT_FALSE(cams_.haveOpen(0));
    EXPECT_FALSE(cams_.haveOpen(11));
    EXPECT_THAT(host_.takeMessages(), ElementsAre(error(kTooLarge), error(kTooLarge)));
}

TEST_F(MultiCamera, WrongNumbersAreToldByEveryOperation) {
    for (const auto& [number, text] :
         {std::pair{3, kTooLarge}, {INT_MAX, kTooLarge}, {-1, kNegative}, {INT_MIN, kNegative}}) {
        SCOPED_TRACE(number);
        cv::Mat image;
        EXPECT_FALSE(cams_.open(number, 12));
        EXPECT_FALSE(cams_.connectCamera(number, 12));
        EXPECT_FALSE(cams_.start(number));
        EXPECT_FALSE(cams_.stop(number));
        EXPECT_FALSE(cams_.close(number));
        EXPECT_FALSE(cams_.haveOpen(number));
        EXPECT_EQ(cams_.getImgSize(number), cv::Size());
        EXPECT_TRUE(std::isnan(cams_.GetParam(number, 1)));
        EXPECT_FALSE(cams_.SetParam(number, 5, 1));
        EXPECT_FALSE(cams_.GetImage(image, number, true, 2));
        EXPECT_EQ(host_.takeMessages(), std::vector<Message>(10, error(text)));
    }
    EXPECT_THAT(driver_->takeCalls(), IsEmpty());
}

TEST_F(MultiCamera, InitialisesByType) {
    long long handles[9] = {};
    EXPECT_TRUE(cams_.InitCamera(11, handles, true, true));
    EXPECT_TRUE(cams_.inited);
    EXPECT_TRUE(cams_.initFlag);
    EXPECT_THAT(driver_->takeCalls(), ElementsAre("VDInitCamera 11 1 1"));
    EXPECT_THAT(host_.takeTraces(), ElementsAre("cameraType:11"));
    EXPECT_THAT(host_.takeMessages(), IsEmpty());
    driver_->findsCameras = false;
    EXPECT_FALSE(cams_.InitCamera(12, nullptr, false, false));
    EXPECT_FALSE(cams_.inited);
    EXPECT_FALSE(cams_.initFlag);
    EXPECT_THAT(driver_->takeCalls(), ElementsAre("VDInitCamera 12 0 0"));
    EXPECT_THAT(
        host_.takeMessages(),
        ElementsAre(error("InitCamera失败,"
                          "请检查相机是否正常连接到了主机或软件设置的相机品牌与主机上的相机品牌是否一致！")));
}

TEST_F(MultiCamera, ParametersReachTheOpenCamera) {
    EXPECT_FALSE(cams_.SetParam(0, 2500, 1)) << "not open";
    EXPECT_TRUE(std::isnan(cams_.GetParam(0, 1)));
    ASSERT_TRUE(cams_.open(0, 12));
    driver_->takeCalls();
    EXPECT_TRUE(cams_.SetParam(0, 2500, 1));
    EXPECT_EQ(cams_.GetParam(0, 1), 2500.0F);
    EXPECT_FALSE(cams_.SetParam(0, 1, 99)) << "refused by the driver";
    EXPECT_THAT(driver_->takeCalls(),
                ElementsAre("VDSetParam 0 1 2500", "VDGetParam 0 1", "VDSetParam 0 99 1"));
}

TEST_F(MultiCamera, DestroyingClosesAllCamerasFirst) {
    ASSERT_TRUE(cams_.InitCamera(12, nullptr, false, false));
    ASSERT_TRUE(cams_.open(0, 12));
    ASSERT_TRUE(cams_.open(2, 12));
    driver_->takeCalls();
    EXPECT_TRUE(cams_.DestoryCamera());
    EXPECT_THAT(driver_->takeCalls(),
                ElementsAre("VDStop 0", "VDClose 0", "VDStop 2", "VDClose 2", "VDDestoryCamera"));
    EXPECT_FALSE(cams_.inited);
}

// While one camera waits for its first picture, which the driver says is on its way, the others go on.
TEST_F(MultiCamera, TheFirstPictureIsAwaitedWithoutHoldingUpOthers) {
    ASSERT_TRUE(cams_.open(0, 12) && cams_.open(1, 12));
    fakeCamera(0).isNumbered = true;
    fakeCamera(0).pending = 1'000'000;
    std::atomic<bool> hasPicture{false};
    cv::Mat image;
    std::thread host([&] {
        EXPECT_TRUE(cams_.GetImage(image, 0, false, 0));
        hasPicture = true;
    });
    ASSERT_TRUE(test::eventually([&] { return fakeCamera(0).fetches >= 3; }));
    cv::Mat other;
    EXPECT_TRUE(cams_.GetImage(other, 1, false, 0));
    EXPECT_FALSE(hasPicture);
    fakeCamera(0).pending = 0;
    host.join();
    std::int32_t number = 0;
    std::memcpy(&number, image.data, sizeof number);
    EXPECT_EQ(number, 1) << "the first that was not black";

    ASSERT_TRUE(cams_.stop(0) && cams_.start(0));
    fakeCamera(0).pending = 1'000'000;
    const auto start = std::chrono::steady_clock::now();
    image.release();
    EXPECT_TRUE(cams_.GetImage(image, 0, false, 0));
    EXPECT_EQ(image.size(), cv::Size(8, 6)) << "in the end the black one";
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    fakeCamera(0).isNumbered = false;
    const int fetches = fakeCamera(0).fetches;
    EXPECT_TRUE(cams_.GetImage(image, 0, false, 0));
    EXPECT_EQ(fakeCamera(0).fetches, fetches + 1) << "a driver that does not tell is not asked again";
}

}  // namespace
