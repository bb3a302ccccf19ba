// A GigE Vision camera in software, for the tests beside it: real packets on a real socket, made by Aravis.
//
//   software_camera --address A --serial S --vendor V --width W --height H --format CODE --rate F --loss R
//   [--even] [--change OLD=>NEW]...
//
// Prints "ready" once it listens, and runs until it is killed or its standard input ends.
#include <arv.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tests/gige/test_pattern.h"

namespace {

// The registers that every GigE Vision device starts with.
constexpr guint32 kVendorRegister = 0x48;
constexpr std::size_t kVendorLength = 32;

struct Options {
    const char* address = "127.0.0.1";
    const char* serial = "S1";
    const char* vendor = "Aravis";
    int width = 64;
    int height = 48;
    int format = ARV_PIXEL_FORMAT_MONO_8;
    double rate = 25.0;
    double loss = 0.0;
    gboolean isEven = FALSE;
    char** changes = nullptr;
};

// By GLib, which Aravis brings: what the programs parse theirs with takes long to compile.
void parse(int argc, char** argv, Options& options) {
    const GOptionEntry entries[] = {
        {"address", 0, 0, G_OPTION_ARG_STRING, &options.address, "an address of this machine", "A"},
        {"serial", 0, 0, G_OPTION_ARG_STRING, &options.serial, "serial number", "S"},
        {"vendor", 0, 0, G_OPTION_ARG_STRING, &options.vendor, "vendor name", "V"},
        {"width", 0, 0, G_OPTION_ARG_INT, &options.width, "pixels", "W"},
        {"height", 0, 0, G_OPTION_ARG_INT, &options.height, "pixels", "H"},
        {"format", 0, 0, G_OPTION_ARG_INT, &options.format, "of the pixels", "CODE"},
        {"rate", 0, 0, G_OPTION_ARG_DOUBLE, &options.rate, "pictures per second", "F"},
        {"loss", 0, 0, G_OPTION_ARG_DOUBLE, &options.loss, "share of the packets that are not sent", "R"},
        {"even", 0, 0, G_OPTION_ARG_NONE, &options.isEven, "pictures of one level each", nullptr},
        {"change", 0, 0, G_OPTION_ARG_STRING_ARRAY, &options.changes, "of the description, the first OLD",
         "OLD=>NEW"},
        {}};
    GOptionContext* const context = g_option_context_new(nullptr);
    g_option_context_add_main_entries(context, entries, nullptr);
    GError* error = nullptr;
    g_option_context_parse(context, &argc, &argv, &error);
    g_option_context_free(context);
    if (error != nullptr) {
        const std::string message = error->message;
        g_error_free(error);
        throw std::runtime_error(message);
    }
}

void insertBefore(std::string& text, const std::string& mark, const std::string& addition) {
    const std::size_t at = text.find(mark);
    if (at == std::string::npos) throw std::runtime_error("the camera's own description lacks " + mark);
    text.insert(at, addition);
}

std::string entry(const char* name, guint32 value) {
    return "<EnumEntry Name=\"" + std::string(name) + "\" NameSpace=\"Standard\"><Value>" +
           std::to_string(value) + "</Value></EnumEntry>";
}

// Makes it the description of a camera that lacks something, or does it otherwise.
void change(std::string& text, const std::string& what) {
    const std::size_t arrow = what.find("=>");
    const std::size_t at = arrow == std::string::npos ? arrow : text.find(what.substr(0, arrow));
    if (at == std::string::npos) throw std::runtime_error("the camera's own description lacks " + what);
    text.replace(at, arrow, what.substr(arrow + 2));
}

// Aravis' description of its camera, with the pixel formats that it lacks, a gain in decibels and a second
// input.
std::string description(char** changes) {
    ArvFakeCamera* const plain = arv_fake_camera_new("any");
    std::size_t size = 0;
    std::string text(arv_fake_camera_get_genicam_xml(plain, &size));
    g_object_unref(plain);
    insertBefore(text, "<EnumEntry Name=\"BayerBG8\"",
                 entry("Mono10", ARV_PIXEL_FORMAT_MONO_10) +
                     entry("Mono10Packed", ARV_PIXEL_FORMAT_MONO_10_PACKED) +
                     entry("Mono12", ARV_PIXEL_FORMAT_MONO_12) +
                     entry("Mono12Packed", ARV_PIXEL_FORMAT_MONO_12_PACKED) +
                     entry("BGR8", ARV_PIXEL_FORMAT_BGR_8_PACKED) + entry("YUV422", 0x0210001FU));
    insertBefore(text, "<EnumEntry Name=\"Software\"", entry("Line1", 2));
    insertBefore(text, "<Category Name=\"AnalogControl\"",
                 "<Float Name=\"Gain\"><pValue>GainConverter</pValue><Min>0.0</Min><Max>24.0</Max></Float>"
                 "<Converter Name=\"GainConverter\"><FormulaTo>FROM * 10</FormulaTo><FormulaFrom>TO / 10.0"
                 "</FormulaFrom><pValue>GainRawRegister</pValue></Converter>");
    for (; changes != nullptr && *changes != nullptr; ++changes) change(text, *changes);
    return text;
}

void fill(ArvBuffer* buffer, void* camera, guint32 exposure, guint32 gain, ArvPixelFormat /*format*/) {
    static unsigned frame = 0;
    // The buffer's own idea of its size is that of what was received.
    std::size_t unused = 0;
    auto* const bytes = static_cast<unsigned char*>(const_cast<void*>(arv_buffer_get_data(buffer, &unused)));
    const std::size_t size = arv_fake_camera_get_payload(static_cast<ArvFakeCamera*>(camera));
    for (std::size_t i = 0; i < size; ++i) bytes[i] = gige::patternByte(frame, i);
    // So that a test can see what settings the camera works with.
    if (size >= 8) {
        std::memcpy(bytes, &exposure, sizeof(exposure));
        std::memcpy(bytes + 4, &gain, sizeof(gain));
    }
    ++frame;
}

// No settings are in it, and turned and scaled it is still what it was.
void fillEvenly(ArvBuffer* buffer, void* camera, guint32 /*exposure*/, guint32 /*gain*/,
                ArvPixelFormat /*format*/) {
    static unsigned frame = 0;
    std::size_t unused = 0;
    auto* const bytes = static_cast<unsigned char*>(const_cast<void*>(arv_buffer_get_data(buffer, &unused)));
    const std::size_t size = arv_fake_camera_get_payload(static_cast<ArvFakeCamera*>(camera));
    std::memset(bytes, static_cast<int>(frame++ % gige::kLevels), size);
}

void configure(ArvFakeCamera* camera, const Options& options) {
    char vendor[kVendorLength] = {};
    std::strncpy(vendor, options.vendor, sizeof(vendor) - 1);
    arv_fake_camera_write_memory(camera, kVendorRegister, sizeof(vendor), vendor);
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_WIDTH,
                                   static_cast<guint32>(options.width));
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_HEIGHT,
                                   static_cast<guint32>(options.height));
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_PIXEL_FORMAT,
                                   static_cast<guint32>(options.format));
    arv_fake_camera_write_register(camera, ARV_FAKE_CAMERA_REGISTER_ACQUISITION_FRAME_PERIOD_US,
                                   static_cast<guint32>(1e6 / options.rate));
    arv_fake_camera_set_fill_pattern(camera, options.isEven ? fillEvenly : fill, camera);
}

// The description goes through a file, since Aravis takes it from one.
ArvGvFakeCamera* listening(const Options& options) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("software-camera-" + std::to_string(getpid()) + ".xml");
    std::ofstream(file) << description(options.changes);
    auto* const camera = static_cast<ArvGvFakeCamera*>(g_object_new(
        ARV_TYPE_GV_FAKE_CAMERA, "interface-name", options.address, "serial-number", options.serial,
        "genicam-filename", file.c_str(), "gvsp-lost-ratio", options.loss, nullptr));
    std::filesystem::remove(file);
    return camera;
}

int run(int argc, char** argv) {
    static Options options;  // lasts as long as the texts that GLib puts there
    parse(argc, argv, options);

    ArvGvFakeCamera* const camera = listening(options);
    if (!arv_gv_fake_camera_is_running(camera)) {
        std::fprintf(stderr, "can't listen at %s\n", options.address);
        return 1;
    }
    configure(arv_gv_fake_camera_get_fake_camera(camera), options);
    std::puts("ready");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    g_object_unref(camera);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "software_camera: %s\n", error.what());
        return 1;
    }
}
