#include "inspection/batch/charts.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

#include "inspection/batch/run_summary.h"

namespace inspection {
namespace {

constexpr double kWidth = 440.0;
constexpr double kHeight = 150.0;
constexpr double kTop = 8.0;
constexpr double kLeft = 8.0;
constexpr double kRoomBelow = 20.0;
constexpr double kRoomRight = 72.0;  // of the run chart, for its limits' numbers

// Maps a span of values onto one of the drawing.
class Scale {
  public:
    Scale(double low, double high, double from, double to)
        : low_(low), factor_(high > low ? (to - from) / (high - low) : 0.0), from_(from) {}
    double at(double value) const { return std::round(10.0 * (from_ + (value - low_) * factor_)) / 10.0; }

  private:
    double low_;
    double factor_;
    double from_;
};

struct Span {
    double low;
    double high;
};

// The values, and a limit where it is not so far that they would shrink to a line.
Span shownSpan(double low, double high, const orx::TTolerance& tolerance) {
    constexpr double kFarthest = 20.0;
    const double size = high > low ? high - low : std::max(std::abs(high) * 1e-6, 1e-9);
    Span span{low, high};
    if (std::isfinite(tolerance.lower) && low - tolerance.lower < kFarthest * size)
        span.low = std::min(span.low, tolerance.lower);
    if (std::isfinite(tolerance.upper) && tolerance.upper - high < kFarthest * size)
        span.high = std::max(span.high, tolerance.upper);
    const double margin = std::max(0.04 * (span.high - span.low), 0.05 * size);
    return {span.low - margin, span.high + margin};
}

std::ostringstream svgOf(const char* name, double width, const std::string& label) {
    std::ostringstream svg;
    svg.imbue(std::locale::classic());
    svg << "<svg class='" << name << "' viewBox='0 0 " << width << " " << kTop + kHeight + kRoomBelow
        << "' role='img' aria-label='" << label << "'>";
    return svg;
}

bool lies(double value, const Span& span) { return value >= span.low && value <= span.high; }

}  // namespace

std::string toleranceHistogramSvg(const orx::TRunStatistics& statistics) {
    const orx::TRunHistogram histogram = statistics.histogram();
    if (histogram.counts.empty()) return "";
    const auto bins = static_cast<double>(histogram.counts.size());
    const Span span =
        shownSpan(histogram.start, histogram.start + bins * histogram.width, statistics.tolerance());
    const Scale x(span.low, span.high, kLeft, kLeft + kWidth);
    const auto peak = static_cast<double>(
        std::max<std::int64_t>(1, *std::max_element(histogram.counts.begin(), histogram.counts.end())));
    std::ostringstream svg = svgOf("bars", kWidth + 2 * kLeft, "Histogram");
    svg << "<path class='values' d='M" << x.at(histogram.start) << " " << kTop + kHeight;
    for (std::size_t i = 0; i < histogram.counts.size(); ++i) {
        const double share = static_cast<double>(histogram.counts[i]) / peak;
        svg << "V" << std::round(10.0 * (kTop + kHeight * (1.0 - share))) / 10.0 << "H"
            << x.at(histogram.start + static_cast<double>(i + 1) * histogram.width);
    }
    svg << "V" << kTop + kHeight << "z'/><path class='axis' d='M" << kLeft << " " << kTop + kHeight << "h"
        << kWidth << "'/>";
    for (const double limit : {statistics.tolerance().lower, statistics.tolerance().upper}) {
        if (!std::isfinite(limit) || !lies(limit, span)) continue;
        svg << "<path class='limit' d='M" << x.at(limit) << " " << kTop << "v" << kHeight
            << "'/><text class='middle' x='" << x.at(limit) << "' y='" << kTop + kHeight + 14 << "'>"
            << shortNumber(limit) << "</text>";
    }
    const bool limited = statistics.tolerance().limited();
    for (const double value : {statistics.least(), statistics.largest()}) {
        if (!limited && lies(value, span))
            svg << "<text class='middle' x='" << x.at(value) << "' y='" << kTop + kHeight + 14 << "'>"
                << shortNumber(value) << "</text>";
    }
    svg << "</svg>";
    return svg.str();
}

std::string runChartSvg(const orx::TRunStatistics& statistics) {
    const std::vector<orx::TRunChartPoint> points = statistics.chart();
    if (points.empty()) return "";
    const Span span = shownSpan(statistics.least(), statistics.largest(), statistics.tolerance());
    const Scale x(0.0, static_cast<double>(std::max<std::int64_t>(1, statistics.parts() - 1)), kLeft,
                  kLeft + kWidth);
    const Scale y(span.low, span.high, kTop + kHeight, kTop);
    std::ostringstream svg = svgOf("run", kLeft + kWidth + kRoomRight, "Run chart");
    // The band between the extremes of each point, forth and back.
    svg << "<path class='band' d='";
    for (std::size_t i = 0; i < points.size(); ++i)
        svg << (i == 0 ? "M" : "L") << x.at(static_cast<double>(points[i].first)) << " "
            << y.at(points[i].largest);
    for (std::size_t i = points.size(); i-- > 0;)
        svg << "L" << x.at(static_cast<double>(points[i].first)) << " " << y.at(points[i].least);
    svg << "z'/><path class='mean' d='";
    for (std::size_t i = 0; i < points.size(); ++i)
        svg << (i == 0 ? "M" : "L") << x.at(static_cast<double>(points[i].first)) << " "
            << y.at(points[i].mean);
    svg << "'/><path class='axis' d='M" << kLeft << " " << kTop + kHeight << "h" << kWidth << "'/>";
    // What lies beyond the limits is marked.
    for (const orx::TRunChartPoint& point : points) {
        for (const double value : {point.least, point.largest}) {
            if (value >= statistics.tolerance().lower && value <= statistics.tolerance().upper) continue;
            svg << "<circle class='out' r='3' cx='" << x.at(static_cast<double>(point.first)) << "' cy='"
                << y.at(value) << "'/>";
            if (point.least == point.largest) break;
        }
    }
    for (const double limit : {statistics.tolerance().lower, statistics.tolerance().upper}) {
        if (!std::isfinite(limit) || !lies(limit, span)) continue;
        svg << "<path class='limit' d='M" << kLeft << " " << y.at(limit) << "h" << kWidth << "'/><text x='"
            << kLeft + kWidth + 4 << "' y='" << y.at(limit) + 4 << "'>" << shortNumber(limit) << "</text>";
    }
    svg << "<text x='" << kLeft << "' y='" << kTop + kHeight + 14 << "'>1</text><text class='end' x='"
        << kLeft + kWidth << "' y='" << kTop + kHeight + 14 << "'>" << statistics.parts() << "</text></svg>";
    return svg.str();
}

}  // namespace inspection
