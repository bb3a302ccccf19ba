// What happens when the driver module is missing, incomplete, or gone.
#include <gmock/gmock.h>

#include <cmath>

#include "tests/camera/host.h"

namespace {

using test::Message;
using testing::ElementsAre;
using testing::HasSubstr;

// Every operation on a camera, as true or false.
std::vector<bool> callEverything(orx::TMultiCamera& cams) {
    cv::Mat image;
    return {cams.open(0, 12),       cams.connectCamera(0, 12),
            cams.start(0),          cams.stop(0),
            cams.close(0),          cams.haveOpen(0),
            cams.SetParam(0, 5, 1), cams.GetImage(image, 0, false, 0)};
}

TEST(DriverLoading, MissingModuleIsToldAndEveryCallFails) {
    test::Host host;
    orx::TMultiCamera cams;
    EXPECT_EQ(cams.dllLoaded, 0);
    EXPECT_EQ(cams.hDriver, nullptr);
    EXPECT_THAT(host.takeMessages(), ElementsAre(Message{test::kNoDriver, test::kErrorColor}));
    EXPECT_THAT(host.takeTraces(), ElementsAre("TQVisionDriver Handle 为空！", HasSubstr("TQVisionDriver")));

    cams.setCameraNumber(1);
    EXPECT_FALSE(cams.InitCamera(12, nullptr, false, false));
    EXPECT_THAT(host.takeTraces(), ElementsAre("cameraType:12"));
    EXPECT_THAT(host.takeMessages(), testing::IsEmpty());
    EXPECT_EQ(callEverything(cams), std::vector<bool>(8, false));
    EXPECT_THAT(host.takeMessages(), testing::Each(Message{test::kNoDriver, test::kErrorColor}));
    EXPECT_TRUE(std::isnan(cams.GetParam(0, 1)));
    EXPECT_EQ(cams.getImgSize(0), cv::Size());
    EXPECT_FALSE(cams.DestoryCamera());
    cams.freeDll();  // nothing to free
}

TEST(DriverLoading, EachRequiredProcedureIsRequired) {
    for (const std::string name :
         {"VDInitCamera", "VDOpen", "VDStart", "VDStop", "VDGetImage", "VDSetParam", "VDClose"}) {
        SCOPED_TRACE(name);
        const test::LoadedModule module(test::fakeModule("no_" + name, "TQVisionDriver"));
        ASSERT_TRUE(module.loaded());
        test::Host host;
        orx::TMultiCamera cams;
        EXPECT_EQ(cams.dllLoaded, 0);
        EXPECT_THAT(host.takeTraces(),
                    ElementsAre("TQVisionDriver Handle 不为空！", "TQVisionDriver 函数加载失败！",
                                "TQVisionDriver lacks " + name));
        EXPECT_THAT(host.takeMessages(), ElementsAre(Message{test::kNoDriver, test::kErrorColor}));
    }
}

TEST(DriverLoading, OptionalProceduresMayBeMissing) {
    const test::LoadedModule module(test::fakeModule("no_optional", "TQVisionDriver"));
    test::Host host;
    orx::TMultiCamera cams;
    EXPECT_EQ(cams.dllLoaded, 1);
    EXPECT_THAT(host.takeTraces(), ElementsAre("TQVisionDriver Handle 不为空！"));
    EXPECT_THAT(host.takeMessages(), testing::IsEmpty());
    cams.setCameraNumber(1);
    ASSERT_TRUE(cams.open(0, 12));
    EXPECT_TRUE(std::isnan(cams.GetParam(0, 1)));
    EXPECT_FALSE(cams.DestoryCamera());
    EXPECT_FALSE(cams.haveOpen(0)) << "closed all the same";
    cams.freeDll();
}

TEST(DriverLoading, AfterTheLastFreeCallsFailInsteadOfCrashing) {
    const auto module = std::make_unique<test::LoadedModule>(test::fakeModule("complete", "TQVisionDriver"));
    test::Host host;
    orx::TMultiCamera first;
    orx::TMultiCamera second;
    first.setCameraNumber(1);
    ASSERT_TRUE(first.open(0, 12));
    second.freeDll();
    second.freeDll();
    cv::Mat image;
    EXPECT_TRUE(first.GetImage(image, 0, false, 0)) << "the first still has its module";
    first.freeDll();
    first.freeDll();
    EXPECT_EQ(first.dllLoaded, 1) << "freeing does not change the flag";
    EXPECT_FALSE(first.GetImage(image, 0, false, 0));
    EXPECT_FALSE(first.InitCamera(12, nullptr, false, false));
    EXPECT_FALSE(first.DestoryCamera());
}

}  // namespace
