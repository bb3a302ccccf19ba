#include "inspection/analyse/profile_plot.h"

#include <algorithm>
#include <locale>
#include <sstream>

#include "inspection/report/table.h"

namespace inspection {
namespace {

constexpr double kLeft = 48.0;
constexpr double kTop = 22.0;
constexpr double kWidth = 700.0;
constexpr double kHeight = 170.0;
constexpr double kLabelWidth = 38.0;
// Where all values are nearly equal the plot still spans this much.
constexpr double kLeastSpan = 0.5;

// From the values of a plot to places in its frame.
class Axes {
  public:
    explicit Axes(const ProfilePlot& plot) {
        const auto [left, right] = std::minmax_element(plot.points.begin(), plot.points.end(),
                                                       [](auto& a, auto& b) { return a.x < b.x; });
        const auto [low, high] = std::minmax_element(plot.points.begin(), plot.points.end(),
                                                     [](auto& a, auto& b) { return a.y < b.y; });
        left_ = left->x;
        right_ = std::max(right->x, left_ + kLeastSpan);
        const double margin = std::max(0.06 * (high->y - low->y), 0.25 * kLeastSpan);
        low_ = low->y - margin;
        high_ = high->y + margin;
    }

    double x(double value) const { return kLeft + (value - left_) / (right_ - left_) * kWidth; }
    double y(double value) const { return kTop + kHeight - (value - low_) / (high_ - low_) * kHeight; }

    void write(std::ostream& svg) const {
        svg << "<rect class='frame' x='" << kLeft << "' y='" << kTop << "' width='" << kWidth << "' height='"
            << kHeight << "'/>";
        const double below = kTop + kHeight + 15.0;
        svg << "<text x='" << kLeft << "' y='" << below << "'>" << fixedText(left_, 0) << "</text>"
            << "<text text-anchor='end' x='" << kLeft + kWidth << "' y='" << below << "'>"
            << fixedText(right_, 0) << "</text>";
        const int decimals = high_ - low_ < 20.0 ? 1 : 0;
        svg << "<text text-anchor='end' x='" << kLeft - 5.0 << "' y='" << kTop + 10.0 << "'>"
            << fixedText(high_, decimals) << "</text>"
            << "<text text-anchor='end' x='" << kLeft - 5.0 << "' y='" << kTop + kHeight << "'>"
            << fixedText(low_, decimals) << "</text>";
    }

  private:
    double left_ = 0.0;
    double right_ = 1.0;
    double low_ = 0.0;
    double high_ = 1.0;
};

void writePoints(std::ostream& svg, const ProfilePlot& plot, const Axes& axes) {
    if (!plot.asDots) svg << "<polyline class='curve' points='";
    for (const cv::Point2d& p : plot.points) {
        const std::string x = fixedText(axes.x(p.x), 1);
        const std::string y = fixedText(axes.y(p.y), 1);
        if (plot.asDots)
            svg << "<circle class='points' r='2.5' cx='" << x << "' cy='" << y << "'/>";
        else
            svg << x << "," << y << " ";
    }
    if (!plot.asDots) svg << "'/>";
}

void writeMarks(std::ostream& svg, const ProfilePlot& plot, const Axes& axes) {
    double labelled = -kLabelWidth;
    for (const double mark : plot.marks) {
        const std::string x = fixedText(axes.x(mark), 1);
        svg << "<path class='mark' d='M" << x << " " << kTop << "v" << kHeight << "'/>";
        // Where marks crowd, a label would cover its neighbour's: the table has them all.
        if (axes.x(mark) - labelled < kLabelWidth) continue;
        labelled = axes.x(mark);
        svg << "<text class='mark-text' x='" << x << "' y='" << kTop - 6.0 << "'>" << fixedText(mark, 2)
            << "</text>";
    }
    if (!plot.level) return;
    const std::string y = fixedText(axes.y(*plot.level), 1);
    svg << "<path class='mark' d='M" << kLeft << " " << y << "h" << kWidth << "'/>"
        << "<text class='mark-text' x='" << kLeft + 0.5 * kWidth << "' y='" << kTop - 6.0 << "'>"
        << fixedText(*plot.level, 3) << "</text>";
}

}  // namespace

std::string profileSvg(const ProfilePlot& plot) {
    if (plot.points.size() < 2) return "";
    const Axes axes(plot);
    std::ostringstream svg;
    svg.imbue(std::locale::classic());
    svg << "<svg class='plot' viewBox='0 0 " << kLeft + kWidth + 12.0 << " " << kTop + kHeight + 20.0
        << "' role='img' aria-label='" << plot.label << "'>";
    axes.write(svg);
    writePoints(svg, plot, axes);
    writeMarks(svg, plot, axes);
    svg << "</svg>";
    return svg.str();
}

}  // namespace inspection
