// Prints docs/accuracy-measuring.md: how close the fits for measuring come to the best that can be had, and
// what their stated uncertainties are worth. The page is the tables one after another; each can be made
// alone:
//     build/release/bin/accuracy_measuring --table circle --scenes 10000 > circle.md
// Options: --table NAME (see kTables), --only TEXT (rows whose label contains it), --scenes N, --threads N.
#include <cstdio>

#include "docs/tools/measuring_tables.h"
#include "docs/tools/tool_support.h"

namespace {

using namespace measuring_tables;

struct Table {
    const char* name;
    void (*print)(const Settings& settings);
};
constexpr Table kTables[] = {
    {"introduction", [](const Settings&) { printIntroduction(); }},
    {"circle", circleTable},
    {"line", lineTable},
    {"ellipse", ellipseTable},
    {"circle-tukey", circleOutlierTable},
    {"line-tukey", lineOutlierTable},
    {"ellipse-tukey", ellipseOutlierTable},
    {"circle-consensus", circleConsensusTable},
    {"line-consensus", lineConsensusTable},
    {"ellipse-consensus", ellipseConsensusTable},
    {"oracle", oracleTable},
    {"edges", edgeTable},
    {"exact", exactTable},
    {"notes", [](const Settings&) { printNotes(); }},
};

int usage() {
    std::fprintf(
        stderr, "usage: accuracy_measuring [--table NAME] [--only TEXT] [--scenes N] [--threads N]\ntables:");
    for (const Table& table : kTables) std::fprintf(stderr, " %s", table.name);
    std::fprintf(stderr, "\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    Settings settings;
    tool_support::Options options;
    options.add("--table", settings.table);
    options.add("--only", settings.only);
    options.add("--scenes", settings.scenes);
    options.add("--threads", settings.threads);
    if (!options.read(argc, argv) || settings.scenes < 10 || settings.threads < 1) return usage();
    bool known = false;
    for (const Table& table : kTables) {
        if (!settings.table.empty() && settings.table != table.name) continue;
        table.print(settings);
        known = true;
    }
    return known ? 0 : usage();
}
