#include "inspection/batch/batch_report.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <sstream>
#include <system_error>

#include "inspection/batch/charts.h"
#include "inspection/batch/truth_report.h"
#include "inspection/report/data_uri.h"
#include "inspection/report/utf8.h"
#include "inspection/run/image_source.h"
#include "orxFunctions/orxfunctions.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostCharts = 200;
constexpr std::size_t kMostThumbnailBytes = std::size_t{8} << 20U;
constexpr std::size_t kLongestText = 2000;  // of names and reasons
constexpr double kThumbnailPixels = 40000.0;
constexpr double kThumbnailSide = 284.0;  // at the most
constexpr int kThumbnailQuality = 70;

constexpr const char* kStyle = R"(
:root { color-scheme: light dark; --ink: #1c2530; --soft: #5b6875; --line: #d9dfe5; --page: #fff; --card: #f6f8fa;
  --bar: #2f6fb3; --band: #a9c6e6; --bad: #b42318; --good: #1a7f37; --doubt: #9a6700; }
@media (prefers-color-scheme: dark) { :root { --ink: #e4e9ee; --soft: #9aa7b4; --line: #36414c; --page: #14191f;
  --card: #1c232b; --bar: #6aa7e8; --band: #2b4a6b; --bad: #f97066; --good: #4ac26b; --doubt: #d4a72c; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 1180px; padding: 24px; background: var(--page); color: var(--ink);
  font: 15px/1.5 system-ui, "Segoe UI", "Noto Sans", sans-serif; }
h1 { font-size: 24px; margin: 0 0 4px; } h2 { font-size: 18px; margin: 24px 0 8px; }
h3 { font-size: 15px; margin: 0 0 6px; overflow-wrap: anywhere; }
.soft { color: var(--soft); } .note { color: var(--bad); margin: 4px 0; }
.pass { color: var(--good); } .fail { color: var(--bad); } .doubt { color: var(--doubt); }
.scroll { overflow-x: auto; } table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { text-align: right; padding: 3px 10px; border-bottom: 1px solid var(--line); white-space: nowrap; }
th { color: var(--soft); font-weight: 600; } th:first-child, td:first-child { text-align: left; }
section { border: 1px solid var(--line); border-radius: 8px; background: var(--card); padding: 14px; margin: 12px 0; }
.charts { display: flex; flex-wrap: wrap; gap: 16px; } .charts svg { width: 520px; max-width: 100%; }
svg .values { fill: var(--bar); } svg .band { fill: var(--band); stroke: var(--band); } svg .axis { stroke: var(--soft); }
svg .mean { fill: none; stroke: var(--bar); stroke-width: 1.5; } svg .out { fill: var(--bad); } svg .limit { stroke: var(--bad); stroke-dasharray: 4 3; }
svg text { font-size: 11px; fill: var(--soft); } svg .middle { text-anchor: middle; } svg .end { text-anchor: end; }
.parts { display: flex; flex-wrap: wrap; gap: 12px; } figure { margin: 0; width: 284px; font-size: 13px; overflow-wrap: anywhere; }
figure img { display: block; border-radius: 4px; max-width: 100%; }
)";

std::string safeText(const std::string& text) {
    if (text.size() <= kLongestText) return escapeHtml(text);
    return escapeHtml(cleanUtf8(text.substr(0, kLongestText))) + " ...";
}

const char* classOf(orx::TVerdict verdict) {
    if (verdict == orx::vdPass) return "pass";
    if (verdict == orx::vdFail) return "fail";
    return verdict == orx::vdNoLimits ? "soft" : "doubt";
}

void writeRow(std::ostream& out, const std::vector<std::string>& cells, const char* tag) {
    out << "<tr>";
    for (const std::string& cell : cells) out << "<" << tag << ">" << cell << "</" << tag << ">";
    out << "</tr>\n";
}

std::string indexText(double index) {
    if (std::isinf(index)) return index > 0 ? "&#8734;" : "&#8722;&#8734;";
    return shortNumber(std::round(100.0 * index) / 100.0);
}

std::string nameWithUnit(const orx::TRecipeTarget& target) {
    return safeText(target.unit.empty() ? target.name : target.name + " (" + target.unit + ")");
}

void writeStatistics(std::ostream& out, const orx::TRecipe& recipe, const RunSummary& summary) {
    out << "<h2>Values</h2><div class='scroll'><table>\n";
    writeRow(out,
             {"value", "nominal", "lower", "upper", "mean", "deviation", "least", "largest", "Cp", "Cpk",
              "pass", "fail", "undecided", "not measured"},
             "th");
    for (std::size_t i = 0; i < summary.statistics().size(); ++i) {
        const orx::TRecipeTarget& target = recipe.targets()[i];
        const orx::TRunStatistics& value = summary.statistics()[i];
        std::vector<std::string> cells{nameWithUnit(target),
                                       target.hasNominal ? shortNumber(target.nominal) : "",
                                       shortNumber(target.tolerance.lower),
                                       shortNumber(target.tolerance.upper),
                                       shortNumber(value.mean()),
                                       shortNumber(value.deviation()),
                                       shortNumber(value.least()),
                                       shortNumber(value.largest()),
                                       indexText(value.cp()),
                                       indexText(value.cpk())};
        for (const orx::TVerdict verdict : {orx::vdPass, orx::vdFail, orx::vdUndecided, orx::vdNotMeasured})
            cells.push_back(std::to_string(value.countOf(verdict)));
        writeRow(out, cells, "td");
    }
    out << "</table></div><p class='soft'>Cp and Cpk with the standard deviation of the whole run (ISO "
           "22514-2: "
           "Pp and Ppk where the process is not proven to be stable).</p>\n";
}

void writeGauge(std::ostream& out, const orx::TRecipe& recipe, const RunSummary& summary) {
    if (summary.gauge() <= 0) return;
    out << "<h2>Gauge study</h2><p class='soft'>" << summary.gauge()
        << " pictures of each part. Repeatability: standard deviation pooled over the parts; its share of "
           "the "
           "tolerance: 6 s over the width of the tolerance.</p><div class='scroll'><table>\n";
    writeRow(out,
             {"value", "parts", "values", "repeatability", "of the tolerance", "of the variation",
              "deviation of parts"},
             "th");
    const auto percent = [](double share) { return std::isfinite(share) ? shortNumber(share) + " %" : ""; };
    for (std::size_t i = 0; i < summary.studies().size(); ++i) {
        const orx::TGaugeResult result = summary.studies()[i].result();
        writeRow(
            out,
            {nameWithUnit(recipe.targets()[i]), std::to_string(result.parts), std::to_string(result.values),
             shortNumber(result.repeatability), percent(result.toleranceShare),
             percent(result.variationShare), shortNumber(result.partDeviation)},
            "td");
    }
    out << "</table></div>\n";
}

void writeCharts(std::ostream& out, const orx::TRecipe& recipe, const RunSummary& summary) {
    const std::size_t count = std::min(kMostCharts, summary.statistics().size());
    for (std::size_t i = 0; i < count; ++i) {
        const orx::TRunStatistics& statistics = summary.statistics()[i];
        if (statistics.count() == 0) continue;
        out << "<section><h3>" << nameWithUnit(recipe.targets()[i]) << "</h3><div class='charts'>"
            << toleranceHistogramSvg(statistics) << runChartSvg(statistics) << "</div>";
        const orx::TRunHistogram histogram = statistics.histogram();
        if (histogram.below + histogram.above > 0)
            out << "<p class='soft'>" << histogram.below << " further below, " << histogram.above
                << " further above</p>";
        out << "</section>\n";
    }
    if (count < summary.statistics().size())
        out << "<p class='soft'>Charts of the first " << count << " values.</p>\n";
}

// A file name in a link: everything but plain letters as %XX.
std::string linkTo(const std::string& name) {
    std::string link = kPicturesFolder;
    link += "/";
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9') || byte == '-' || byte == '_' || byte == '.';
        if (plain)
            link += c;
        else
            link += std::string("%") + "0123456789ABCDEF"[byte >> 4U] + "0123456789ABCDEF"[byte & 15U];
    }
    return link;
}

