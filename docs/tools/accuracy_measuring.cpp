// Prints docs/accuracy-measuring.md: how close the fits for measuring come to the best that can be had, and
// what their stated uncertainties are worth. The page is the tables one after another; each can be made
// alone:
//     build/release/bin/accuracy_measuring --table circle --scenes 10000 > circle.md
// Options: --table NAME (see kTables), --only TEXT (rows whose label contains it), --scenes N, --threads N.
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "docs/tools/edge_chain_accuracy.h"
#include "docs/tools/measuring_accuracy.h"

namespace {

using namespace measuring_accuracy;

struct Settings {
    std::string table;  // all where empty
    std::string only;
    int scenes = 10000;
    int threads = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
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

// Whether a share counted over the scenes lies within the range, but for two standard errors of the count.
bool within(double percent, const double (&range)[2], int scenes) {
    const double chance = 2 * std::sqrt(percent * (100 - percent) / scenes);
    return percent + chance >= range[0] && percent - chance <= range[1];
}

// "excellent", "good", or what it misses.
std::string verdict(const Result& result, const Goals& goals) {
    std::string missed;
    for (const int grade : {1, 0}) {
        missed.clear();
        const auto miss = [&](const char* what) {
            missed += (missed.empty() ? "misses: " : ", ") + std::string(what);
        };
        const double limit = 0.001 * result.scenes;
        if (result.lost > limit) miss("lost");
        if (result.astray > limit) miss("astray");
        if (result.spread() > goals.spread[grade]) miss("spread");
        // The difference from the efficient estimate has little chance in it, but some where the two part.
        const double excess = std::max(0.0, std::pow(result.spread(), 2) - 1);
        const double chance = 2 * std::sqrt(excess / result.scenes);
        if (result.bias() > goals.bias[grade] + chance) miss("bias");
        bool stated = true;
        for (const Accuracy& a : result.parameters) {
            stated = stated && within(a.within68, goals.within68[grade], result.scenes) &&
                     within(a.within95, goals.within95[grade], result.scenes);
        }
        if (!stated) miss("intervals");
        if (missed.empty()) return grade == 1 ? "excellent" : "good";
    }
    return missed;
}

void printHead(const char* title, const char* text) {
    std::printf("\n## %s\n\n%s\n\n", title, text);
    std::printf(
        "| scene | points | noise | scenes | spread / bound | bias / spread | within 68.3 %% | within 95.4 "
        "%% | lost, "
        "astray | reached |\n|---|---|---|---|---|---|---|---|---|---|\n");
}

// "least to largest" over the parameters.
void printRange(const Result& result, double Accuracy::*value) {
    double least = 1e9;
    double largest = -1e9;
    for (const Accuracy& a : result.parameters) {
        least = std::min(least, a.*value);
        largest = std::max(largest, a.*value);
    }
    std::printf(" %.1f to %.1f |", least, largest);
}

void printRow(const std::string& label, int points, double noise, const Result& result, const Goals& goals) {
    std::printf("| %s | %d | %g | %d |", label.c_str(), points, noise, result.scenes);
    if (result.parameters.empty()) {
        std::printf(" none | | | | %d, %d | misses: lost |\n", result.lost, result.astray);
    } else {
        std::printf(" %.3f | %.3f |", result.spread(), result.bias());
        printRange(result, &Accuracy::within68);
        printRange(result, &Accuracy::within95);
        std::printf(" %d, %d | %s |\n", result.lost, result.astray, verdict(result, goals).c_str());
    }
    std::fflush(stdout);
}

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

constexpr int kPoints[] = {20, 200, 2000};
constexpr double kNoise[] = {0.01, 0.1, 1};

template <class RowOf>
void forEachScene(RowOf rowOf) {
    for (const int points : kPoints) {
        for (const double noise : kNoise) rowOf(points, noise);
    }
}

orx::TFitOptions withLoss(orx::TFitLoss loss) {
    orx::TFitOptions options;
    options.loss = loss;
    return options;
}

std::string arcName(double arc) {
    return arc == 360 ? "full circle" : "arc of " + std::to_string(int(arc)) + "°";
}

void circles(const Settings& settings, const Goals& goals, double outliers, const char* how,
             const std::function<orx::TMeasuredCircle(const std::vector<cv::Point2d>&, double)>& fit) {
    for (const double arc : {360.0, 90.0, 30.0}) {
        forEachScene([&](int points, double noise) {
            row(settings, arcName(arc) + how, circleTask(arc, points, noise, outliers), goals,
                [&](const auto& p) { return fit(p, noise); });
        });
    }
}

void lines(const Settings& settings, const Goals& goals, double outliers, const char* how,
           const std::function<orx::TMeasuredLine(const std::vector<cv::Point2d>&, double)>& fit) {
    forEachScene([&](int points, double noise) {
        row(settings, std::string("line") + how, lineTask(points, noise, outliers), goals,
            [&](const auto& p) { return fit(p, noise); });
    });
}

void ellipses(const Settings& settings, const Goals& goals, double outliers, const char* how,
              const orx::TFitOptions& options) {
    for (const int ratio : {1, 2, 5}) {
        forEachScene([&](int points, double noise) {
            row(settings, "1:" + std::to_string(ratio) + how, ellipseTask(ratio, points, noise, outliers),
                goals, [&](const auto& p) { return orx::fitEllipseGeometric(p, options); });
        });
    }
}

void ellipseTable(const Settings& settings) {
    printHead("Ellipses",
              "`fitEllipseGeometric`, least squares; longer half axis 100, no outliers. Of circles (1:1) the "
              "mean of "
              "the axes is judged, and no angle.");
    ellipses(settings, kWithoutOutliers, 0, "", {});
}

void ellipseOutlierTable(const Settings& settings) {
    printHead("Ellipses among 40 % outliers, Tukey's loss", "`fitEllipseGeometric` with `flTukey`.");
    ellipses(settings, kWithOutliers, 0.4, ", Tukey", withLoss(orx::flTukey));
}

void circleTable(const Settings& settings) {
    printHead("Circles and arcs", "`fitCircleGeometric`, least squares; radius 100, no outliers.");
    circles(settings, kWithoutOutliers, 0, "",
            [](const auto& points, double) { return orx::fitCircleGeometric(points); });
}

void lineTable(const Settings& settings) {
    printHead("Lines", "`fitLineGeometric`, least squares; a stretch of 200 pixels, no outliers.");
    lines(settings, kWithoutOutliers, 0, "",
          [](const auto& points, double) { return orx::fitLineGeometric(points); });
}

void circleOutlierTable(const Settings& settings) {
    printHead("Circles and arcs among 40 % outliers, Tukey's loss",
              "`fitCircleGeometric` with `flTukey`; the bound is that of the inliers (60 % of the points).");
    circles(settings, kWithOutliers, 0.4, ", Tukey", [](const auto& points, double) {
        return orx::fitCircleGeometric(points, withLoss(orx::flTukey));
    });
}

void lineOutlierTable(const Settings& settings) {
    printHead("Lines among 40 % outliers, Tukey's loss",
              "`fitLineGeometric` with `flTukey`; the bound is that of the inliers (60 % of the points).");
    lines(settings, kWithOutliers, 0.4, ", Tukey",
          [](const auto& points, double) { return orx::fitLineGeometric(points, withLoss(orx::flTukey)); });
}

// Three to four times the noise, as TConsensusOptions has it.
orx::TConsensusOptions tolerating(double noise) {
    orx::TConsensusOptions options;
    options.tolerance = 3.5 * noise;
    return options;
}

void circleConsensusTable(const Settings& settings) {
    printHead("Circles and arcs among 40 % outliers, consensus search",
              "`findCircle` with a tolerance of 3.5 times the noise, all else as it is by default.");
    circles(settings, kWithOutliers, 0.4, ", consensus",
            [](const auto& points, double noise) { return orx::findCircle(points, tolerating(noise)); });
}

void lineConsensusTable(const Settings& settings) {
    printHead("Lines among 40 % outliers, consensus search",
              "`findLine` with a tolerance of 3.5 times the noise, all else as it is by default.");
    lines(settings, kWithOutliers, 0.4, ", consensus",
          [](const auto& points, double noise) { return orx::findLine(points, tolerating(noise)); });
}

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

// The largest error of circles without noise, over the largest coordinate, from arcs that begin anywhere.
double exactCircle(cv::Point2d center, double radius, double arc, const orx::TFitOptions& options) {
    double worst = 0;
    Random random(1);
    for (int i = 0; i < 20; ++i) {
        const TrueCircle truth{center, radius, random.uniform(0, 360)};
        const orx::TMeasuredCircle fit =
            orx::fitCircleGeometric(truth.points({arc, 300, 0}, random), options);
        if (!fit.valid()) return std::numeric_limits<double>::infinity();
        worst = std::max({worst, std::abs(fit.center.x - center.x), std::abs(fit.center.y - center.y),
                          std::abs(fit.radius - radius)});
    }
    return worst / (std::max(std::abs(center.x), std::abs(center.y)) + radius);
}

// What rounding the coordinates leaves open: three deviations of the bound for noise of their last place.
double rounding(cv::Point2d center, double radius, double arc) {
    const double largest = std::max(std::abs(center.x), std::abs(center.y)) + radius;
    const double place = std::pow(2, std::floor(std::log2(largest)) - 52);
    const Values bound = CircleTask{{center, radius, 0}, {arc, 300, place / std::sqrt(12)}}.boundDeviation();
    return 3 * std::max(bound[0], bound[2]) / largest;
}

double exactLine(cv::Point2d middle, double length, const orx::TFitOptions& options) {
    double worst = 0;
    Random random(1);
    for (int i = 0; i < 20; ++i) {
        const TrueLine truth{middle, random.uniform(-180, 180)};
        const orx::TMeasuredLine fit = orx::fitLineGeometric(truth.points({length, 300, 0}, random), options);
        if (!fit.valid()) return std::numeric_limits<double>::infinity();
        // At both ends.
        for (const double along : {-0.5, 0.5}) {
            worst =
                std::max(worst, std::abs(fit.signedDistance(middle + along * length * truth.direction())));
        }
    }
    return worst / (std::max(std::abs(middle.x), std::abs(middle.y)) + length / 2);
}

void exactTable(const Settings& /*settings*/) {
    std::printf(
        "\n## Without noise\n\n"
        "The largest error of center and radius (lines: of the place at both ends) over the largest "
        "coordinate, of 20\n"
        "scenes of 300 points. Goals: 1e-9 is good, 1e-12 excellent. The last column is what the rounding of "
        "the\n"
        "points' coordinates to double leaves open (three deviations of the bound for noise of the last "
        "place).\n\n"
        "| shape | size | largest coordinate | least squares | Tukey | rounding "
        "|\n|---|---|---|---|---|---|\n");
    struct Place {
        cv::Point2d center;
        double size;
    };
    for (const Place& place :
         {Place{{412.3, 287.8}, 100}, Place{{1e6, -7e5}, 100}, Place{{6e5, -4e5}, 4e5}}) {
        const double largest = std::max(std::abs(place.center.x), std::abs(place.center.y)) + place.size;
        for (const double arc : {360.0, 90.0, 30.0, 5.0}) {
            std::printf("| %s | radius %g | %.3g | %.1e | %.1e | %.1e |\n", arcName(arc).c_str(), place.size,
                        largest, exactCircle(place.center, place.size, arc, {}),
                        exactCircle(place.center, place.size, arc, withLoss(orx::flTukey)),
                        rounding(place.center, place.size, arc));
        }
        std::printf("| line | length %g | %.3g | %.1e | %.1e | |\n", 2 * place.size, largest,
                    exactLine(place.center, 2 * place.size, {}),
                    exactLine(place.center, 2 * place.size, withLoss(orx::flTukey)));
    }
}

void printIntroduction() {
    std::printf(
        "# Accuracy of the fits for measuring\n\n"
        "Made by `accuracy_measuring` (docs/tools), table by table; do not edit. Scenes are random points at "
        "equal\n"
        "steps along a shape that is known, with Gaussian noise in x and in y (its standard deviation, in "
        "pixels).\n"
        "\n"
        "- **spread / bound**: the standard deviation of the results over the least that any unbiased "
        "estimate can\n"
        "  have (the bound of Cramer and Rao, from the true shape); of the parameter that comes off worst.\n"
        "- **bias / spread**: the mean error over the standard deviation, again of the worst parameter. Both "
        "are\n"
        "  told against the efficient estimate of the same scenes (see docs/tools/measuring_accuracy.h), so "
        "that\n"
        "  there is hardly any chance in them.\n"
        "- **within**: how many of the true values lie within the stated intervals of 68.3 and 95.4 %%\n"
        "  (`coverageFactor` times the stated deviation), in percent, least and largest of the parameters. "
        "Chance\n"
        "  alone moves them by 0.5 and 0.2 (standard errors at 10,000 scenes; at 1,000 scenes 1.5 and 0.7).\n"
        "- **lost, astray**: scenes without a result, and scenes whose result is off by more than ten "
        "bounds: another\n"
        "  shape was found. Neither counts in the other columns.\n"
        "- **reached**: what the row holds of the goals, the worst of its columns.\n"
        "\n"
        "| goal | good | excellent |\n|---|---|---|\n"
        "| spread over the bound, no outliers | 1.05 | 1.01 |\n"
        "| the same with 40 %% strewn outliers, of the inliers' bound | 1.15 | 1.05 |\n"
        "| bias over spread | 0.05 | 0.02 |\n"
        "| intervals of 68.3 and 95.4 %% hold | 65 to 72, 93.5 to 96.5 | 67 to 69.5, 94.7 to 96 |\n"
        "| lost and astray, each | 0.1 %% | 0.1 %% |\n"
        "\n"
        "A share is judged after allowing two standard errors of its count.\n");
}

void printNotes() {
    // The bound of the radius there, for the text.
    const double bound = circleTask(30, 20, 1).boundDeviation()[2];
    std::printf(
        "\n## Where rows miss, and why\n\n"
        "- An arc of 30° in 20 points with a noise of 1 pixel: the arc rises 3.4 pixels above its chord, and "
        "the\n"
        "  bound itself leaves the radius of 100 uncertain by %.0f pixels. Its curvature errs like a "
        "Gaussian, its\n"
        "  radius then cannot: it errs further upwards than downwards, and symmetric intervals miss it. "
        "Where the\n"
        "  deviation exceeds half of the radius the fit is refused (`fsArcTooShort`); those are the lost "
        "scenes.\n"
        "- The same arc with more points and a noise of 1 (%.0f pixels of uncertainty at 200 points): "
        "distances are\n"
        "  not quite linear in the center over errors so large, which costs about a percent at any number "
        "of\n"
        "  points. An estimate that corrects the equations it solves, not their solution, might win it "
        "back.\n"
        "- Twelve inliers among eight outliers (40 %% of 20 points): where the noise is a hundredth of the "
        "scene or\n"
        "  more, outliers come as close to a short arc or a line as its own points, and change what is found "
        "by\n"
        "  more than the noise does. The few points left do not tell.\n"
        "- Lost scenes of arcs of 30° with a noise of 1 among outliers: found collinear (`fsCollinear`), or "
        "by the\n"
        "  search, whose circles must tell their radius to a fifth (`fsNoConsensus`).\n"
        "- Ellipses: twelve inliers among eight outliers tell no ellipse, which any five points have; half "
        "of the\n"
        "  scenes are refused and most others astray, with deviations that say so. Narrow ones (1:5) with a "
        "noise of\n"
        "  1 carry a twentieth of their minor half axis; distances are not linear over so much at the tips.\n"
        "- Edges without noise: what is left is rounding to grey levels and the finder's own bias, some\n"
        "  ten-thousandths of a pixel in the radius of blurred disks. It is the same in every picture, so "
        "that the\n"
        "  intervals of the radius, which tell of what varies, hold less often than they say.\n"
        "- Full circle, 2,000 points, noise 0.01, Tukey: the scale of a few scenes in 10,000 settles on a "
        "wide band of\n"
        "  outliers (the stated noise tells), and the result is ten bounds off: some thousandths of a "
        "pixel.\n"
        "- Tukey's loss at 95 %% efficiency spreads at least 1.026 times the bound.\n",
        bound, circleTask(30, 200, 1).boundDeviation()[2]);
}

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
    for (int i = 1; i < argc; i += 2) {
        if (i + 1 >= argc) return usage();
        const std::string option = argv[i];
        const char* value = argv[i + 1];
        if (option == "--table")
            settings.table = value;
        else if (option == "--only")
            settings.only = value;
        else if (option == "--scenes")
            settings.scenes = std::atoi(value);
        else if (option == "--threads")
            settings.threads = std::atoi(value);
        else
            return usage();
    }
    if (settings.scenes < 10 || settings.threads < 1) return usage();
    bool known = false;
    for (const Table& table : kTables) {
        if (!settings.table.empty() && settings.table != table.name) continue;
        table.print(settings);
        known = true;
    }
    return known ? 0 : usage();
}
