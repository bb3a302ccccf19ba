#include "inspection/batch/batch_command_line.h"

#include <CLI/CLI.hpp>

namespace inspection {
namespace {

constexpr int kMostJobs = 64;
constexpr int kMostTimes = 1000;
constexpr int kMostKept = 1000000;
constexpr int kMostLines = 100000000;

}  // namespace

void addBatchOptions(CLI::App& app, BatchOptions& batch, std::string& annotate) {
    const char* group = "Measuring by a recipe; results.jsonl and results.csv grow as pictures are measured";
    auto* const recipe =
        app.add_option(
               "--recipe", batch.recipe,
               "Measure what this recipe asks for, in every picture, and tell verdicts. Run again, it\n"
               "goes on where it stopped: a picture is known by its path, size and time")
            ->type_name("FILE")
            ->group(group);
    const auto flag = [&](const char* name, bool& wanted, const char* text) {
        app.add_flag(name, wanted, text)->needs(recipe)->group(group);
    };
    app.add_flag("--again", batch.again,
                 "Start anew: forget the results in the output folder, or replace the recipe of --teach")
        ->group(group);
    flag("--recursive", batch.recursive, "Measure the pictures in sub-folders, too");
    app.add_option("--jobs", batch.jobs, "Pictures measured at a time; results are the same for any number")
        ->check(CLI::Range(1, kMostJobs))
        ->needs(recipe)
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    app.add_option("--annotate", annotate,
                   "Which pictures are written with what was measured in them; failed: all that did not pass")
        ->check(CLI::IsMember({"none", "failed", "all"}))
        ->needs(recipe)
        ->type_name("NAME")
        ->capture_default_str()
        ->group(group);
    flag("--jpeg", batch.jpeg, "Write them as JPEG in place of PNG");
    app.add_option("--sqlite", batch.sqlite,
                   "Also write a SQLite database: a table of pictures, a table of values")
        ->needs(recipe)
        ->type_name("FILE")
        ->group(group);
    app.add_option("--truth", batch.truth,
                   "CSV file of what is true: a column \"picture\", and one for each value that is known,\n"
                   "called as the value is. Errors and wrong verdicts are told beside it")
        ->needs(recipe)
        ->type_name("FILE")
        ->group(group);
    app.add_option("--gauge", batch.gauge,
                   "Gauge study: the pictures show each part so many times, one after another; the report\n"
                   "tells the repeatability")
        ->check(CLI::Range(2, kMostTimes))
        ->needs(recipe)
        ->type_name("K")
        ->group(group);
    app.add_option("--keep", batch.keep,
                   "With --camera, of the pictures of --annotate the newest, so many at the most")
        ->check(CLI::Range(1, kMostKept))
        ->needs(recipe)
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    app.add_option("--lines", batch.lines,
                   "With --camera, results in a file at the most: full ones are called results.old, in\n"
                   "place of older ones")
        ->check(CLI::Range(1, kMostLines))
        ->needs(recipe)
        ->type_name("N")
        ->capture_default_str()
        ->group(group);
    flag("--quiet", batch.quiet, "Print problems alone");
}

Annotate annotateFrom(const std::string& word) {
    return word == "none" ? Annotate::kNone : word == "all" ? Annotate::kAll : Annotate::kFailed;
}

}  // namespace inspection
