// Cameras whose driver answers anything: the calls of a host in any order, and now and then a grab thread
// with a queue of frames, whose counts must add up.
#include <chrono>
#include <cmath>
#include <thread>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/driver_answers.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/loaded_module.h"

namespace {

using fuzz::require;

bool isSound(const cv::Mat& image) {
    return image.empty() || (image.dims == 2 && image.depth() == CV_8U && image.cols > 0 && image.rows > 0);
}

void call(orx::TMultiCamera& cameras, fuzz::Input& input) {
    const unsigned kind = input.byte() % 16U;
    const int i = input.between(-1, 4);
    const int type = input.between(0, 1) == 0 ? VD_TYPE_ANY : input.between(-3, 20);
    switch (kind) {
        case 0:
            cameras.open(i, type);
            break;
        case 1:
            cameras.start(i);
            break;
        case 2:
            cameras.stop(i);
            break;
        case 3:
            cameras.close(i);
            break;
        case 4:
            cameras.connectCamera(i, type);
            break;
        case 5:
            cameras.haveOpen(i);
            break;
        case 6: {
            const cv::Size size = cameras.getImgSize(i);
            const bool isThere = i >= 0 && cameras.cameras[static_cast<std::size_t>(i)] != nullptr;
            require(isThere || size == cv::Size(), "no size without a camera");
            break;
        }
        case 7:
            cameras.SetParam(i, input.integer(), input.between(0, 12));
            break;
        case 8:
            cameras.GetParam(i, input.between(0, 104));
            break;
        case 9: {
            const bool found = cameras.InitCamera(type, nullptr, false, input.byte() % 8U == 0);
            require(found == static_cast<bool>(cameras.inited), "found or not");
            break;
        }
        case 10:
            cameras.DestoryCamera();
            break;
        case 11:
            cameras.setCameraNumber(input.between(-1, 10));
            break;
        case 12:
            if (i >= 0 && cameras.cameras[static_cast<std::size_t>(i)] != nullptr) {
                cameras.cameras[static_cast<std::size_t>(i)]->rotationAngle = 90 * input.between(-2, 5);
                cameras.cameras[static_cast<std::size_t>(i)]->reverseXFlag = input.flag();
            }
            break;
        default: {
            cv::Mat image(2, 3, CV_8UC1, cv::Scalar(7));
            const bool scaled = input.flag();
            const bool fetched = cameras.GetImage(image, i, scaled, input.between(0, 5));
            require(isSound(image), "a picture, or none");
            require(fetched || (image.size() == cv::Size(3, 2) && image.at<uchar>(0) == 7),
                    "a refusal leaves it");
        }
    }
}

void checkGrabbing(orx::TMultiCamera& cameras, fuzz::Input& input) {
    const int slot = input.between(0, 2);
    orx::TFrameOptions options;
    options.policy = input.flag() ? orx::fpEveryOne : orx::fpNewest;
    options.capacity = input.between(-1, 5);
    orx::TCameraConfig config;
    config.frameRate = 1000;
    config.scaleEnable = input.flag();
    config.scaleFactor = input.between(1, 5);
    require(orx::openFrames(slot, options), "a queue is opened");
    zul::APPaddOrSetParamBool("cameraReady", true);
    cameras.open(slot, VD_TYPE_ANY);
    orx::imgThreadManager.startThread(&cameras, &config, slot);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(12);
    std::uint64_t taken = 0;
    while (std::chrono::steady_clock::now() < end) {
        orx::TFrame frame;
        if (!orx::takeFrame(slot, frame, 2)) continue;
        require(isSound(frame.image) && frame.camera == slot && frame.number >= 1, "frames are pictures");
        ++taken;
    }
    orx::imgThreadManager.closeAllThread();
    const orx::TFrameCounts counts = orx::frameCounts(slot);
    require(counts.taken == taken, "frames taken are counted");
    require(counts.delivered == counts.taken + counts.waiting + counts.dropped + counts.lost,
            "counts add up");
    require(isSound(orx::imgThreadManager.getThreadImage(slot)), "the last picture, or none");
    orx::closeFrames(slot);
    cameras.close(slot);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    // Never unloaded: what the coverage's run time keeps in the module would be left behind as leaked.
    static const auto* const module = new test::LoadedModule(ORX_FUZZ_DRIVER);
    static const auto giveAnswers =
        reinterpret_cast<decltype(&giveDriverAnswers)>(module->function("giveDriverAnswers"));
    require(module->loaded() && giveAnswers != nullptr, "the module of the fuzz input is there");
    cv::setNumThreads(1);
    // The first half is what the host does, the second what the driver answers.
    const std::size_t half = size / 2;
    fuzz::Input input(bytes, half);
    giveAnswers(bytes + half, size - half);
    {
        orx::TMultiCamera cameras;
        require(cameras.dllLoaded == 1, "the module is taken for the driver");
        cameras.setCameraNumber(3);
        const bool grabs = input.byte() % 8U == 7;
        for (int i = 0; i < 60 && !input.atEnd(); ++i) call(cameras, input);
        if (grabs) checkGrabbing(cameras, input);
        for (int i = 0; i < 9; ++i) cameras.close(i);
        cameras.DestoryCamera();
        cameras.freeDll();
    }
    fuzz::forgetMessages();
    return 0;
}
