#include "tests/fake_driver/flaky_driver.h"

#include <cstdlib>
#include <limits>
#include <sstream>

#include "drivers/vision_driver.h"
#include "tests/support/loaded_module.h"

namespace {

class Module {
  public:
    Module() {
        find(initCamera, "VDInitCamera");
        find(open, "VDOpen");
        find(start, "VDStart");
        find(stop, "VDStop");
        find(getImage, "VDGetImage");
        find(setParam, "VDSetParam");
        find(close, "VDClose");
        find(getParam, "VDGetParam");
        find(destroy, "VDDestoryCamera");
        find(getFrameInfo, "VDGetFrameInfo");
    }

    decltype(VDInitCamera)* initCamera = nullptr;
    decltype(VDOpen)* open = nullptr;
    decltype(VDStart)* start = nullptr;
    decltype(VDStop)* stop = nullptr;
    decltype(VDGetImage)* getImage = nullptr;
    decltype(VDSetParam)* setParam = nullptr;
    decltype(VDClose)* close = nullptr;
    decltype(VDGetParam)* getParam = nullptr;
    decltype(VDDestoryCamera)* destroy = nullptr;
    decltype(VDGetFrameInfo)* getFrameInfo = nullptr;

  private:
    template <class Procedure>
    void find(Procedure*& procedure, const char* name) {
        procedure = reinterpret_cast<Procedure*>(module_.function(name));
    }

    const test::LoadedModule module_{ORX_DRIVER_MODULE};
};

// Neither is ever destroyed: the module stays in memory, and may be called while the process ends.
const Module& module() {
    static const Module* const only = new Module;
    return *only;
}

flaky::Driver& driver() {
    static auto* const only = new flaky::Driver;
    return *only;
}

// One start of a camera. The library calls for one camera at a time.
struct Run {
    bool isRunning = false;
    std::uint64_t handed = 0;
};
std::array<Run, VD_MAX_CAMERAS> runs;

// As the environment says.
struct Unplugging {
    int camera = -1;
    std::uint64_t pictures = 0;
    std::uint64_t failures = 0;
    bool isOver = false;

    Unplugging() {
        const char* const text = std::getenv("ORX_TEST_UNPLUG");
        if (text != nullptr) std::istringstream(text) >> camera >> pictures >> failures;
    }
};

Unplugging& unplugging() {
    static auto* const only = new Unplugging;
    return *only;
}

flaky::Camera& camera(int index) { return driver().cameras[static_cast<std::size_t>(index)]; }

Run& run(int index) { return runs[static_cast<std::size_t>(index)]; }

bool isSlot(int index) { return index >= 0 && index < VD_MAX_CAMERAS; }

bool isPlugged(int index) {
    if (camera(index).isPlugged) return true;
    const std::uint64_t failures = ++camera(index).failures;
    Unplugging& plan = unplugging();
    if (plan.camera == index && failures >= plan.failures) {
        plan.isOver = true;
        camera(index).isPlugged = true;
    }
    return false;
}

void follow(int index) {
    VDFrameInfo info = {};
    if (!module().getFrameInfo(&info, index)) return;
    run(index).handed = info.number;
    Unplugging& plan = unplugging();
    if (plan.camera == index && !plan.isOver && info.number >= plan.pictures) camera(index).isPlugged = false;
}

void endRun(int index) {
    if (!run(index).isRunning) return;
    VDFrameInfo info = {};
    if (module().getFrameInfo(&info, index)) camera(index).sent += info.newest;
    camera(index).handed += run(index).handed;
    run(index) = {};
}

void endRuns() {
    for (int i = 0; i < VD_MAX_CAMERAS; ++i) endRun(i);
}

}  // namespace

extern "C" {

VD_EXPORT flaky::Driver* flakyDriver(void) { return &driver(); }

bool VDInitCamera(int type, long long* handles, bool flag) {
    endRuns();
    return module().initCamera(type, handles, flag);
}

bool VDOpen(int type, int index) { return isSlot(index) && isPlugged(index) && module().open(type, index); }

bool VDStart(int* width, int* height, int* channels, int index) {
    if (!isSlot(index) || !isPlugged(index) || !module().start(width, height, channels, index)) return false;
    if (!run(index).isRunning) ++camera(index).starts;
    run(index).isRunning = true;
    return true;
}

bool VDStop(int index) {
    if (!isSlot(index)) return false;
    endRun(index);
    return module().stop(index);
}

bool VDGetImage(VDImage* image, int index) {
    if (!isSlot(index) || !isPlugged(index) || !module().getImage(image, index)) return false;
    follow(index);
    return true;
}

bool VDSetParam(int index, int id, long value) {
    return isSlot(index) && isPlugged(index) && module().setParam(index, id, value);
}

float VDGetParam(int index, int id) {
    const bool isThere = isSlot(index) && isPlugged(index);
    return isThere ? module().getParam(index, id) : std::numeric_limits<float>::quiet_NaN();
}

bool VDClose(int index) {
    if (!isSlot(index)) return false;
    endRun(index);
    return module().close(index);
}

void VDDestoryCamera(void) {
    endRuns();
    module().destroy();
}

bool VDGetFrameInfo(VDFrameInfo* info, int index) { return module().getFrameInfo(info, index); }

}  // extern "C"
