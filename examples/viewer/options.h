// The command line.
#ifndef EXAMPLES_VIEWER_OPTIONS_H
#define EXAMPLES_VIEWER_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>

namespace viewer {

struct Options {
    double seconds = 0.0;    // how long to run; 0: until the window is closed
    std::string screenshot;  // the file to write at the end, in UTF-8; "": none
    int framesPerSecond = 20;
    std::uint64_t seed = 7;  // of the parts on the belt
};

// Nothing on help or bad arguments; `exitCode` is then 0 or 2.
std::optional<Options> parseOptions(int argc, const char* const* argv, int& exitCode);

}  // namespace viewer

#endif
