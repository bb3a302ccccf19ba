#include "tests/gige/gige_test.h"

#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <opencv2/core.hpp>
#include <thread>

#include "drivers/TQVisionDriver/frame_conversion.h"
#include "tests/gige/network_namespace.h"
#include "tests/gige/test_pattern.h"

namespace gige {

void sleepMs(int duration) { std::this_thread::sleep_for(std::chrono::milliseconds(duration)); }

bool eventually(int limitMs, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
    while (std::chrono::steady_clock::now() < deadline) {
        if (condition()) return true;
        sleepMs(5);
    }
    return condition();
}

namespace {

// Modules stay loaded, as in a host.
void* loaded(const char* file) {
    void* const module = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(module, nullptr) << dlerror();
    return module;
}

template <typename Procedure>
void bind(void* module, const char* name, Procedure& procedure) {
    procedure = module != nullptr ? reinterpret_cast<Procedure>(dlsym(module, name)) : nullptr;
    EXPECT_NE(procedure, nullptr) << name;
}

}  // namespace

Modules::Modules() {
    void* const driver = loaded(ORX_DRIVER_MODULE);
    bind(driver, "VDInitCamera", initCamera);
    bind(driver, "VDOpen", open);
    bind(driver, "VDStart", start);
    bind(driver, "VDStop", stop);
    bind(driver, "VDGetImage", getImage);
    bind(driver, "VDGetFrameInfo", getFrameInfo);
    bind(driver, "VDSetParam", setParam);
    bind(driver, "VDGetParam", getParam);
    bind(driver, "VDClose", close);
    bind(driver, "VDDestoryCamera", destroy);
    bind(loaded(ORX_BRAND_MODULE), "VDGetCameraType", getCameraType);
}

cv::Mat expectedPicture(std::uint32_t code, cv::Size size, unsigned frame, std::uint32_t exposure,
                        std::uint32_t gain) {
    const std::size_t bits = static_cast<std::size_t>(size.area()) * ((code >> 16U) & 0xFFU);
    std::vector<unsigned char> bytes(bits / 8);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = patternByte(frame, i);
    std::memcpy(bytes.data(), &exposure, 4);
    std::memcpy(bytes.data() + 4, &gain, 4);
    cv::Mat picture;
    EXPECT_TRUE(vision::toPicture({bytes.data(), bytes.size(), size.width, size.height, 0, code}, picture));
    return picture;
}

GigeTest::GigeTest() { setenv("TQVISION_CONFIG", "", 1); }

GigeTest::~GigeTest() {
    if (modules_.destroy != nullptr) modules_.destroy();
}

void GigeTest::SetUp() {
    if (!whyNoNetwork().empty()) GTEST_SKIP() << whyNoNetwork();
}

SoftwareCamera& GigeTest::addCamera(const CameraOptions& options) {
    cameras_.push_back(std::make_unique<SoftwareCamera>(options));
    EXPECT_EQ(cameras_.back()->problem(), "");
    return *cameras_.back();
}

void GigeTest::configure(const std::string& settings) {
    test::writeBytes(folder_ / "settings.ini", settings);
    setenv("TQVISION_CONFIG", (folder_ / "settings.ini").c_str(), 1);
}

void GigeTest::openCameras(int type, int count) {
    ASSERT_TRUE(found(type));
    for (int index = 0; index < count; ++index) {
        ASSERT_TRUE(modules_.open(type, index)) << index;
        ASSERT_TRUE(start(index)) << index;
    }
}

bool GigeTest::found(int type) {
    bool any = false;
    for (int attempt = 0; !any && attempt < 3; ++attempt) any = modules_.initCamera(type, nullptr, false);
    return any;
}

bool GigeTest::start(int index) {
    int width = 0;
    int height = 0;
    int channels = 0;
    return modules_.start(&width, &height, &channels, index);
}

cv::Mat GigeTest::fetch(int index) const {
    VDImage image{};
    if (!modules_.getImage(&image, index)) return {};
    return cv::Mat(image.height, image.width, CV_8UC(image.channels), image.data).clone();
}

cv::Mat GigeTest::fetchNew(int index) const {
    fetch(index);
    const float before = value(index, VD_PARAM_FRAME_NUMBER);
    if (!eventually(3000, [&] { return value(index, VD_PARAM_FRAME_NUMBER) > before; })) return {};
    return fetch(index);
}

int GigeTest::patternOf(const cv::Mat& picture, std::uint32_t code, std::uint32_t exposure,
                        std::uint32_t gain) {
    for (unsigned frame = 0; frame < kPatterns; ++frame) {
        const cv::Mat expected = expectedPicture(code, picture.size(), frame, exposure, gain);
        if (picture.type() == expected.type() && cv::norm(picture, expected, cv::NORM_INF) == 0.0) {
            return static_cast<int>(frame);
        }
    }
    return -1;
}

}  // namespace gige

int main(int argc, char** argv) {
    gige::enterNetworkNamespace(argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
