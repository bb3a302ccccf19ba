#include "inspection/run/options.h"

#include <CLI/CLI.hpp>
#include <map>
#include <set>

#include "inspection/batch/batch_command_line.h"
#include "inspection/measure/methods.h"
#include "inspection/run/places.h"
#include "inspection/teach/teach_command_line.h"
#include "orxFunctions/orxfunctions.h"
#include "support/argument_checks.h"

namespace inspection {
namespace {

using host::between;

// Of the options that a recipe and teaching one do without.
constexpr const char* kObjectGroup = "Finding the objects";
constexpr const char* kShapeGroup = "Measuring them";
constexpr const char* kEstimatorGroup = "Estimators of the library, in place of the built-in search";
constexpr const char* kAnalysisGroup = "Looking closer; each adds its results to the reports";
constexpr const char* kPartGroup = "Finding parts, in place of round and elongated objects";

const std::map<std::string, Polarity> kPolarities = {
    {"auto", Polarity::kAuto}, {"bright", Polarity::kBright}, {"dark", Polarity::kDark}};
const std::map<std::string, ShapeChoice> kShapes = {
    {"auto", ShapeChoice::kAuto}, {"circle", ShapeChoice::kCircle}, {"line", ShapeChoice::kLine}};
const std::map<std::string, CircleEstimator> kCircleEstimators = {{"search", CircleEstimator::kSearch},
                                                                  {"ransac", CircleEstimator::kRansac},
                                                                  {"robust", CircleEstimator::kRobust},
                                                                  {"wls", CircleEstimator::kWeighted}};
const std::map<std::string, LineEstimator> kLineEstimators = {{"search", LineEstimator::kSearch},
                                                              {"ransac", LineEstimator::kRansac},
                                                              {"robust", LineEstimator::kRobust}};
const std::map<std::string, EllipseEstimator> kEllipseEstimators = {{"none", EllipseEstimator::kNone},
                                                                    {"norm", EllipseEstimator::kNorm},
                                                                    {"ransac", EllipseEstimator::kRansac}};
const std::map<std::string, orx::TPartPolarity> kPartPolarities = {
    {"same", orx::ppSame}, {"reversed", orx::ppReversed}, {"either", orx::ppEither}};
const std::map<int, std::string> kCameraTypes = {
    {VD_TYPE_DAHUA, "Dahua"},
    {VD_TYPE_BASLER, "Basler"},
    {VD_TYPE_HIKVISION, "Hikvision"},
    {VD_TYPE_ANY, "any camera or none at all (a synthetic scene)"},
    {VD_TYPE_DAHENG, "Daheng"},
    {VD_TYPE_MICROVISION, "MicroVision"},
    {VD_TYPE_IMAGING_SOURCE, "The Imaging Source"}};

// Names as they are typed; they become enumerations once they are known to be valid.
struct Words {
    std::string polarity = "auto";
    std::string shape = "auto";
    std::string circle = "search";
    std::string line = "search";
    std::string ellipse = "none";
    std::string annotate = "failed";
    bool noSubPixel = false;
    std::vector<std::string> calipers;
    std::vector<std::string> circleCalipers;
    std::string partRegion;
    std::string teachRegion;
    std::string partPolarity = "same";
};

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
    app.add_option("--synthetic-parts", options.partsSeed,
                   "Also find twenty parts in a rendered scene of this seed and print the errors against "
                   "its truth")
        ->check(digits())
        ->type_name("SEED");
    app.add_option("-o,--output", options.output,
                   "Folder for the annotated pictures, report.json and report.html")
        ->type_name("FOLDER")
        ->capture_default_str();
    app.add_flag("-w,--window", options.window,
                 "Show each annotated picture in a window until it is closed: the wheel\n"
                 "zooms, dragging pans, a double click shows all");
    app.add_option("--window-seconds", options.windowSeconds, "Close the windows after this time; 0 is never")
        ->check(between(0.0, 1e6))
        ->type_name("SECONDS")
        ->capture_default_str();
}

// "7 Dahua, 10 Basler, ...", in two lines.
std::string cameraTypes() {
    std::string text;
    for (const auto& [type, name] : kCameraTypes) {
        if (!text.empty()) text += type == VD_TYPE_DAHENG ? ",\n" : ", ";
        text += std::to_string(type) + " " + name;
    }
    return text;
}

void addCameraOptions(CLI::App& app, CameraOptions& camera) {
    const char* group = "Live cameras";
    auto* const flag =
        app.add_flag(
               "--camera", camera.wanted,
               "Measure what cameras see, in place of pictures; Ctrl-C ends it. Prints each camera's rate\n"
               "and writes its last measured picture")
            ->group(group);
    app.add_option("--type", camera.type, cameraTypes())
        ->check(CLI::IsMember(kCameraTypes))
        ->needs(flag)
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    app.add_option("--cameras", camera.cameras, "How many, from 1 to 9")
        ->check(CLI::Range(1, orx::MAXCameraNum))
        ->needs(flag)
        ->type_name("K")
        ->capture_default_str()
        ->group(group);
    app.add_option("--seconds", camera.seconds,
                   "For how long; with --recipe until Ctrl-C, unless it is given")
        ->check(between(0.1, 1e6))
        ->needs(flag)
        ->type_name("S")
        ->capture_default_str()
        ->group(group);
}

void addObjectOptions(CLI::App& app, Settings& settings, Words& words) {
    const char* group = kObjectGroup;
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
    const char* group = kShapeGroup;
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

void addEstimatorOptions(CLI::App& app, Words& words) {
    const char* group = kEstimatorGroup;
    const auto add = [&](const char* name, std::string& word, const char* text,
                         const std::vector<std::string>& names) {
        app.add_option(name, word, text)
            ->check(CLI::IsMember(names))
            ->type_name("NAME")
            ->capture_default_str()
            ->group(group);
    };
    add("--circle", words.circle,
        "For what --shape makes a circle. The estimator's own circle through the\n"
        "contour's pixels, half a pixel larger; search alone refines it between pixels",
        {"search", "ransac", "robust", "wls"});
    add("--line", words.line,
        "For what --shape makes a line. Each long side is one fit through its pixels,\n"
        "set half a pixel outwards",
        {"search", "ransac", "robust"});
    add("--ellipse", words.ellipse,
        "Measure ellipses where --shape makes a circle, through all edge points (norm)\n"
        "or those that most agree on (ransac); not with --circle",
        {"none", "norm", "ransac"});
}

void addAnalysisOptions(CLI::App& app, Settings& settings, Words& words) {
    const char* group = kAnalysisGroup;
    app.add_flag("--segment", settings.split, "Split the measured contours into lines and arcs")
        ->group(group);
    app.add_flag("--edges", settings.edges, "Find sub-pixel edges in the whole picture")->group(group);
    app.add_option("--caliper", words.calipers,
                   "Edges across a box, searched along its longer side; may be given again")
        ->check(CLI::Validator([](const std::string& text) { return problemOfBox(text); }, ""))
        ->allow_extra_args(false)
        ->type_name("X,Y,W,H")
        ->group(group);
    app.add_option("--circle-caliper", words.circleCalipers,
                   "Edges around a circle of about this place and size, and the circle through\n"
                   "them; may be given again")
        ->check(CLI::Validator([](const std::string& text) { return problemOfCircle(text); }, ""))
        ->allow_extra_args(false)
        ->type_name("CX,CY,R")
        ->group(group);
    app.add_flag("--focus", settings.focus, "How sharp the picture is, by four measures")->group(group);
}

void addPartOptions(CLI::App& app, PartSettings& parts, Words& words) {
    const char* group = kPartGroup;
    auto* const teach =
        app.add_option("--teach-part", words.partRegion,
                       "Teach the part in this region of the one picture given: writes its model, a\n"
                       "picture of it and what was found out about it")
            ->check(CLI::Validator([](const std::string& text) { return problemOfBox(text); }, ""))
            ->type_name("X,Y,W,H")
            ->group(group);
    auto* const find = app.add_option("--find", parts.modelFile, "Find the parts of this model")
                           ->excludes(teach)
                           ->type_name("MODEL")
                           ->group(group);
    const auto add = [&](const char* name, auto& value, const char* text, const CLI::Validator& range,
                         const char* type) {
        app.add_option(name, value, text)
            ->check(range)
            ->needs(find)
            ->type_name(type)
            ->capture_default_str()
            ->group(group);
    };
    add("--min-score", parts.find.minScore, "Least share of a part's outline that must be seen",
        between(0.1, 1.0), "SHARE");
    add("--max-parts", parts.find.maxParts, "The best parts, so many at the most", between(1, 10000), "N");
    add("--min-scale", parts.find.minScale, "Smallest scale against the model", between(0.2, 5.0), "SCALE");
    add("--max-scale", parts.find.maxScale, "Largest scale", between(0.2, 5.0), "SCALE");
    add("--part-polarity", words.partPolarity, "Whether bright and dark are as they were taught",
        CLI::IsMember({"same", "reversed", "either"}), "NAME");
}

// An estimator that no contour could reach would be ignored in silence.
void requireReachableEstimators(const Settings& settings) {
    const bool choosesCircle = settings.circle != CircleEstimator::kSearch;
    const bool choosesEllipse = settings.ellipse != EllipseEstimator::kNone;
    if (choosesCircle && choosesEllipse)
        throw CLI::ValidationError("--circle and --ellipse exclude each other");
    if (settings.shape == ShapeChoice::kLine && (choosesCircle || choosesEllipse))
        throw CLI::ValidationError("--shape line leaves nothing for --circle or --ellipse");
    if (settings.shape == ShapeChoice::kCircle && settings.line != LineEstimator::kSearch)
        throw CLI::ValidationError("--shape circle leaves nothing for --line");
}

void takeWords(const Words& words, Settings& settings) {
    settings.polarity = kPolarities.at(words.polarity);
    settings.shape = kShapes.at(words.shape);
    settings.circle = kCircleEstimators.at(words.circle);
    settings.line = kLineEstimators.at(words.line);
    settings.ellipse = kEllipseEstimators.at(words.ellipse);
    settings.subPixel = !words.noSubPixel;
    for (const std::string& text : words.calipers) settings.calipers.push_back(boxFrom(text));
    for (const std::string& text : words.circleCalipers) settings.circleCalipers.push_back(circleFrom(text));
    if (!words.partRegion.empty()) settings.parts.region = boxFrom(words.partRegion);
    settings.parts.find.polarity = kPartPolarities.at(words.partPolarity);
}

void requireUsableParts(const Options& options) {
    const PartSettings& parts = options.settings.parts;
    if (parts.find.minScale > parts.find.maxScale)
        throw CLI::ValidationError("--min-scale must not exceed --max-scale");
    if (parts.region && (options.inputs.size() != 1 || options.syntheticSeed || options.partsSeed))
        throw CLI::ValidationError("--teach-part takes one picture");
    if (parts.wanted() && options.camera.wanted)
        throw CLI::ValidationError("--camera finds no parts: leave out --find and --teach-part");
}

void requireInput(const Options& options) {
    const bool hasPictures = !options.inputs.empty() || options.syntheticSeed || options.partsSeed;
    if (options.teach.wanted()) {
        if (hasPictures || options.camera.wanted || !options.batch.recipe.empty() ||
            options.settings.parts.wanted())
            throw CLI::ValidationError("--teach takes its own picture and does nothing else");
        return;
    }
    if (options.batch.again && options.batch.recipe.empty())
        throw CLI::ValidationError("--again goes with --recipe or --teach");
    if (!hasPictures && !options.camera.wanted)
        throw CLI::ValidationError(
            "nothing to measure: give pictures, folders, --synthetic SEED, --synthetic-parts SEED or "
            "--camera");
    if (hasPictures && options.camera.wanted)
        throw CLI::ValidationError("--camera measures no pictures: leave them out");
}

// An option that changes nothing was meant to change something.
void requireEffects(const CLI::App& app, const Options& options) {
    const bool hasRecipe = !options.batch.recipe.empty();
    if (!hasRecipe && !options.teach.wanted()) return;
    const std::set<std::string> idle = {kObjectGroup, kShapeGroup, kEstimatorGroup, kAnalysisGroup,
                                        kPartGroup};
    for (const CLI::Option* option : app.get_options()) {
        if (option->count() > 0 && idle.count(option->get_group()) > 0)
            throw CLI::ValidationError(
                option->get_name() + " has no effect with " +
                (hasRecipe ? "--recipe: what is measured, the recipe says" : "--teach"));
    }
    if (hasRecipe && !options.camera.wanted && app.count("--keep") + app.count("--lines") > 0)
        throw CLI::ValidationError("--keep and --lines go with --camera");
}

void requirePlainBatch(const Options& options) {
    if (options.batch.recipe.empty()) return;
    if (options.syntheticSeed || options.partsSeed || (options.inputs.empty() && !options.camera.wanted))
        throw CLI::ValidationError("--recipe measures pictures, folders or --camera alone");
    if (options.camera.wanted) {
        if (options.batch.recursive || options.batch.jobs > 1 || options.batch.gauge > 0 ||
            !options.batch.truth.empty())
            throw CLI::ValidationError("--recursive, --jobs, --gauge and --truth are for pictures");
    } else if (options.window) {
        throw CLI::ValidationError("--recipe opens a window for --camera alone");
    }
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv, int& exitCode) {
    Options options;
    Words words;
    CLI::App app{
        "Finds round and elongated objects in pictures and measures them: threshold, contours, RANSAC "
        "circle\n"
        "or line for each contour. Or teaches parts and finds them. Writes annotated pictures, a JSON and an "
        "HTML report.\nWith --recipe, measures what a recipe asks for and tells verdicts; --teach proposes "
        "one.",
        "orx_inspection"};
    app.set_version_flag("--version", std::string("orx_inspection ") + INSPECTION_VERSION);
    app.footer(
        "Methods: " + CLI::detail::join(methodNames(), ", ") +
        ".\nExit code: 0 when all pictures (or cameras) were measured, 1 when some were not or an output "
        "could not be written, 2 for bad arguments or a recipe that is not valid, 130 or 143 when a run by "
        "a recipe on pictures was interrupted or terminated: what was measured until then is reported.");
    addInputs(app, options);
    addBatchOptions(app, options.batch, words.annotate);
    addTeachOptions(app, options.teach, words.teachRegion);
    addCameraOptions(app, options.camera);
    addObjectOptions(app, options.settings, words);
    addShapeOptions(app, options.settings, words);
    addEstimatorOptions(app, words);
    addAnalysisOptions(app, options.settings, words);
    addPartOptions(app, options.settings.parts, words);
    try {
        app.parse(argc, argv);
        if (!std::isfinite(options.settings.minArea))
            throw CLI::ValidationError("--min-area must be a number");
        takeWords(words, options.settings);
        requireInput(options);
        if (!words.teachRegion.empty()) options.teach.region = boxFrom(words.teachRegion);
        options.batch.annotate = annotateFrom(words.annotate);
        requireReachableEstimators(options.settings);
        requireUsableParts(options);
        requirePlainBatch(options);
        requireEffects(app, options);
        if (!options.batch.recipe.empty() && app.count("--seconds") == 0) options.camera.seconds = 0.0;
    } catch (const CLI::ParseError& error) {
        exitCode = host::endAt(error, app);
        return std::nullopt;
    }
    return options;
}

}  // namespace inspection
