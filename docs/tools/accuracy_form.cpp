// Prints docs/accuracy-form.md: what form freed from noise, relations and edges across outlines are worth.
// Run it as
//     build/release/bin/accuracy_form > docs/accuracy-form.md
#include <cctype>
#include <cstdio>
#include <string>

#include "docs/tools/form_accuracy.h"

namespace {

using namespace form_accuracy;

constexpr int kFormScenes = 400;
constexpr int kRelationScenes = 10000;
constexpr int kAcrossScenes = 8;
constexpr double kNoises[] = {0.02, 0.06, 0.2};

void printForm() {
    std::printf(
        "\n## Form\n\n"
        "Circles of radius 40 with three lobes and lines of 300 pixels bent by a parabola, a point a pixel; "
        "%d scenes a\n"
        "row. The form is the height of the lobes or the bend in pixels, peak to valley. All but the ratio "
        "is in noises:\n\n"
        "- **shown**: mean error of the plain value, which the noise alone makes;\n"
        "- **bias**, **spread**: mean error of `freed`, and its standard deviation;\n"
        "- **stated**: root mean square of the stated deviation over the root mean square error.\n\n"
        "`freed` of a zone stops at 0, so that the perfect form has a bias and half of the spread. Form no "
        "larger than the\n"
        "noise is found in part only.\n",
        kFormScenes);
    const struct {
        Zone zone;
        const char* name;
    } kZones[] = {{Zone::kRing, "minimum zone circle"},
                  {Zone::kAround, "radius of the circumscribed circle"},
                  {Zone::kWithin, "radius of the inscribed circle"},
                  {Zone::kStrip, "straightness"}};
    for (const auto& zone : kZones) {
        std::printf("\n### %c%s\n\n| form | noise | independent: shown | bias | spread | stated |",
                    std::toupper(zone.name[0]), zone.name + 1);
        std::printf(" chain: shown | bias | spread | stated |\n|---|---|---|---|---|---|---|---|---|---|\n");
        for (const double height : {0.0, 0.05, 0.2}) {
            for (const double noise : kNoises) {
                std::printf("| %g | %g |", height, noise);
                for (const bool chain : {false, true}) {
                    const FormResult row = measureForm({zone.zone, height, noise, chain}, kFormScenes);
                    std::printf(" %+.1f | %+.2f | %.2f | %.2f |", row.shown / noise, row.freed.bias() / noise,
                                row.freed.spread() / noise, row.freed.stated() / row.freed.rms());
                    if (row.refused > 0) std::fprintf(stderr, "%s: %d refused\n", zone.name, row.refused);
                }
                std::printf("\n");
            }
        }
    }
}

template <class Relation>
void printRelation(const Relation& relation, const char* kind, const std::string& truth,
                   const std::vector<std::vector<relation_scenes::Scene>>& scenes) {
    std::printf("| %s%s | %s |", kind, relation.name, truth.c_str());
    for (const auto& some : scenes) {
        const Errors errors = measureRelation(relation, some);
        std::printf(" %.4f | %.3f |", errors.rms(), errors.stated() / errors.rms());
        if (errors.count() < kRelationScenes)
            std::fprintf(stderr, "%s: %d count\n", relation.name, errors.count());
    }
    std::printf("\n");
}

void printRelations() {
    std::printf(
        "\n## Relations\n\n"
        "Lines of 40 points over 100 pixels and circles of radius 12 to 30 in 60 points, of 230 degrees and "
        "more; %d\n"
        "scenes a column. **Error** is the root mean square error (pixels, angles in degrees; of points "
        "both\n"
        "coordinates), **stated** the root mean square of the stated deviation over it. Chance moves the "
        "ratio by 0.007.\n\n"
        "| relation | truth | noise 0.02: error | stated | noise 0.1: error | stated | noise 0.3: error | "
        "stated |\n|---|---|---|---|---|---|---|---|\n",
        kRelationScenes);
    std::vector<std::vector<relation_scenes::Scene>> scenes;
    for (const double noise : {0.02, 0.1, 0.3}) {
        scenes.push_back(relation_scenes::scenesOf(kRelationScenes, noise, 5));
    }
    char truth[64];
    for (const auto& relation : relation_scenes::valueRelations()) {
        std::snprintf(truth, sizeof truth, "%.2f", relation.truth);
        printRelation(relation, "", truth, scenes);
    }
    for (const auto& relation : relation_scenes::pointRelations()) {
        std::snprintf(truth, sizeof truth, "(%.2f, %.2f)", relation.truth.x, relation.truth.y);
        printRelation(relation, "point: ", truth, scenes);
    }
}

void printAcross() {
    std::printf(
        "\n## Edges across an outline\n\n"
        "`edgesAcross` on rendered disks and half planes of 160 grey levels, %d pictures a cell, asked for "
        "about half a\n"
        "pixel beside the truth, with a reach of four blurs and at least 3. Each cell is bias / root mean "
        "square error of a\n"
        "point / stated deviation over that error; noise is in grey levels.\n\n"
        "| outline | blur | noise 0 | noise 1 | noise 2 | noise 4 | noise 8 "
        "|\n|---|---|---|---|---|---|---|\n",
        kAcrossScenes);
    for (const double radius : {15.0, 40.0, 0.0}) {
        for (const double blur : {0.5, 0.7, 1.0, 1.5}) {
            std::printf(
                "| %s | %g |",
                radius > 0 ? ("disk, radius " + std::to_string(static_cast<int>(radius))).c_str() : "line",
                blur);
            for (const double noise : {0.0, 1.0, 2.0, 4.0, 8.0}) {
                const AcrossResult cell = measureAcross({radius, blur, noise}, kAcrossScenes);
                std::printf(" %+.3f / %.3f / %.2f", cell.found.bias(), cell.found.rms(),
                            cell.found.stated() / cell.found.rms());
                if (cell.found.count() < cell.asked) {
                    std::printf(" (%d not found)", cell.asked - cell.found.count());
                }
                std::printf(" |");
            }
            std::printf("\n");
        }
    }
}

}  // namespace

int main() {
    std::printf(
        "# Accuracy of form, relations and edges across outlines\n\n"
        "Made by `accuracy_form` (docs/tools); do not edit. Pixels, unless told otherwise.\n");
    printForm();
    printRelations();
    printAcross();
    return 0;
}