// Halved as long as that goes, which is quicker than all at once.
cv::Mat reduced(cv::Mat picture) {
    const double scale = std::min({1.0, std::sqrt(kThumbnailPixels / static_cast<double>(picture.total())),
                                   kThumbnailSide / std::max(picture.cols, picture.rows)});
    const cv::Size size(std::max(1, cvRound(picture.cols * scale)),
                        std::max(1, cvRound(picture.rows * scale)));
    while (picture.cols >= 2 * size.width && picture.rows >= 2 * size.height)
        cv::resize(picture, picture, cv::Size(picture.cols / 2, picture.rows / 2), 0, 0, cv::INTER_AREA);
    cv::resize(picture, picture, size, 0, 0, cv::INTER_AREA);
    return picture;
}

// Empty for what is no picture any more.
std::string thumbnail(const fs::path& file) {
    std::string ignored;
    // A JPEG file is decoded to half its size in half the time.
    const bool isJpeg = file.extension() == ".jpg";
    const cv::Mat picture =
        readPicture(file, isJpeg ? cv::IMREAD_REDUCED_COLOR_2 : cv::IMREAD_COLOR, ignored);
    if (picture.empty()) return "";
    std::vector<uchar> jpeg;
    if (!orx::encodePicture(".jpg", reduced(picture), jpeg, {cv::IMWRITE_JPEG_QUALITY, kThumbnailQuality}))
        return "";
    return "data:image/jpeg;base64," + base64(jpeg);
}

