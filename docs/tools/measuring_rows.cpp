// A row of a table, and what it holds of the goals.
#include "docs/tools/measuring_tables.h"

namespace measuring_tables {
namespace {

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

}  // namespace

void printHead(const char* title, const char* text) {
    std::printf("\n## %s\n\n%s\n\n", title, text);
    std::printf(
        "| scene | points | noise | scenes | spread / bound | bias / spread | within 68.3 %% | within 95.4 "
        "%% | lost, "
        "astray | reached |\n|---|---|---|---|---|---|---|---|---|---|\n");
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

}  // namespace measuring_tables
