#include "inspection/report/table.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>

#include "inspection/report/utf8.h"

namespace inspection {
namespace {

using Row = std::vector<std::string>;

std::string percentText(double ratio) { return fixedText(100.0 * ratio, 0) + " %"; }

Row featureRow(std::size_t number, const Feature& feature) {
    const bool isCircle = feature.shape == Shape::kCircle;
    const Deviations& u = feature.deviations;
    return {std::to_string(number),
            nameOf(feature.shape),
            uncertainText(feature.center.x, u.x, 2),
            uncertainText(feature.center.y, u.y, 2),
            feature.isRound() ? uncertainText(feature.radius, u.radius, 2) : "",
            isCircle ? "" : uncertainText(feature.angle, u.angle, 2),
            isCircle ? "" : uncertainText(feature.length, u.length, 2),
            isCircle ? "" : uncertainText(feature.width, u.width, 2),
            std::to_string(feature.contourPoints),
            percentText(feature.inlierRatio),
            fixedText(feature.meanResidual, 2),
            feature.weak ? "weak" : ""};
}

Row truthRow(const TruthError& error) {
    const bool isCircle = error.shape == Shape::kCircle;
    const bool found = error.feature >= 0;
    const auto number = [&](bool shown, double value) { return found && shown ? fixedText(value, 3) : ""; };
    return {isCircle ? "disk" : "bar",           fixedText(error.center.x, 2),
            fixedText(error.center.y, 2),        found ? std::to_string(error.feature + 1) : "missed",
            number(isCircle, error.centerError), number(isCircle, error.radiusError),
            number(!isCircle, error.angleError), number(!isCircle, error.offsetError),
            number(!isCircle, error.widthError)};
}

void printTruth(std::ostream& out, const std::vector<TruthError>& truth) {
    std::vector<Row> rows{{"truth", "x", "y", "feature", "centre", "radius", "angle", "offset", "width"}};
    TruthError worst;
    for (const TruthError& error : truth) {
        rows.push_back(truthRow(error));
        worst.centerError = std::max(worst.centerError, error.centerError);
        worst.radiusError = std::max(worst.radiusError, std::abs(error.radiusError));
        worst.angleError = std::max(worst.angleError, std::abs(error.angleError));
        worst.offsetError = std::max(worst.offsetError, error.offsetError);
        worst.widthError = std::max(worst.widthError, std::abs(error.widthError));
    }
    rows.push_back({"largest", "", "", "", fixedText(worst.centerError, 3), fixedText(worst.radiusError, 3),
                    fixedText(worst.angleError, 3), fixedText(worst.offsetError, 3),
                    fixedText(worst.widthError, 3)});
    out << "\nErrors against the truth (pixels, degrees)\n";
    printAligned(out, rows);
}

void printSummary(std::ostream& out, const std::vector<Feature>& features) {
    constexpr double kGood = 2.0;
    const auto isCircle = [](const Feature& f) { return f.shape == Shape::kCircle; };
    const auto circles = std::count_if(features.begin(), features.end(), isCircle);
    const auto good = std::count_if(features.begin(), features.end(),
                                    [&](const Feature& f) { return isCircle(f) && f.meanResidual < kGood; });
    const auto lines = std::count_if(features.begin(), features.end(),
                                     [](const Feature& f) { return f.shape == Shape::kLine; });
    const auto ellipses = static_cast<std::ptrdiff_t>(features.size()) - circles - lines;
    out << circles << (circles == 1 ? " circle" : " circles") << " (" << good
        << " with a mean residual below 2 px), " << lines << (lines == 1 ? " line" : " lines");
    if (ellipses > 0) out << ", " << ellipses << (ellipses == 1 ? " ellipse" : " ellipses");
    out << "\n";
}

void printShapes(std::ostream& out, const ImageResult& result, const std::string& method) {
    out << ", " << method << " level " << result.level << ", " << (result.brightObjects ? "bright" : "dark")
        << " objects\n";
    std::vector<Row> rows{
        {"#", "shape", "x", "y", "radius", "angle", "length", "width", "points", "inliers", "residual", ""}};
    for (std::size_t i = 0; i < result.features.size(); ++i)
        rows.push_back(featureRow(i + 1, result.features[i]));
    if (rows.size() > 1) printAligned(out, rows);
    printSummary(out, result.features);
    if (result.hasTruth) printTruth(out, result.truth);
}

}  // namespace

std::string fixedText(double value, int decimals) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(decimals) << value;
    const std::string plain = text.str();
    const bool isZero = plain.find_first_not_of("-0.") == std::string::npos;
    return isZero && plain.front() == '-' ? plain.substr(1) : plain;
}

std::string uncertainText(double value, double deviation, int decimals) {
    if (!(deviation > 0.0)) return fixedText(value, decimals);
    return fixedText(value, 3) + " ± " + fixedText(deviation, 3);
}

void printAligned(std::ostream& out, const std::vector<std::vector<std::string>>& rows) {
    std::vector<int> widths;
    for (const Row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()), 0);
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += std::string(static_cast<std::size_t>(widths[i] - displayWidth(row[i]) + 2), ' ') + row[i];
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << "\n";
    }
}

void printResult(std::ostream& out, const ImageResult& result, const std::string& method) {
    if (!result.measured()) {
        out << "\n" << result.name << ": not measured: " << result.problemText() << "\n";
        return;
    }
    out << "\n" << result.name << ": " << result.size.width << " x " << result.size.height << " pixels";
    if (result.hasShapes)
        printShapes(out, result, method);
    else
        out << "\n";
    for (const Section& section : result.sections) {
        out << "\n" << section.title << (section.note.empty() ? "" : ": ") << section.note << "\n";
        printAligned(out, section.rows);
    }
}

}  // namespace inspection