void writeWorst(std::ostream& out, const RunSummary& summary, const fs::path& folder) {
    const std::vector<WorstPart> worst = summary.worst();
    out << "<h2>Worst parts</h2><p class='soft'>" << worst.size() << " of " << summary.pictures()
        << "; all are in results.csv.</p><div class='parts'>\n";
    std::size_t bytes = 0;
    for (const WorstPart& part : worst) {
        out << "<figure>";
        std::error_code ignored;  // of cameras, old pictures make room for new ones
        const bool isThere = !part.annotated.empty() &&
                             fs::exists(folder / kPicturesFolder / fs::u8path(part.annotated), ignored);
        if (isThere) {
            std::string data;
            if (bytes < kMostThumbnailBytes)
                data = thumbnail(folder / kPicturesFolder / fs::u8path(part.annotated));
            bytes += data.size();
            out << "<a href='" << linkTo(part.annotated) << "'>";
            if (data.empty())
                out << "picture";
            else
                out << "<img alt='' src='" << data << "'>";
            out << "</a>";
        }
        out << "<figcaption>" << safeText(part.name) << "<br><b class='" << classOf(part.verdict) << "'>"
            << orx::verdictText(part.verdict) << "</b> " << safeText(part.why) << "</figcaption></figure>\n";
    }
    out << "</div>\n";
}

}  // namespace

std::string batchReportHtml(const orx::TRecipe& recipe, const RunSummary& summary, const ReportNotes& notes,
                            const fs::path& folder) {
    std::ostringstream out;
    out << "<!DOCTYPE html>\n<html lang='en'><head><meta charset='utf-8'>\n"
        << "<meta name='viewport' content='width=device-width, initial-scale=1'>\n<title>"
        << safeText(recipe.name()) << "</title>\n<style>" << kStyle << "</style></head><body>\n<h1>"
        << safeText(recipe.name()) << "</h1>\n<p>" << summary.text() << ".</p>\n";
    for (const std::string& line : notes.lines) out << "<p class='note'>" << safeText(line) << "</p>\n";
    out << "<p class='soft'>orx_inspection " << INSPECTION_VERSION << ", verdicts at a confidence of "
        << shortNumber(recipe.confidence());
    if (!notes.rate.empty()) out << ", " << notes.rate;
    out << ".</p>\n";
    writeStatistics(out, recipe, summary);
    writeGauge(out, recipe, summary);
    if (summary.truth() != nullptr) writeTruthHtml(out, recipe, *summary.truth());
    writeCharts(out, recipe, summary);
    writeWorst(out, summary, folder);
    out << "</body></html>\n";
    return out.str();
}

}  // namespace inspection
