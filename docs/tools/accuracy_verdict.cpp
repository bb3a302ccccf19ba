// Makes docs/accuracy-verdict.md: how right values and verdicts of recipes are, from the picture on.
//
// Options: --calibrations N, --parts N (of each calibration), --threads N, --seed N (which changes all
// numbers a little), --folder FOLDER (one that exists: calibrations are written there, and what was measured
// by each; a run that was ended goes on from there, so begin with an empty one).
#include <cstdio>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "docs/tools/tool_support.h"
#include "docs/tools/verdict_accuracy.h"

namespace {

using namespace verdict_accuracy;

struct Settings {
    int calibrations = 50;
    int parts = 200;
    int threads = tool_support::allThreads();
    int seed = 1;
    std::string folder = ".";
};

// The samples of every part, by the plane as it is and as it was calibrated.
struct Batch {
    std::vector<std::vector<Sample>> known;
    std::vector<std::vector<Sample>> calibrated;
};

// Samples as a file keeps them: of `parts` parts by the calibrated plane, of some of them by the true one.
class SampleFile {
  public:
    SampleFile(std::string name, std::size_t values) : name_(std::move(name)), values_(values) {}

    bool read(Batch& batch, std::size_t calibrated, std::size_t known) const {
        std::ifstream file(name_, std::ios::binary);
        return file && read(file, batch.calibrated, calibrated) && read(file, batch.known, known);
    }

    void write(const Batch& batch) const {
        {
            std::ofstream file(name_ + ".part", std::ios::binary);
            for (const auto* parts : {&batch.calibrated, &batch.known}) {
                for (const std::vector<Sample>& samples : *parts)
                    file.write(reinterpret_cast<const char*>(samples.data()), bytes());
            }
        }
        std::rename((name_ + ".part").c_str(), name_.c_str());
    }

  private:
    std::streamsize bytes() const { return static_cast<std::streamsize>(values_ * sizeof(Sample)); }

    bool read(std::ifstream& file, std::vector<std::vector<Sample>>& parts, std::size_t count) const {
        parts.assign(count, std::vector<Sample>(values_));
        for (std::vector<Sample>& samples : parts)
            if (!file.read(reinterpret_cast<char*>(samples.data()), bytes())) return false;
        return true;
    }

    std::string name_;
    std::size_t values_;
};

class Factory {
  public:
    explicit Factory(const Settings& settings)
        : settings_(settings),
          calibrator_(Light()),
          view_(calibration_accuracy::eightPoses().front()),
          asked_(allValues()) {
        orx::writePlaneCalibration(settings.folder + "/" + kKnown,
                                   truePlane(calibration_accuracy::eightPoses().front()));
    }

    Batch batch(int calibration) const {
        const auto parts = static_cast<std::size_t>(settings_.parts);
        const SampleFile file(settings_.folder + "/samples-" + std::to_string(settings_.seed) + "-" +
                                  std::to_string(settings_.parts) + "-" + std::to_string(calibration),
                              asked_.size());
        Batch batch;
        if (file.read(batch, parts, (parts + kKnownEvery - 1) / kKnownEvery)) return batch;
        batch = measured(calibration);
        file.write(batch);
        std::fprintf(stderr, "calibration %d\n", calibration + 1);
        return batch;
    }

    const std::vector<Asked>& asked() const { return asked_; }

  private:
    Batch measured(int calibration) const {
        const auto first = (static_cast<std::uint64_t>(settings_.seed) << 40U) +
                           static_cast<std::uint64_t>(calibration) * 100000;
        const std::string name = "calibrated-" + std::to_string(calibration) + ".json";
        const orx::TPlaneCalibration plane = calibrator_.calibrate(first);
        const bool written = orx::writePlaneCalibration(settings_.folder + "/" + name, plane) == orx::plOk;
        if (!written) std::fprintf(stderr, "%s: no calibration %s\n", name.c_str(), plane.problem.c_str());
        Batch batch;
        for (int i = 0; i < settings_.parts; ++i) {
            const std::uint64_t seed = first + static_cast<std::uint64_t>(i) + 1;
            const Part part(seed);
            const cv::Mat picture = pictureOf(view_, part, Light(), seed);
            if (static_cast<std::size_t>(i) % kKnownEvery == 0)
                batch.known.push_back(measurePart(picture, part, asked_, kKnown, settings_.folder));
            batch.calibrated.push_back(measurePart(picture, part, asked_, name, settings_.folder));
        }
        std::remove((settings_.folder + "/" + name).c_str());
        return batch;
    }

