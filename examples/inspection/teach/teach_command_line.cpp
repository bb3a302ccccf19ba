#include "inspection/teach/teach_command_line.h"

#include <CLI/CLI.hpp>

#include "inspection/run/places.h"

namespace inspection {
namespace {

constexpr int kMostFeatures = 500;

}  // namespace

void addTeachOptions(CLI::App& app, TeachOptions& teach, std::string& region) {
    const char* group =
        "Proposing a recipe: recipe.json, recipe.part and features.png go to the output folder";
    auto* const picture =
        app.add_option("--teach", teach.picture,
                       "Propose a recipe from this picture of a good part: its lines, circles and arcs,\n"
                       "numbered, with their values as they are. Edit it, then measure by --recipe")
            ->type_name("PICTURE")
            ->group(group);
    app.add_option("--name", teach.name, "The recipe's name, in place of the picture's")
        ->needs(picture)
        ->type_name("TEXT")
        ->group(group);
    app.add_option("--region", region, "Where the part lies, in place of the largest thing that is seen")
        ->check(CLI::Validator([](const std::string& text) { return problemOfBox(text); }, ""))
        ->needs(picture)
        ->type_name("X,Y,W,H")
        ->group(group);
    app.add_option("--calibration", teach.calibration, "Measure in millimetres by this plane calibration")
        ->needs(picture)
        ->type_name("FILE")
        ->group(group);
    auto* const model =
        app.add_option("--model", teach.model, "Find the part by this model; else one is taught and written")
            ->needs(picture)
            ->type_name("MODEL")
            ->group(group);
    app.add_flag("--fixed", teach.fixed, "Find it by none: parts lie where this one does")
        ->needs(picture)
        ->excludes(model)
        ->group(group);
    app.add_option("--features", teach.features, "The largest ones, so many at the most")
        ->check(CLI::Range(1, kMostFeatures))
        ->needs(picture)
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    app.add_option("--min-length", teach.minLength, "Leave out shorter edges, pixels")
        ->check(CLI::Range(8.0, 1e6))
        ->needs(picture)
        ->type_name("PIXELS")
        ->capture_default_str()
        ->group(group);
    app.add_option("--share", teach.share,
                   "Tolerances to either side, as a share of the value; a tenth of a pixel at least")
        ->check(CLI::Range(0.0, 10.0))
        ->needs(picture)
        ->type_name("SHARE")
        ->capture_default_str()
        ->group(group);
}

}  // namespace inspection
