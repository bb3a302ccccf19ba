// Circles and lines from edges found in rendered pictures.
#include "docs/tools/edge_chain_accuracy.h"
#include "docs/tools/measuring_tables.h"

namespace measuring_tables {
namespace {

// Whether the stated deviations are the true ones, but for two standard errors of a spread.
const char* statedVerdict(const Result& result) {
    constexpr double kRanges[2][2] = {{0.85, 1.2}, {0.95, 1.1}};
    for (const int grade : {1, 0}) {
        bool reached = result.lost + result.astray <= result.scenes / 1000;
        for (const Accuracy& a : result.parameters) {
            const double chance = 2 * a.stated / std::sqrt(2.0 * result.scenes);
            reached =
                reached && a.stated + chance >= kRanges[grade][0] && a.stated - chance <= kRanges[grade][1];
        }
        if (reached) return grade == 1 ? "excellent" : "good";
    }
    return "misses";
}

void printEdgeRow(const char* shape, const std::vector<const char*>& names, double blur, double noise,
                  const Result& result) {
    for (std::size_t p = 0; p < result.parameters.size(); ++p) {
        const Accuracy& a = result.parameters[p];
        std::printf("| %s | %.1f | %.0f | %s | %.5f | %+.5f | %.2f | %.1f | %.1f | %d, %d | %s |\n", shape,
                    blur, noise, names[p], a.deviation, a.bias * a.deviation, a.stated, a.within68,
                    a.within95, result.lost, result.astray, p == 0 ? statedVerdict(result) : "");
    }
    std::fflush(stdout);
}

}  // namespace

void edgeTable(const Settings& settings) {
    const int scenes = std::max(10, settings.scenes / 10);
    std::printf(
        "\n## Edges found in pictures\n\n"
        "Edges of `edgesSubPixMetric` (sigma 1) in rendered pictures, levels 40 and 200, into "
        "`fitCircleGeometric` and\n"
        "`fitLineGeometric` as they are (measuring/edge_fit.h): disks of radius 20 at any place, half planes "
        "at any\n"
        "angle (edges within 25 pixels of the middle). Blur is the optics' Gaussian in pixels, noise is in "
        "grey\n"
        "levels before rounding to 8 bits; %d pictures a row. Spread and bias are in pixels or degrees; "
        "stated is the\n"
        "root mean square of the stated deviations over the spread: good from 0.85 to 1.2, excellent from "
        "0.95 to 1.1,\n"
        "after allowing two standard errors (%.0f %%).\n\n"
        "| shape | blur | noise | parameter | spread | bias | stated / spread | within 68.3 %% | within 95.4 "
        "%% | lost, "
        "astray | reached |\n|---|---|---|---|---|---|---|---|---|---|---|\n",
        scenes, 200 / std::sqrt(2.0 * scenes));
    for (const char* shape : {"disk", "line"}) {
        const bool disk = shape[0] == 'd';
        for (const double blur : {0.5, 1.0, 1.5}) {
            for (const double noise : {0.0, 2.0, 8.0}) {
                std::fprintf(stderr, "%s, blur %g, noise %g\n", shape, blur, noise);
                const Result result = disk ? measureDisks(blur, noise, scenes, settings.threads)
                                           : measureHalfPlanes(blur, noise, scenes, settings.threads);
                printEdgeRow(shape,
                             disk ? std::vector<const char*>{"center x", "center y", "radius"}
                                  : std::vector<const char*>{"place", "angle"},
                             blur, noise, result);
            }
        }
    }
}

}  // namespace measuring_tables
