// The tables of docs/accuracy-measuring.md: what they share, and each by its name.
#ifndef DOCS_TOOLS_MEASURING_TABLES_H
#define DOCS_TOOLS_MEASURING_TABLES_H

#include <cstdio>
#include <string>

#include "docs/tools/measuring_accuracy.h"
#include "docs/tools/tool_support.h"

namespace measuring_tables {

using namespace measuring_accuracy;

struct Settings {
    std::string table;  // all where empty
    std::string only;
    int scenes = 10000;
    int threads = tool_support::allThreads();
};

// What a table holds a row to: the goals of the library, good and excellent.
struct Goals {
    double spread[2];
    double bias[2] = {0.05, 0.02};
    double within68[2][2] = {{65, 72}, {67, 69.5}};
    double within95[2][2] = {{93.5, 96.5}, {94.7, 96}};
};
constexpr Goals kWithoutOutliers{{1.05, 1.01}};
constexpr Goals kWithOutliers{{1.15, 1.05}};

void printHead(const char* title, const char* text);
void printRow(const std::string& label, int points, double noise, const Result& result, const Goals& goals);

// One row, unless --only leaves it out.
template <class Kind, class Fit>
void row(const Settings& settings, const std::string& label, const Kind& kind, const Goals& goals, Fit fit) {
    const Scene& scene = kind.scene;
    char name[200];
    std::snprintf(name, sizeof name, "%s, %d points, noise %g", label.c_str(), scene.count, scene.noise);
    if (std::string(name).find(settings.only) == std::string::npos) return;
    std::fprintf(stderr, "%s\n", name);
    // The seed is the row's name, so that a row alone has the numbers that it has among the others.
    unsigned seed = 0;
    for (const char* c = name; *c != 0; ++c) seed = seed * 31 + static_cast<unsigned char>(*c);
    printRow(label, scene.count, scene.noise,
             measure(kind, fit, static_cast<int>(seed), settings.scenes, settings.threads), goals);
}

inline orx::TFitOptions withLoss(orx::TFitLoss loss) {
    orx::TFitOptions options;
    options.loss = loss;
    return options;
}

inline std::string arcName(double arc) {
    return arc == 360 ? "full circle" : "arc of " + std::to_string(int(arc)) + "°";
}

void circleTable(const Settings& settings);
void lineTable(const Settings& settings);
void ellipseTable(const Settings& settings);
void circleOutlierTable(const Settings& settings);
void lineOutlierTable(const Settings& settings);
void ellipseOutlierTable(const Settings& settings);
void circleConsensusTable(const Settings& settings);
void lineConsensusTable(const Settings& settings);
void ellipseConsensusTable(const Settings& settings);
void oracleTable(const Settings& settings);
void edgeTable(const Settings& settings);
void exactTable(const Settings& settings);
void printIntroduction();
void printNotes();

}  // namespace measuring_tables

#endif
