#include "inspection/report/histogram_plot.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace inspection {
namespace {

constexpr int kLeft = 8;
constexpr int kTop = 22;
constexpr int kBarWidth = 2;
constexpr int kHeight = 150;
constexpr int kPlotWidth = 256 * kBarWidth;

// One outline for all bars of one class: a path is a hundredth of the elements that bars would be.
std::string classPath(const std::array<int, 256>& histogram, int from, int to, double peak) {
    std::ostringstream path;
    path.imbue(std::locale::classic());
    path << "M" << kLeft + from * kBarWidth << " " << kTop + kHeight;
    for (int i = from; i < to; ++i) {
        const double share = std::sqrt(histogram[static_cast<std::size_t>(i)] / peak);
        path << "V" << kTop + kHeight - std::round(share * kHeight * 10.0) / 10.0 << "h" << kBarWidth;
    }
    path << "V" << kTop + kHeight << "z";
    return path.str();
}

void writeAxis(std::ostream& svg) {
    svg << "<path class='axis' d='M" << kLeft << " " << kTop + kHeight << ".5h" << kPlotWidth << "'/>";
    for (const int grey : {0, 64, 128, 192, 255})
        svg << "<text class='tick' x='" << kLeft + grey * kBarWidth << "' y='" << kTop + kHeight + 15 << "'>"
            << grey << "</text>";
}

void writeLevel(std::ostream& svg, int level) {
    const int x = kLeft + (level + 1) * kBarWidth;
    const char* anchor = level < 30 ? "start" : level > 225 ? "end" : "middle";
    svg << "<path class='level' d='M" << x << " " << kTop - 5 << "V" << kTop + kHeight << "'/>"
        << "<text class='level-text' text-anchor='" << anchor << "' x='" << x << "' y='" << kTop - 9
        << "'>level " << level << "</text>";
}

}  // namespace

std::string histogramSvg(const std::array<int, 256>& histogram, int level, bool brightObjects) {
    const double peak = std::max(1, *std::max_element(histogram.begin(), histogram.end()));
    const int split = std::clamp(level + 1, 0, 256);
    std::ostringstream svg;
    svg.imbue(std::locale::classic());
    svg << "<svg class='histogram' viewBox='0 0 " << kPlotWidth + 2 * kLeft << " " << kTop + kHeight + 22
        << "' role='img' aria-label='Histogram with the chosen level " << level << "'>"
        << "<path class='" << (brightObjects ? "ground" : "object") << "' d='"
        << classPath(histogram, 0, split, peak) << "'/><path class='" << (brightObjects ? "object" : "ground")
        << "' d='" << classPath(histogram, split, 256, peak) << "'/>";
    writeAxis(svg);
    writeLevel(svg, level);
    svg << "</svg>";
    return svg.str();
}

}  // namespace inspection
