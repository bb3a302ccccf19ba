#include "inspection/options.h"

#include <CLI/CLI.hpp>
#include <map>
#include <sstream>

#include "inspection/methods.h"

namespace inspection {
namespace {

constexpr int kBadArguments = 2;

const std::map<std::string, Polarity> kPolarities = {
    {"auto", Polarity::kAuto}, {"bright", Polarity::kBright}, {"dark", Polarity::kDark}};
const std::map<std::string, ShapeChoice> kShapes = {
    {"auto", ShapeChoice::kAuto}, {"circle", ShapeChoice::kCircle}, {"line", ShapeChoice::kLine}};

// Names as they are typed; they become enumerations once they are known to be valid.
struct Words {
    std::string polarity = "auto";
    std::string shape = "auto";
    bool noSubPixel = false;
};

// CLI::Range would let "nan" pass.
CLI::Validator between(double low, double high) {
    const auto check = [low, high](const std::string& text) {
        double value = 0.0;
        const bool isInside = CLI::detail::lexical_cast(text, value) && value >= low && value <= high;
        std::ostringstream reason;
        if (!isInside) reason << "'" << text << "' is not a number between " << low << " and " << high;
        return reason.str();
    };
    return CLI::Validator(check, "");
}

// A sign would otherwise be taken modulo 2^64.
CLI::Validator digits() {
    const auto check = [](const std::string& text) {
        const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
        return isNumber ? std::string() : "'" + text + "' is not a whole number from 0 on";
    };
    return CLI::Validator(check, "");
}

void addInputs(CLI::App& app, Options& options) {
    app.add_option("images", options.inputs,
                   "Pictures, and folders whose pictures are measured in the order of their names")
        ->type_name("FILE|FOLDER");
    app.add_option("--synthetic", options.syntheticSeed,
                   "Also measure a rendered scene of this seed and print the errors against its truth")
        ->check(digits())
        ->type_name("SEED");
    app.add_option("-o,--output", options.output,
                   "Folder for the annotated pictures, report.json and report.html")
        ->type_name("FOLDER")
        ->capture_default_str();
}

void addObjectOptions(CLI::App& app, Settings& settings, Words& words) {
    const char* group = "Finding the objects";
    app.add_option("-m,--method", settings.method, "How the threshold is chosen")
        ->check(CLI::IsMember(methodNames()))
        ->type_name("NAME")
        ->capture_default_str()
        ->group(group);
    app.add_option(
           "--objects", words.polarity,
           "What the objects are; auto: the class that fewer pixels of the picture's border belong to")
        ->check(CLI::IsMember({"auto", "bright", "dark"}))
        ->type_name("NAME")
        ->capture_default_str()
        ->group(group);
    app.add_option("--smooth", settings.smooth,
                   "Sigma of the smoothing before the threshold, pixels; 0 is none")
        ->check(between(0.0, 50.0))
        ->type_name("SIGMA")
        ->capture_default_str()
        ->group(group);
    app.add_option("--background", settings.background,
                   "Flatten uneven light with a window of this many pixels, wider than any object; 0 is off")
        ->check(between(0, 10000))
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    app.add_option("--close", settings.close,
                   "Close gaps in objects narrower than this many pixels; 0 is off")
        ->check(between(0, 500))
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    app.add_option("--min-area", settings.minArea, "Leave out contours smaller than this, square pixels")
        ->check(between(0.0, 1e12))
        ->type_name("AREA")
        ->capture_default_str()
        ->group(group);
}

void addShapeOptions(CLI::App& app, Settings& settings, Words& words) {
    const char* group = "Measuring them";
    app.add_option("--shape", words.shape,
                   "What is fitted; auto: a line where a contour is at least 2.5 times as long as wide, else "
                   "a circle")
        ->check(CLI::IsMember({"auto", "circle", "line"}))
        ->type_name("NAME")
        ->capture_default_str()
        ->group(group);
    app.add_option("--tolerance", settings.tolerance,
                   "Contour points this near to a shape support it, pixels")
        ->check(between(0.1, 100.0))
        ->type_name("PIXELS")
        ->capture_default_str()
        ->group(group);
    app.add_option("--trials", settings.trials, "Random samples drawn for each contour")
        ->check(between(1, 100000))
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    app.add_option("--seed", settings.seed, "Seed of the random samples; equal seeds give equal results")
        ->check(digits())
        ->type_name("SEED")
        ->capture_default_str()
        ->group(group);
    app.add_option("--min-inliers", settings.minInliers,
                   "Mark shapes as weak that fewer contour points support")
        ->check(between(0.0, 1.0))
        ->type_name("RATIO")
        ->capture_default_str()
        ->group(group);
    app.add_flag("--no-subpixel", words.noSubPixel,
                 "Take edges half a pixel outside the contour's pixels instead of\n"
                 "where the grey profile crosses the middle between its levels")
        ->group(group);
}

void requireInput(const Options& options) {
    if (options.inputs.empty() && !options.syntheticSeed)
        throw CLI::ValidationError("nothing to measure: give pictures, folders or --synthetic SEED");
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv, int& exitCode) {
    Options options;
    Words words;
    CLI::App app{
        "Finds round and elongated objects in pictures and measures them: threshold, contours, RANSAC "
        "circle\n"
        "or line for each contour. Writes annotated pictures, a JSON and an HTML report.",
        "orx_inspection"};
    app.set_version_flag("--version", std::string("orx_inspection ") + INSPECTION_VERSION);
    app.footer("Methods: " + CLI::detail::join(methodNames(), ", ") +
               ".\nExit code: 0 when all pictures were measured, 1 when some were not, 2 for bad arguments.");
    addInputs(app, options);
    addObjectOptions(app, options.settings, words);
    addShapeOptions(app, options.settings, words);
    try {
        app.parse(argc, argv);
        if (!std::isfinite(options.settings.minArea))
            throw CLI::ValidationError("--min-area must be a number");
        requireInput(options);
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error) == 0 ? 0 : kBadArguments;
        return std::nullopt;
    }
    options.settings.polarity = kPolarities.at(words.polarity);
    options.settings.shape = kShapes.at(words.shape);
    options.settings.subPixel = !words.noSubPixel;
    return options;
}

}  // namespace inspection
