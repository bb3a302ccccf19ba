// A module that grabs from two cameras and never stops, so that it is unloaded with grab threads running.
#include <chrono>
#include <new>
#include <thread>

#include "orxFunctions/orxfunctions.h"

#if defined(_WIN32)
#define PLUGIN_API __declspec(dllexport)
#else
#define PLUGIN_API __attribute__((visibility("default")))
#endif

namespace {

void show(cv::Mat& image, int /*camera*/) { orx::APPshowImage(image); }

}  // namespace

// `memory` holds what the threads go on using when this module is gone: cameras, then their settings.
extern "C" PLUGIN_API std::size_t bytesNeeded() {
    return sizeof(orx::TMultiCamera) + sizeof(orx::TCameraConfig);
}

// Returns whether pictures came.
extern "C" PLUGIN_API bool grabAndReturn(unsigned char* memory) {
    auto* const cams = new (memory) orx::TMultiCamera;
    auto* const config = new (memory + sizeof *cams) orx::TCameraConfig;
    config->frameRate = 1000;
    cams->setCameraNumber(2);
    orx::APPaddOrSetParamBool("cameraReady", true);
    for (int i = 0; i < 2; ++i) {
        if (!cams->open(i, 12)) return false;
        orx::imgThreadManager.startThread(cams, config, i);
        orx::imgThreadManager.setDrawImgCallbackFunc(true, show, i);
    }
    cv::Mat image;
    for (int i = 0; i < 20000 && !orx::APPgetImage(image); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return !image.empty();
}

// The threads go on without calling this module.
extern "C" PLUGIN_API void dropCallbacks() {
    for (int i = 0; i < 2; ++i) orx::imgThreadManager.setDrawImgCallbackFunc(false, nullptr, i);
}

extern "C" PLUGIN_API void endGrabbing() { orx::imgThreadManager.closeAllThread(); }
