#include "orxFunctions/calibration/plane_target.h"

#include <cmath>
#include <cstdio>
#include <vector>

#include "orxFunctions/calibration/plane/target_layout.h"

namespace orx {
namespace {

using plane::Layout;

constexpr double kPointsPerMillimetre = 72.0 / 25.4;
// Of a circle's radius: how far a cubic's inner points stand off for a quarter of it. The curve then leaves
// the circle by no more than 0.0003 of the radius.
constexpr double kQuarterCircle = 0.5519150244935106;

// With a decimal point whatever the process's language is, and no more digits than printers tell apart.
std::string number(double value) {
    const double rounded = std::round(std::abs(value) * 1e5);
    const auto units = static_cast<long long>(rounded);
    char digits[8];
    std::snprintf(digits, sizeof digits, "%05lld", units % 100000);
    std::string text = std::to_string(units / 100000) + "." + digits;
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return value < 0.0 && units != 0 ? "-" + text : text;
}

std::string svgRectangle(const cv::Rect2d& r) {
    return "<rect x=\"" + number(r.x) + "\" y=\"" + number(r.y) + "\" width=\"" + number(r.width) +
           "\" height=\"" + number(r.height) + "\"/>\n";
}

// Drawing commands of PDF, in points from the lower left corner.
class PdfCanvas {
  public:
    explicit PdfCanvas(double pageHeight) : pageHeight_(pageHeight) {}

    void rectangle(const cv::Rect2d& r) {
        put({r.x * kPointsPerMillimetre, up(r.y + r.height), r.width * kPointsPerMillimetre,
             r.height * kPointsPerMillimetre});
        commands_ += "re f\n";
    }

    void disk(cv::Point2d middle, double radius) {
        const double x = middle.x * kPointsPerMillimetre;
        const double y = up(middle.y);
        const double r = radius * kPointsPerMillimetre;
        const double k = kQuarterCircle * r;
        put({x + r, y});
        commands_ += "m\n";
        const double quarters[4][6] = {{x + r, y + k, x + k, y + r, x, y + r},
                                       {x - k, y + r, x - r, y + k, x - r, y},
                                       {x - r, y - k, x - k, y - r, x, y - r},
                                       {x + k, y - r, x + r, y - k, x + r, y}};
        for (const auto& quarter : quarters) {
            put({quarter[0], quarter[1], quarter[2], quarter[3], quarter[4], quarter[5]});
            commands_ += "c\n";
        }
        commands_ += "f\n";
    }

    // Of characters that need no escape.
    void text(cv::Point2d place, double height, const std::string& words) {
        commands_ += "BT /F1 " + number(height * kPointsPerMillimetre) + " Tf ";
        put({place.x * kPointsPerMillimetre, up(place.y)});
        commands_ += "Td (" + words + ") Tj ET\n";
    }

    const std::string& commands() const { return commands_; }

  private:
    double up(double y) const { return (pageHeight_ - y) * kPointsPerMillimetre; }

    void put(const std::vector<double>& numbers) {
        for (const double value : numbers) commands_ += number(value) + " ";
    }

    double pageHeight_;
    std::string commands_;
};

// A file of one page: objects, and the table of where they begin.
std::string pdfFile(const TTargetPage& page, const std::string& commands) {
    const std::string box =
        number(page.width * kPointsPerMillimetre) + " " + number(page.height * kPointsPerMillimetre);
    const std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages 2 0 R /ViewerPreferences << /PrintScaling /None >> >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + box +
            "] /Contents 4 0 R /Resources << /Font << /F1 5 0 R >> >> >>",
        "<< /Length " + std::to_string(commands.size()) + " >>\nstream\n" + commands + "endstream",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"};
    std::string file = "%PDF-1.4\n";
    std::string table;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        char entry[32];
        std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", file.size());
        table += entry;
        file += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const std::string count = std::to_string(objects.size() + 1);
    const std::size_t start = file.size();
    return file + "xref\n0 " + count + "\n0000000000 65535 f \n" + table + "trailer\n<< /Size " + count +
           " /Root 1 0 R >>\nstartxref\n" + std::to_string(start) + "\n%%EOF\n";
}

}  // namespace

std::string targetToSvg(const TTarget& target, const TTargetPage& page) {
    Layout layout;
    if (!plane::layOut(target, page, layout, "targetToSvg")) return {};
    const std::string width = number(page.width);
    const std::string height = number(page.height);
    std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "mm\" height=\"" +
                       height + "mm\" viewBox=\"0 0 " + width + " " + height + "\">\n<rect width=\"" + width +
                       "\" height=\"" + height + "\" fill=\"white\"/>\n";
    for (const cv::Rect2d& r : layout.squares) text += svgRectangle(r);
    for (const cv::Point2d& p : layout.dots) {
        text += "<circle cx=\"" + number(p.x) + "\" cy=\"" + number(p.y) + "\" r=\"" +
                number(layout.dotRadius) + "\"/>\n";
    }
    for (const cv::Rect2d& r : layout.scaleBar) text += svgRectangle(r);
    if (!layout.text.empty()) {
        text += "<text x=\"" + number(layout.textPlace.x) + "\" y=\"" + number(layout.textPlace.y) +
                "\" font-family=\"Helvetica, Arial, sans-serif\" font-size=\"" + number(layout.textHeight) +
                "\">" + layout.text + "</text>\n";
    }
    return text + "</svg>\n";
}

std::string targetToPdf(const TTarget& target, const TTargetPage& page) {
    Layout layout;
    if (!plane::layOut(target, page, layout, "targetToPdf")) return {};
    PdfCanvas canvas(page.height);
    for (const cv::Rect2d& r : layout.squares) canvas.rectangle(r);
    for (const cv::Point2d& p : layout.dots) canvas.disk(p, layout.dotRadius);
    for (const cv::Rect2d& r : layout.scaleBar) canvas.rectangle(r);
    if (!layout.text.empty()) canvas.text(layout.textPlace, layout.textHeight, layout.text);
    return pdfFile(page, canvas.commands());
}

}  // namespace orx