    static constexpr std::size_t kKnownEvery = 10;
    static constexpr const char* kKnown = "known-plane.json";
    Settings settings_;
    Calibrator calibrator_;
    scenes::PlaneRenderer view_;
    std::vector<Asked> asked_;
};

// The rows of a table in the order in which they are asked for, with the samples of all parts.
using Rows = std::vector<std::pair<std::string, std::vector<Sample>>>;

void addTo(Rows& rows, const std::vector<Asked>& asked, const std::vector<std::vector<Sample>>& parts) {
    for (const std::vector<Sample>& samples : parts) {
        for (std::size_t i = 0; i < asked.size(); ++i) {
            std::size_t at = 0;
            while (at < rows.size() && rows[at].first != asked[i].row) ++at;
            if (at == rows.size()) rows.push_back({asked[i].row, {}});
            rows[at].second.push_back(samples[i]);
        }
    }
}

bool contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

bool isDistance(const std::string& row) {
    return contains(row, " to ") || contains(row, "width") || contains(row, "length");
}
bool isAngle(const std::string& row) { return contains(row, "angle"); }
// What is perfect can't lie to either side of a limit.
bool isPerfect(const std::string& row) { return contains(row, "straightness"); }

// Two standard errors of a share that is the stated risk.
double chance(int count) { return 2 * std::sqrt(0.05 * 0.95 / std::max(1, count)); }

std::string reached(const std::string& name, const Row& row, double pixels) {
    const double risk = 1 - kConfidence + chance(row.count);
    std::string missed;
    const auto miss = [&](const char* what) {
        missed += (missed.empty() ? "misses: " : ", ") + std::string(what);
    };
    if (isDistance(name) && pixels > 0.02) miss("error");
    if (row.rms > 1.1 * row.stated) miss("uncertainty");
    if (row.worst > risk) miss("risk");
    if (row.lost > 0) miss("lost");
    if (!missed.empty()) return missed;
    if (isPerfect(name)) return "good";
    const bool excellent = row.undecided < 1.2 * row.unavoidable && (!isDistance(name) || pixels <= 0.008);
    return excellent ? "excellent" : "good";
}

void printValues(const std::string& name, const Row& row, double pixels) {
    if (isAngle(name)) {
        std::printf("| %s | %d | %+.4f° | %.4f° | | %.2f | %.4f° |", name.c_str(), row.count, row.bias,
                    row.rms, row.stated / row.rms, row.calibration);
        return;
    }
    std::printf("| %s | %d | %+.2f | %.2f | %.4f | %.2f | %.2f |", name.c_str(), row.count, 1000 * row.bias,
                1000 * row.rms, pixels, row.stated / row.rms, 1000 * row.calibration);
}

void printTable(const char* title, const Rows& rows, double pixel) {
    std::printf(
        "\n## %s\n\n| value | n | bias | rms | rms, px | stated / true | calibration | wrong at a limit | at "
        "the "
        "worse | wrong accepts | wrong rejects | undecided | over unavoidable | reached "
        "|\n|---|---|---|---|---|---|---|---|---|---|---|---|---|---|\n",
        title);
    int lost = 0;
    for (const auto& [name, samples] : rows) {
        const Row row = rowOf(samples, 7);
        const double pixels = row.rms / pixel;
        lost += row.lost;
        printValues(name, row, pixels);
        if (isPerfect(name)) {
            std::printf(" | %.1f %% | | | | |", 100 * row.worst);
        } else {
            std::printf(" %.1f %% | %.1f %% | %.2f %% | %.2f %% | %.1f %% | %.2f |", 100 * row.wrong,
                        100 * row.worst, 100 * row.wrongAccepts, 100 * row.wrongRejects, 100 * row.undecided,
                        row.undecided / row.unavoidable);
        }
        std::printf(" %s |\n", reached(name, row, pixels).c_str());
    }
    std::printf("\nValues that were not measured: %d.\n", lost);
}

void printIntroduction(const Settings& settings, double pixel) {
    const int parts = settings.calibrations * settings.parts;
    std::printf(R"(# Accuracy of verdicts

Made by `accuracy_verdict --calibrations %d --parts %d --seed %d` (docs/tools); do not edit.

%d rendered plates, 48 x 34 mm with four holes, a slot and straight edges, no two of the same size, lie anywhere and at any
angle on a plane that is tilted by 10 degrees before a lens that bends the picture by 4 %% at its corners: 640 x 480 pixels,
%.3f mm a pixel, 160 grey levels of contrast, blur 0.7, noise 2. The largest hole is oval by up to 0.03 mm. Each part
is measured by one recipe in millimetres (docs/recipes.md), which knows its place to 0.3 mm and half a degree. The plane is
calibrated %d times anew, each time from eight rendered pictures of a chessboard, for %d parts each; every tenth part is
measured by the true plane, too.

- **bias**, **rms**: the mean and the root mean square error, micrometres (or degrees); the latter also in pixels.
- **stated / true**: the stated standard uncertainty over that error, root mean square; **calibration** is the
  calibration's share of it.
- **wrong at a limit**: of parts whose true value is a limit, how many pass that do not conform, or fail that do; over both
  kinds, and **at the worse** of them. The stated risk is 5 %% (confidence 0.95, measuring/verdict.h).
- **wrong accepts**, **wrong rejects**, **undecided**: verdicts over parts whose true values lie evenly within four rms errors
  of a limit, to either side, as shares of all verdicts. The limits are laid about each part's true value, half of
  them upper ones.
- **over unavoidable**: what is undecided over what would be if the deviation were known to be the rms error, and the bias 0.

| goal | good | excellent |
|---|---|---|
| distances and widths, rms | 0.02 px | 0.008 px |
| rms over what is stated | 1.1 | 1.1 |
| wrong at the worse limit | 5 %% | 5 %% |
| undecided over the unavoidable | | 1.2 |

A share is judged after allowing two standard errors of its count, as if all values were independent.

Of an oval hole the circle is that of least squares, and its departure from round counts as noise of the edge: that is
why its values are stated with care, and more of them undecided. The ends of the slot are seen over 150 degrees, by
chains over 120 (these tell the bend of an outline over six pixels to either side, and must end that far from where
it becomes straight; over 150 degrees they make the slot 0.005 mm too long). Its length misses the goal of distances for
want of outline: no estimate from arcs of 150 degrees can be better than 0.022 pixels here (the bound of Cramer and Rao).
Form is freed from noise, whose share can't be told from form of the same size: such values miss the goals where it is as
small as here, below a pixel's tenth. Straightness is judged of perfect edges alone, at the limit 0.
)",
                settings.calibrations, settings.parts, settings.seed, parts, pixel, settings.calibrations,
                settings.parts);
}

int usage() {
    std::fprintf(stderr,
                 "usage: accuracy_verdict [--calibrations N] [--parts N] [--threads N] [--seed N] "
                 "[--folder FOLDER]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    Settings settings;
    tool_support::Options options;
    options.add("--calibrations", settings.calibrations);
    options.add("--parts", settings.parts);
    options.add("--threads", settings.threads);
    options.add("--seed", settings.seed);
    options.add("--folder", settings.folder);
    if (!options.read(argc, argv) || settings.calibrations < 1 || settings.parts < 2 || settings.threads < 1)
        return usage();
    const Factory factory(settings);
    const std::vector<Batch> batches = tool_support::inParallel(
        settings.calibrations, settings.threads, [&](int calibration) { return factory.batch(calibration); });
    Rows known;
    Rows calibrated;
    for (const Batch& batch : batches) {
        addTo(known, factory.asked(), batch.known);
        addTo(calibrated, factory.asked(), batch.calibrated);
    }
    const double pixel = orx::pixelSize(truePlane(calibration_accuracy::eightPoses().front()), {320, 240});
    printIntroduction(settings, pixel);
    printTable("By a plane calibrated from rendered targets", calibrated, pixel);
    printTable("By the plane as it is", known, pixel);
    return 0;
}
