#include "viewer/options.h"

#include "support/argument_checks.h"

namespace viewer {
namespace {

constexpr double kScreenshotAfter = 2.0;  // seconds, unless the command line says

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv, int& exitCode) {
    Options options;
    CLI::App app{
        "Shows live pictures of parts on a belt in two picture boxes. On the left the parts are marked; the\n"
        "wheel zooms, dragging pans, a double click shows all. On the right the mouse draws and changes a\n"
        "rectangle, in which the grey level is measured.",
        "orx_viewer"};
    app.add_option("--seconds", options.seconds, "End after this time; 0 is when the window is closed")
        ->check(CLI::Range(0.0, 1e6))
        ->capture_default_str();
    app.add_option("--screenshot", options.screenshot,
                   "Write what is seen at the end as a picture; without --seconds after two")
        ->type_name("FILE");
    app.add_option("--fps", options.framesPerSecond, "Pictures shown a second")
        ->check(CLI::Range(1, 200))
        ->capture_default_str();
    app.add_option("--seed", options.seed, "Of the parts; equal seeds give equal parts")
        ->capture_default_str();
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        exitCode = host::endAt(error, app);
        return std::nullopt;
    }
    if (!options.screenshot.empty() && !(options.seconds > 0.0)) options.seconds = kScreenshotAfter;
    return options;
}

}  // namespace viewer
