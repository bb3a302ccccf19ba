// The command line.
#ifndef EXAMPLES_INSPECTION_OPTIONS_H
#define EXAMPLES_INSPECTION_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "inspection/batch/batch_options.h"
#include "inspection/run/settings.h"
#include "inspection/teach/teach_options.h"
#include "orxFunctions/vision_driver.h"

namespace inspection {

// Live cameras in place of pictures.
struct CameraOptions {
    bool wanted = false;
    int type = VD_TYPE_ANY;  // enum VDCameraType
    int cameras = 1;
    double seconds = 5.0;  // 0: until Ctrl-C
};

struct Options {
    std::vector<std::string> inputs;             // files and folders
    std::optional<std::uint64_t> syntheticSeed;  // measure a rendered scene too
    std::optional<std::uint64_t> partsSeed;      // find parts in a rendered scene too
    std::string output = "inspection";           // folder of the pictures and reports
    bool window = false;                         // show each annotated picture
    double windowSeconds = 0.0;                  // for so long; 0: until it is closed
    CameraOptions camera;
    BatchOptions batch;
    TeachOptions teach;
    Settings settings;
};

// Reads the command line, which is UTF-8. On help, version or bad arguments nothing is returned, the text is
// printed (help and version to standard output, errors to standard error) and `exitCode` is 0, 0 or 2.
std::optional<Options> parseOptions(int argc, const char* const* argv, int& exitCode);

}  // namespace inspection

#endif
