// The program of docs/guides/driver-module.md: what a driver module must keep, asked of ramp_driver.cpp,
// first by its procedures alone and then through the library.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "drivers/vision_driver.h"
#include "guide.h"
#include "orxFunctions/orxfunctions.h"
#include "tests/support/loaded_module.h"

namespace {

struct Procedures {
    decltype(&VDInitCamera) init;
    decltype(&VDOpen) open;
    decltype(&VDStart) start;
    decltype(&VDStop) stop;
    decltype(&VDGetImage) image;
    decltype(&VDSetParam) set;
    decltype(&VDClose) close;
    decltype(&VDGetParam) get;
    decltype(&VDGetFrameInfo) info;
    decltype(&VDDestoryCamera) destroy;
};

Procedures proceduresOf(const test::LoadedModule& module) {
    Procedures all{};
    const auto resolve = [&module](auto& procedure, const char* name) {
        procedure = reinterpret_cast<std::decay_t<decltype(procedure)>>(module.function(name));
        guide::expect(procedure != nullptr, std::string(name) + " is exported");
    };
    resolve(all.init, "VDInitCamera");
    resolve(all.open, "VDOpen");
    resolve(all.start, "VDStart");
    resolve(all.stop, "VDStop");
    resolve(all.image, "VDGetImage");
    resolve(all.set, "VDSetParam");
    resolve(all.close, "VDClose");
    resolve(all.get, "VDGetParam");
    resolve(all.info, "VDGetFrameInfo");
    resolve(all.destroy, "VDDestoryCamera");
    return all;
}

void pause(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

// [strangers]
void askNonsense(const Procedures& driver) {
    VDImage image{};
    VDFrameInfo info{};
    int size[3] = {};
    for (const int slot : {-1, VD_MAX_CAMERAS, 1000000}) {
        guide::expect(!driver.open(VD_TYPE_ANY, slot) && !driver.start(&size[0], &size[1], &size[2], slot) &&
                          !driver.stop(slot) && !driver.image(&image, slot) && !driver.info(&info, slot) &&
                          !driver.close(slot),
                      "a slot that is not there is answered with false");
    }
    guide::expect(!driver.set(0, 4711, 1) && std::isnan(driver.get(0, 4711)),
                  "so is a parameter that is not there");
    guide::expect(!driver.image(&image, 0), "a camera that is not started gives no picture");
}
// [strangers end]

double secondsSince(std::chrono::steady_clock::time_point then) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - then).count();
}

// [frames]
// The next picture. Before the first a module may give a black one, whose number is 0.
bool next(const Procedures& driver, VDImage& image, VDFrameInfo& info) {
    for (int i = 0; i < 200; ++i) {
        if (!driver.image(&image, 0) || !driver.info(&info, 0)) return false;
        if (info.number > 0) return true;
        pause(10);
    }
    return false;
}

void checkFrames(const Procedures& driver) {
    int width = 0;
    int height = 0;
    int channels = 0;
    guide::expect(driver.start(&width, &height, &channels, 0), "it starts");
    unsigned long long first = 0;
    unsigned long long last = 0;
    for (int i = 0; i < 10; ++i) {
        VDImage image{};
        VDFrameInfo info{};
        if (!next(driver, image, info)) return guide::expect(false, "it gives pictures");
        guide::expect(image.width == width && image.height == height && image.channels == channels,
                      "of the size that it told");
        guide::expect(info.number >= last && info.newest >= info.number, "numbers never go back");
        if (i == 0) first = info.number;
        last = info.number;
        const std::vector<unsigned char> bytes(image.data, image.data + width * height * channels);
        pause(30);
        guide::expect(std::equal(bytes.begin(), bytes.end(), image.data),
                      "a picture stays as it is until the next");
    }
    guide::expect(last > first, "and go on");
    guide::expect(driver.stop(0) && driver.stop(0), "stopping twice is harmless");
    VDFrameInfo info{};
    VDImage image{};
    const auto restart = std::chrono::steady_clock::now();
    guide::expect(driver.start(&width, &height, &channels, 0) && next(driver, image, info),
                  "it starts again");
    const double sent = driver.get(0, VD_PARAM_FRAME_RATE) * secondsSince(restart);
    guide::expect(static_cast<double>(info.number) <= 1 + sent, "numbers begin anew with a start");
    guide::expect(driver.close(0) && driver.close(0) && !driver.image(&image, 0), "closed is closed");
}
// [frames end]

void checkByProcedures(const Procedures& driver) {
    guide::expect(!driver.init(VD_TYPE_BASLER, nullptr, false), "of another brand there is no camera");
    guide::expect(driver.init(VD_TYPE_ANY, nullptr, false), "of any brand there is one");
    askNonsense(driver);
    guide::expect(driver.open(VD_TYPE_ANY, 0) && driver.open(VD_TYPE_ANY, 0), "opening twice is one opening");
    guide::expect(driver.set(0, VD_PARAM_EXPOSURE, 4000) && driver.get(0, VD_PARAM_EXPOSURE) == 4000.0F,
                  "what is set is read");
    guide::expect(!driver.set(0, VD_PARAM_EXPOSURE, -1) && driver.get(0, VD_PARAM_EXPOSURE) == 4000.0F,
                  "what is refused changes nothing");
    checkFrames(driver);
    driver.destroy();
}

void grabThroughTheLibrary() {
    // [library]
    orx::TMultiCamera cameras;  // loads the module by its name
    orx::TCameraConfig config;
    bool opened = cameras.InitCamera(VD_TYPE_ANY, nullptr, false, false);
    cameras.setCameraNumber(1);
    opened = opened && orx::openFrames(0, {orx::fpEveryOne, 8}) && cameras.open(0, VD_TYPE_ANY);
    guide::expect(opened, "the library opens the camera: " + orx::lastRefusal().text);
    orx::TFrame frame;
    int taken = 0;
    if (opened) {
        orx::imgThreadManager.startThread(&cameras, &config, 0);
        orx::APPaddOrSetParamBool(orx::kCameraReady, true);
        while (taken < 5 && orx::takeFrame(0, frame, 5000)) ++taken;
        orx::imgThreadManager.closeAllThread();
    }
    orx::closeFrames(0);
    cameras.DestoryCamera();
    cameras.freeDll();
    // [library end]
    if (taken < 5) return guide::expect(false, "its frames come");
    guide::expect(frame.isNumbered && frame.image.size() == cv::Size(320, 200),
                  "numbered, of the right size");
    std::printf("frame %d: %d x %d\n", static_cast<int>(frame.number), frame.image.cols, frame.image.rows);
    guide::save("driver-module-frame", frame.image);
}

}  // namespace

int main(int argc, char** argv) {
    return guide::run(argc, argv, [] {
        const test::LoadedModule module(GUIDE_MODULE);
        if (!module.loaded()) return guide::expect(false, "the module can be loaded");
        checkByProcedures(proceduresOf(module));
        grabThroughTheLibrary();
    });
}
