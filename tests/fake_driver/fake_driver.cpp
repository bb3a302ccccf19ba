// A camera driver module that does what tests tell it. Built several times, some without all procedures.
#include "tests/fake_driver/fake_driver.h"

#include <csignal>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace {

struct Buffer {
    std::vector<unsigned char> samples;
    int width = 0;
    int height = 0;
    int channels = 0;
};

fake::Driver driver;
std::array<Buffer, VD_MAX_CAMERAS> buffers;

bool isSlot(int index) { return index >= 0 && index < VD_MAX_CAMERAS; }

fake::Camera& cameraOf(int index) { return driver.cameras[static_cast<std::size_t>(index)]; }

void throwIfTold() {
    switch (driver.throws.load()) {
        case fake::Throw::kException:
            throw std::runtime_error(fake::kThrown);
        case fake::Throw::kNumber:
            throw 42;
        default:
            return;
    }
}

template <typename... Arguments>
void note(const char* call, Arguments... arguments) {
    std::string text = call;
    ((text += " " + std::to_string(arguments)), ...);
    const std::lock_guard<std::mutex> lock(driver.mutex);
    driver.calls.push_back(std::move(text));
}

// What begins each procedure but those that are called again and again.
template <typename... Arguments>
void begin(const char* call, Arguments... arguments) {
    note(call, arguments...);
    throwIfTold();
}

void noteFetch(int index) {
    if (index != 0) return;
    const std::lock_guard<std::mutex> lock(driver.mutex);
    driver.fetchTimes.push_back(std::chrono::steady_clock::now());
}

void fill(int index, const fake::Camera& camera, Buffer& buffer) {
    if (buffer.width == camera.width && buffer.height == camera.height && buffer.channels == camera.channels)
        return;
    buffer.width = camera.width;
    buffer.height = camera.height;
    buffer.channels = camera.channels;
    buffer.samples.clear();
    for (int y = 0; y < buffer.height; ++y) {
        for (int x = 0; x < buffer.width; ++x) {
            for (int c = 0; c < buffer.channels; ++c)
                buffer.samples.push_back(fake::sampleOf(index, x, y, c));
        }
    }
}

void handOut(fake::Camera& camera, Buffer& buffer, VDImage& image) {
    if (camera.repeats > 0) {
        --camera.repeats;
    } else {
        ++camera.frames;
    }
    const auto number = static_cast<std::uint32_t>(camera.frames);
    if (buffer.samples.size() >= sizeof number) std::memcpy(buffer.samples.data(), &number, sizeof number);
    image = {buffer.width, buffer.height, buffer.channels, buffer.samples.data()};
    switch (camera.picture.load()) {
        case fake::Picture::kEmpty:
            image = {0, 0, 1, buffer.samples.data()};
            break;
        case fake::Picture::kNoData:
            image.data = nullptr;
            break;
        case fake::Picture::kNegative:
            image.width = -image.width;
            break;
        case fake::Picture::kHuge:
            image.width = 0x7fffffff;
            image.height = 0x7fffffff;
            break;
        case fake::Picture::kHugeColour:  // a billion pixels, which would do with one byte each
            image.width = 40000;
            image.height = 25000;
            image.channels = 4;
            break;
        case fake::Picture::kNoChannels:
            image.channels = 0;
            break;
        case fake::Picture::kSevenChannels:
            image.channels = 7;
            break;
        default:
            break;
    }
}

}  // namespace

fake::Driver* fakeDriver() { return &driver; }

void crashFakeDriver(fake::Crash crash) {
    std::thread([crash] {
        if (crash == fake::Crash::kException) throw std::runtime_error(fake::kThrown);
        std::raise(SIGTERM);
    }).join();
}

bool VDInitCamera(int type, long long* handles, bool flag) {
    begin("VDInitCamera", type, handles == nullptr ? 0 : 1, flag ? 1 : 0);
    return driver.findsCameras;
}

bool VDOpen(int type, int index) {
    begin("VDOpen", type, index);
    return isSlot(index) && cameraOf(index).isPlugged;
}

bool VDStart(int* width, int* height, int* channels, int index) {
    begin("VDStart", index);
    if (!isSlot(index) || !cameraOf(index).isPlugged || !cameraOf(index).starts) return false;
    *width = cameraOf(index).width;
    *height = cameraOf(index).height;
    *channels = cameraOf(index).channels;
    return true;
}

bool VDStop(int index) {
    begin("VDStop", index);
    return isSlot(index) && cameraOf(index).stops;
}

bool VDGetImage(VDImage* image, int index) {
    if (!isSlot(index)) return false;
    fake::Camera& camera = cameraOf(index);
    noteFetch(index);
    ++camera.fetches;
    camera.isInFetch = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(camera.fetchMs));
    while (camera.stalls) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    camera.isInFetch = false;
    throwIfTold();
    if (!camera.isPlugged || camera.picture == fake::Picture::kFailure) return false;
    if (camera.failures > 0) {
        --camera.failures;
        return false;
    }
    Buffer& buffer = buffers[static_cast<std::size_t>(index)];
    fill(index, camera, buffer);
    camera.isBlack = camera.pending > 0;
    if (camera.isBlack) {
        --camera.pending;
        *image = {buffer.width, buffer.height, buffer.channels, buffer.samples.data()};
        return true;
    }
    handOut(camera, buffer, *image);
    return true;
}

bool VDSetParam(int index, int id, long value) {
    begin("VDSetParam", index, id, value);
    driver.parameter = static_cast<float>(value);
    return isSlot(index) && id == VD_PARAM_EXPOSURE;
}

bool VDClose(int index) {
    begin("VDClose", index);
    return isSlot(index);
}

float VDGetParam(int index, int id) {
    begin("VDGetParam", index, id);
    return driver.parameter;
}

bool VDGetFrameInfo(VDFrameInfo* info, int index) {
    throwIfTold();
    if (!isSlot(index) || !cameraOf(index).isNumbered) return false;
    const fake::Camera& camera = cameraOf(index);
    *info = {};
    info->flags = camera.frameFlags;
    info->newest =
        static_cast<unsigned long long>(static_cast<long long>(camera.frames) + camera.numberOffset);
    info->number = camera.isBlack ? 0 : info->newest;
    info->device_time = 1000 * info->number;
    if (camera.isBlack) info->flags |= VD_FRAME_FIRST_PENDING;
    return true;
}

void VDDestoryCamera() { begin("VDDestoryCamera"); }
