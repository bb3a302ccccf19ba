#include "inspection/report/report_html.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "inspection/report/data_uri.h"
#include "inspection/report/histogram_plot.h"
#include "inspection/report/table.h"
#include "inspection/report/utf8.h"

namespace inspection {
namespace {

constexpr int kLargestSide = 1400;

constexpr const char* kStyle = R"(
:root { color-scheme: light dark; --ink: #1c2530; --soft: #5b6875; --line: #d9dfe5; --page: #fff; --card: #f6f8fa;
  --object: #2f6fb3; --ground: #b4bfca; --accent: #c2410c; --bad: #b42318; }
@media (prefers-color-scheme: dark) { :root { --ink: #e4e9ee; --soft: #9aa7b4; --line: #36414c; --page: #14191f;
  --card: #1c232b; --object: #6aa7e8; --ground: #55626f; --accent: #fb923c; --bad: #f97066; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 1180px; padding: 24px; background: var(--page); color: var(--ink);
  font: 15px/1.5 system-ui, "Segoe UI", "Noto Sans", sans-serif; }
h1 { font-size: 24px; margin: 0 0 4px; } h2 { font-size: 18px; margin: 0 0 4px; overflow-wrap: anywhere; }
h3 { font-size: 15px; margin: 20px 0 6px; }
.soft { color: var(--soft); margin: 0 0 12px; }
section { border: 1px solid var(--line); border-radius: 8px; background: var(--card); padding: 18px; margin: 20px 0; }
section.failed { border-left: 4px solid var(--bad); } section.incomplete { border-left: 4px solid var(--accent); }
.problem { color: var(--bad); margin: 0; }
img { display: block; max-width: 100%; height: auto; border-radius: 4px; margin: 0 0 14px; }
.histogram { width: 100%; max-width: 528px; display: block; }
.histogram .object { fill: var(--object); } .histogram .ground { fill: var(--ground); }
.histogram .axis { stroke: var(--soft); } .histogram .level { stroke: var(--accent); stroke-width: 1.5; }
.histogram text { font-size: 11px; fill: var(--soft); } .histogram .tick { text-anchor: middle; }
.histogram .level-text { fill: var(--accent); font-weight: 600; }
figure { margin: 0 0 14px; } figcaption { color: var(--soft); font-size: 13px; }
.closeup { width: 100%; max-width: 968px; display: block; border-radius: 4px; }
.closeup polyline { fill: none; stroke: #ffd84a; stroke-width: 0.09; }
.closeup circle { fill: #ff4f6d; stroke: #fff; stroke-width: 0.04; }
.plot { width: 100%; max-width: 760px; display: block; }
.plot .curve { fill: none; stroke: var(--object); stroke-width: 1.5; } .plot .frame { fill: none; stroke: var(--line); }
.plot .points { fill: var(--object); } .plot .mark { stroke: var(--accent); stroke-width: 1.5; }
.plot text { font-size: 11px; fill: var(--soft); } .plot .mark-text { fill: var(--accent); text-anchor: middle; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { text-align: right; padding: 3px 12px; border-bottom: 1px solid var(--line); white-space: nowrap; }
th { color: var(--soft); font-weight: 600; } th:nth-child(2), td:nth-child(2) { text-align: left; }
tr.weak td { color: var(--accent); }
)";

cv::Mat shrunk(const cv::Mat& picture) {
    const int side = std::max(picture.cols, picture.rows);
    if (side <= kLargestSide) return picture;
    const double scale = static_cast<double>(kLargestSide) / side;
    cv::Mat smaller;
    cv::resize(
        picture, smaller,
        cv::Size(std::max(1, cvRound(picture.cols * scale)), std::max(1, cvRound(picture.rows * scale))), 0,
        0, cv::INTER_AREA);
    return smaller;
}

void writePicture(std::ostream& out, const cv::Mat& picture, const std::string& alt) {
    if (picture.empty()) return;
    const std::string data = pngDataUri(shrunk(picture));
    if (!data.empty()) out << "<img alt='" << escapeHtml(alt) << "' src='" << data << "'>\n";
}

void writeRow(std::ostream& out, const std::vector<std::string>& cells, const char* tag,
              const char* name = "") {
    out << "<tr" << (*name != '\0' ? " class='" : "") << name << (*name != '\0' ? "'" : "") << ">";
    for (const std::string& cell : cells) out << "<" << tag << ">" << escapeHtml(cell) << "</" << tag << ">";
    out << "</tr>\n";
}

void writeFeatures(std::ostream& out, const std::vector<Feature>& features) {
    if (features.empty()) return;
    out << "<h3>Features</h3><div class='scroll'><table>\n";
    writeRow(out,
             {"#", "shape", "x", "y", "radius", "angle", "length", "width", "points", "inliers",
              "mean residual", "of inliers"},
             "th");
    int number = 0;
    for (const Feature& f : features) {
        const bool isCircle = f.shape == Shape::kCircle;
        const Deviations& u = f.deviations;
        writeRow(out,
                 {std::to_string(++number), nameOf(f.shape), uncertainText(f.center.x, u.x, 2),
                  uncertainText(f.center.y, u.y, 2), f.isRound() ? uncertainText(f.radius, u.radius, 2) : "",
                  isCircle ? "" : uncertainText(f.angle, u.angle, 2),
                  isCircle ? "" : uncertainText(f.length, u.length, 1),
                  isCircle ? "" : uncertainText(f.width, u.width, 2), std::to_string(f.contourPoints),
                  fixedText(100.0 * f.inlierRatio, 0) + " %", fixedText(f.meanResidual, 2),
                  fixedText(f.inlierResidual, 2)},
                 "td", f.weak ? "weak" : "");
    }
    out << "</table></div>\n<p class='soft'>Pixels and degrees; after ± the standard uncertainty.</p>\n";
}

void writeTruth(std::ostream& out, const std::vector<TruthError>& truth) {
    out << "<h3>Errors against the truth (pixels, degrees)</h3><div class='scroll'><table>\n";
    writeRow(out, {"feature", "truth", "x", "y", "centre", "radius", "angle", "offset", "width"}, "th");
    for (const TruthError& e : truth) {
        const bool isCircle = e.shape == Shape::kCircle;
        const auto number = [&](bool shown, double v) {
            return e.feature >= 0 && shown ? fixedText(v, 3) : "";
        };
        writeRow(out,
                 {e.feature >= 0 ? std::to_string(e.feature + 1) : "missed", isCircle ? "disk" : "bar",
                  fixedText(e.center.x, 2), fixedText(e.center.y, 2), number(isCircle, e.centerError),
                  number(isCircle, e.radiusError), number(!isCircle, e.angleError),
                  number(!isCircle, e.offsetError), number(!isCircle, e.widthError)},
                 "td", e.feature < 0 ? "weak" : "");
    }
    out << "</table></div>\n";
}

void writeSection(std::ostream& out, const Section& section) {
    out << "<h3>" << escapeHtml(section.title) << "</h3>\n";
    if (!section.note.empty()) out << "<p class='soft'>" << escapeHtml(section.note) << "</p>\n";
    writePicture(out, section.picture, section.title);
    for (const Figure& figure : section.figures)
        out << "<figure>" << figure.svg << "<figcaption>" << escapeHtml(figure.caption)
            << "</figcaption></figure>\n";
    if (section.rows.size() < 2) return;
    out << "<div class='scroll'><table>\n";
    for (std::size_t i = 0; i < section.rows.size(); ++i)
        writeRow(out, section.rows[i], i == 0 ? "th" : "td");
    out << "</table></div>\n";
}

std::string shapesText(const ImageResult& result) {
    return std::string(", ") + (result.brightObjects ? "bright" : "dark") + " objects, " +
           std::to_string(result.features.size()) + " features";
}

void writeShapes(std::ostream& out, const ImageResult& result, const cv::Mat& annotated,
                 const std::string& method) {
    writePicture(out, annotated, "The picture with the measured features");
    out << "<h3>Histogram and level (" << escapeHtml(method) << ", square-root scale)</h3>\n"
        << histogramSvg(result.histogram, result.level, result.brightObjects) << "\n";
    writeFeatures(out, result.features);
    if (result.hasTruth) writeTruth(out, result.truth);
}

void writeMessages(std::ostream& out, const std::vector<std::string>& messages) {
    if (messages.empty()) return;
    out << "<h3>Messages of the library</h3><ul>\n";
    for (const std::string& message : messages) out << "<li>" << escapeHtml(message) << "</li>\n";
    out << "</ul>\n";
}

}  // namespace

HtmlReport::HtmlReport(std::ostream& out, const Settings& settings) : out_(out), method_(settings.method) {
    out_ << "<!DOCTYPE html>\n<html lang='en'><head><meta charset='utf-8'>\n"
         << "<meta name='viewport' content='width=device-width, initial-scale=1'>\n<title>Inspection "
            "report</title>\n"
         << "<style>" << kStyle
         << "</style></head><body>\n<h1>Inspection report</h1>\n<p class='soft'>orx_inspection "
         << INSPECTION_VERSION << ", threshold " << escapeHtml(method_) << ", tolerance "
         << fixedText(settings.tolerance, 2) << " px, background window " << settings.background
         << " px. Lengths are pixels, the centre of the top-left pixel at (0, 0); angles are degrees.</p>\n";
}

void HtmlReport::add(const ImageResult& result, const cv::Mat& annotated) {
    tally_.add(result);
    const char* kind = result.complete() ? "" : result.measured() ? " class='incomplete'" : " class='failed'";
    out_ << "<section" << kind << "><h2>" << escapeHtml(result.name) << "</h2>\n";
    if (!result.complete())
        out_ << "<p class='problem'>" << (result.measured() ? "Measured, but: " : "Not measured: ")
             << escapeHtml(result.problemText()) << "</p>\n";
    if (result.measured()) {
        out_ << "<p class='soft'>" << result.size.width << " x " << result.size.height << " pixels"
             << (result.hasShapes ? shapesText(result) : "") << "</p>\n";
        if (result.hasShapes) writeShapes(out_, result, annotated, method_);
        for (const Section& section : result.sections) writeSection(out_, section);
    }
    writeMessages(out_, result.messages);
    out_ << "</section>\n";
}

void HtmlReport::finish() { out_ << "<p class='soft'>" << tally_.text() << ".</p>\n</body></html>\n"; }

}  // namespace inspection
