// Prints docs/accuracy-matching.md: how often parts are found in rendered scenes, and how well.
//
//     build/release/bin/accuracy_matching > docs/accuracy-matching.md
//
// Options: --only TEXT (rows whose label contains it), --scenes N (200; a row's, over all parts), --part TEXT
// (parts whose name contains it), --failures 1 (tells of each miss and each false find on stderr, with the
// seed),
// --save FOLDER (and writes its picture there).
#include <chrono>
#include <cstdio>
#include <opencv2/imgcodecs.hpp>

#include "docs/tools/matching_accuracy.h"
#include "docs/tools/tool_support.h"

namespace {

using namespace matching_accuracy;

struct Settings {
    std::string only;
    std::string part;
    int scenes = 200;
    bool failures = false;
    std::string save;
};

void printPose(const char* what, double x, double y, double angle, double scale) {
    std::fprintf(stderr, "  %s (%.3f, %.3f), %.3f degrees, scale %.4f", what, x, y, angle, scale);
}

void tellFailure(const Settings& settings, const Row& row, const scenes::PartSceneSettings& scene,
                 const scenes::PartScene& rendered, const orx::TFindResult& finds, const Result& result) {
    const bool failed = result.found < result.parts || result.falseFinds > 0;
    if (!failed || !(settings.failures || !settings.save.empty())) return;
    std::fprintf(stderr, "%s, %s, seed %llu: %d of %d found, %d false; %s\n", row.label.c_str(),
                 scenes::partName(scene.kind), static_cast<unsigned long long>(scene.seed), result.found,
                 result.parts, result.falseFinds, orx::matchStatusText(finds.status));
    for (const scenes::PlacedPart& truth : rendered.parts) {
        printPose("truth", truth.pose.x, truth.pose.y, truth.pose.angle, truth.pose.scale);
        std::fprintf(stderr, ", %.0f %% hidden\n", 100 * truth.hidden);
    }
    for (const orx::TFoundPart& part : finds.parts) {
        printPose("found", part.pose.x, part.pose.y, part.pose.angle, part.pose.scale);
        std::fprintf(stderr, ", score %.3f, rms %.3f, %zu free%s\n", part.score, part.rms, part.free.size(),
                     part.reversed ? ", reversed" : "");
    }
    if (settings.save.empty()) return;
    std::string name = row.label + "-" + scenes::partName(scene.kind) + "-" + std::to_string(scene.seed);
    for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '-';
    cv::imwrite(settings.save + "/" + name + ".png", rendered.image);
}

std::map<scenes::PartKind, Result> run(const Settings& settings, Row row) {
    if (row.label.find(settings.only) == std::string::npos) return {};
    row.kinds.erase(std::remove_if(row.kinds.begin(), row.kinds.end(),
                                   [&](scenes::PartKind kind) {
                                       return std::string(scenes::partName(kind)).find(settings.part) ==
                                              std::string::npos;
                                   }),
                    row.kinds.end());
    if (row.kinds.empty()) return {};
    std::fprintf(stderr, "%s\n", row.label.c_str());
    const auto start = std::chrono::steady_clock::now();
    const auto results =
        measure(row, settings.scenes, [&](const auto&... args) { tellFailure(settings, row, args...); });
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::fprintf(stderr, "  %.1f s\n", seconds.count());
    return results;
}

// ---- Verdicts
// -----------------------------------------------------------------------------------------------

bool atMost(double value, const double (&goal)[2], int grade) {
    return goal[grade] < 0 || value <= goal[grade];
}

// Whether the stated deviations are the true ones, but for two standard errors of a spread.
bool isStated(const Spread& spread, int grade) {
    constexpr double kRanges[2][2] = {{0.7, 1.4}, {0.85, 1.15}};
    if (spread.count == 0) return true;
    const double chance = 2 * spread.statedOverTrue() / std::sqrt(2.0 * spread.count);
    return spread.statedOverTrue() + chance >= kRanges[grade][0] &&
           spread.statedOverTrue() - chance <= kRanges[grade][1];
}

std::string verdict(const Result& result, const Goals& goals) {
    std::string missed;
    for (const int grade : {1, 0}) {
        missed.clear();
        const auto hold = [&](bool reached, const char* what) {
            if (!reached) missed += (missed.empty() ? "misses: " : ", ") + std::string(what);
        };
        hold(result.foundShare() >= goals.found[grade], "found");
        hold(atMost(result.falseEach(), goals.falseFinds, grade), "false finds");
        hold(atMost(result.place.rms(), goals.place, grade), "place");
        hold(atMost(result.angle.rms(), goals.angle, grade), "angle");
        hold(atMost(result.scale.rms(), goals.scale, grade), "scale");
        if (goals.stated) {
            hold(isStated(result.place, grade) && isStated(result.angle, grade) &&
                     isStated(result.scale, grade),
                 "stated");
        }
        if (missed.empty()) return grade == 1 ? "excellent" : "good";
    }
    return missed;
}

// ---- Tables
// -------------------------------------------------------------------------------------------------

void printIntroduction() {
    std::printf(
        "# How well parts are found\n\n"
        "Made by `accuracy_matching` (docs/tools); do not edit. Scenes are rendered with exact areas "
        "(examples/support/part_scene.h):\n"
        "five parts with a diameter of 120 pixels (plate with holes, gear, L-bracket, key, ring with a "
        "notch), at any place\n"
        "and angle in 640 x 480 pixels, contrast 100, blur 0.8, noise 2, unless the row says otherwise. A "
        "part is taught from a\n"
        "picture of it alone, without noise. Rows are over all five parts.\n\n"
        "- **found**: parts that were found with no point of their outline off by more than about %g pixels; "
        "what the finder\n"
        "  says it can't tell (`TFoundPart::free`: the angle of a ring whose notch is hidden) does not "
        "count.\n"
        "- **false**: other finds, a picture. Up to three finds more than there are parts were asked for.\n"
        "- **rms**: root mean square of the errors of x and y (of one coordinate), angle and scale of the "
        "parts found.\n"
        "- **stated**: root mean square of the stated deviations over that, of place, angle and scale.\n"
        "- **min**: `TFindOptions::minScore`; **least**: the lowest score of a part found.\n\n"
        "| goal | good | excellent |\n|---|---|---|\n"
        "| found: clean, clutter, noise 8, uneven light, inverted, five in a picture | 99 %% | 100 %% |\n"
        "| found with 40 %%, 60 %% hidden | 95 %%, 50 %% | 100 %%, 80 %% |\n"
        "| false finds a picture | 0.05 | 0 |\n"
        "| rms at noise 2 | 0.01 px, 0.02° | 0.005 px, 0.01° |\n"
        "| rms at noise 8 | 0.02 px, 0.04° | 0.013 px, 0.02° |\n"
        "| rms with 40 %% hidden | 0.02 px | 0.01 px |\n"
        "| rms of the scale | 0.0003 | 0.0001 |\n"
        "| stated over true deviations (after allowing two standard errors) | 0.7 to 1.4 | 0.85 to 1.15 |\n",
        kNear);
}

void printHead(const char* title, bool judged) {
    std::printf(
        "\n## %s\n\n| scene | min | found | false | rms, px | rms, degrees | rms of scale | stated | "
        "least |%s\n|---|---|---|---|---|---|---|---|---|%s\n",
        title, judged ? " reached |" : "", judged ? "---|" : "");
}

void printRow(const Row& row, const Result& result, const Goals* goals) {
    std::printf("| %s | %g |", row.label.c_str(), row.find.minScore);
    if (row.absent)
        std::printf(" |");
    else
        std::printf(" %d of %d |", result.found, result.parts);
    std::printf(" %.3g |", result.falseEach());
    if (result.place.count == 0) {
        std::printf(" | | | | |");
    } else {
        std::printf(" %.4f | %.4f |", result.place.rms(), result.angle.rms());
        if (result.scale.count > 0)
            std::printf(" %.6f | %.2f, %.2f, %.2f |", result.scale.rms(), result.place.statedOverTrue(),
                        result.angle.statedOverTrue(), result.scale.statedOverTrue());
        else
            std::printf(" | %.2f, %.2f |", result.place.statedOverTrue(), result.angle.statedOverTrue());
        std::printf(" %.2f |", result.leastScore);
    }
    if (goals != nullptr) std::printf(" %s |", verdict(result, *goals).c_str());
    std::printf("\n");
    std::fflush(stdout);
}

using ByPart = std::vector<std::pair<std::string, std::map<scenes::PartKind, Result>>>;

void printByPart(const char* title, const ByPart& rows,
                 const std::function<std::string(const Result& result)>& cell) {
    std::printf("\n### %s\n\n| scene |", title);
    for (const scenes::PartKind kind : scenes::kFiveParts) std::printf(" %s |", scenes::partName(kind));
    std::printf("\n|---|---|---|---|---|---|\n");
    for (const auto& [label, results] : rows) {
        std::string cells;
        bool hasText = false;
        for (const scenes::PartKind kind : scenes::kFiveParts) {
            const auto result = results.find(kind);
            const std::string text = result == results.end() ? "" : cell(result->second);
            cells += " " + text + " |";
            hasText = hasText || !text.empty();
        }
        if (hasText) std::printf("| %s |%s\n", label.c_str(), cells.c_str());
    }
}

std::string foundCell(const Result& result) {
    const std::string extra =
        result.falseFinds > 0 ? ", " + std::to_string(result.falseFinds) + " false" : "";
    const std::string free =
        result.undetermined > 0 ? ", " + std::to_string(result.undetermined) + " free" : "";
    if (result.parts == 0) return std::to_string(result.falseFinds) + " false";
    return std::to_string(result.found) + " of " + std::to_string(result.parts) + extra + free;
}

std::string accuracyCell(const Result& result) {
    if (result.place.count == 0) return "";
    char text[100];
    std::snprintf(text, sizeof text, "%.4f, %.4f°; %.2f, %.2f", result.place.rms(), result.angle.rms(),
                  result.place.statedOverTrue(), result.angle.statedOverTrue());
    return text;
}

void printNotes() {
    std::printf(
        R"(
## Where it gets hard, and why

- Noise 8, the angle: that of the ring hangs on the two sides of its notch, 24 pixels of edge in all; the other four
  parts are near 0.02° or below.
- Hidden parts: the edge of a cover that leaves the outline at a small angle can't be told from it for some pixels,
  and pulls. The deviations are larger then, but not always by enough.
- False finds at a score of 0.3: two sides of an arm (the bracket) or of a blade (the key) are enough for it, and covers
  and clutter have such sides. The ring's are at a wrong angle: what tells it is hidden or nearly so.
- Five touching, the missed ones: brackets and keys that lie into each other, so that more than half of their boxes
  overlap. With `maxOverlap` 0.8 all are found.
- 30 %% beyond the border, the missed ones: brackets whose reference point lies outside the picture, where the finder does
  not look.
- Plane tilted by 5°: the outline is another one, narrower by 0.4 %% and drawn out towards one side by as much; the nearest
  outline that is only turned lies tenths of a pixel off in places. Noise has no part in that, so it is not stated.
- Rough ground: its grains shift the edges that they touch, alike over some pixels. Stated deviations know of white noise
  only.
- Scale 0.5 to 2: the optics blurs parts of all sizes alike, and blurred corners are shifted inwards, by more of a small
  part. The bracket with its six corners is found 0.0004 too large at a scale of 0.5 and 0.0002 too small at 1.5; the
  plate and the ring are off by less than 0.0001.
)");
}

int usage() {
    std::fprintf(stderr,
                 "usage: accuracy_matching [--only TEXT] [--part TEXT] [--scenes N] [--failures 1] "
                 "[--save FOLDER]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    Settings settings;
    tool_support::Options options;
    options.add("--only", settings.only);
    options.add("--part", settings.part);
    options.add("--scenes", settings.scenes);
    options.add("--failures", settings.failures);
    options.add("--save", settings.save);
    if (!options.read(argc, argv) || settings.scenes < 5) return usage();

    ByPart byPart;
    printIntroduction();
    printHead("Scenes with goals", true);
    for (const GoalRow& goalRow : goalRows()) {
        const auto results = run(settings, goalRow.row);
        if (results.empty()) continue;
        printRow(goalRow.row, sumOf(results), &goalRow.goals);
        byPart.emplace_back(goalRow.row.label, results);
    }
    printHead("Further scenes", false);
    for (const Row& row : furtherRows()) {
        const auto results = run(settings, row);
        if (results.empty()) continue;
        printRow(row, sumOf(results), nullptr);
        byPart.emplace_back(row.label, results);
    }
    std::printf("\n## By part\n");
    printByPart("Found and false finds (free: something could not be told, and the finder said so)", byPart,
                foundCell);
    printByPart("Errors of place and angle; stated over true deviations", byPart, accuracyCell);
    printNotes();
}
