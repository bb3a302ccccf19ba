#include "inspection/batch/truth_report.h"

#include <cmath>
#include <cstdio>

#include "inspection/batch/run_summary.h"
#include "inspection/report/table.h"
#include "inspection/report/utf8.h"

namespace inspection {
namespace {

constexpr std::size_t kMostColumnsTold = 5;

// Two significant digits, the rest is chance.
std::string rounded(double value) {
    if (!std::isfinite(value)) return "";
    char text[32];
    std::snprintf(text, sizeof text, "%.2g", value);
    return text;
}

std::string twoDecimals(double value) { return std::isfinite(value) ? fixedText(value, 2) : ""; }

std::vector<std::string> heading() {
    return {"value", "rms error", "largest",     "mean error",  "error / stated",
            "right", "undecided", "wrong: pass", "wrong: fail", "not measured"};
}

std::vector<std::string> row(const std::string& name, const ValueCheck* check, const VerdictCheck& verdicts) {
    std::vector<std::string> cells{name, "", "", "", ""};
    if (check != nullptr)
        cells = {name, rounded(check->rms()), rounded(check->largest()), rounded(check->mean()),
                 twoDecimals(check->rmsOverStated())};
    for (const std::int64_t count : {verdicts.right, verdicts.undecided, verdicts.wronglyPassed,
                                     verdicts.wronglyFailed, verdicts.notMeasured})
        cells.push_back(std::to_string(count));
    return cells;
}

std::vector<std::vector<std::string>> rows(const orx::TRecipe& recipe, const TruthComparison& truth) {
    std::vector<std::vector<std::string>> all{heading()};
    for (std::size_t i = 0; i < truth.values().size(); ++i) {
        const orx::TRecipeTarget& target = recipe.targets()[i];
        const std::string name = cleanUtf8(target.name);
        if (truth.values()[i].count() > 0)
            all.push_back(row(target.unit.empty() ? name : name + " (" + target.unit + ")",
                              &truth.values()[i], truth.values()[i].verdicts));
    }
    if (truth.goodParts() + truth.badParts() > 0) all.push_back(row("the part", nullptr, truth.parts()));
    return all;
}

// "200 pictures whose truth is known: 190 good parts, 10 bad ones; 3 pictures are not in the table"
std::string overview(const TruthComparison& truth) {
    std::string text = std::to_string(truth.pictures()) + " pictures whose truth is known";
    if (truth.goodParts() + truth.badParts() > 0)
        text += ": " + std::to_string(truth.goodParts()) + " good parts, " +
                std::to_string(truth.badParts()) + " bad ones";
    if (truth.unknown() > 0)
        text += "; " + std::to_string(truth.unknown()) + " pictures are not in the table";
    return text;
}

// The columns that were passed over: one of them may be a value's, misspelt. Empty for none.
std::string ignoredColumns(const TruthTable& table) {
    std::string text;
    for (std::size_t i = 0; i < table.ignored().size() && i < kMostColumnsTold; ++i)
        text += (i > 0 ? ", \"" : "\"") + cleanUtf8(table.ignored()[i]) + "\"";
    if (table.ignored().size() > kMostColumnsTold)
        text += " and " + std::to_string(table.ignored().size() - kMostColumnsTold) + " more";
    return text;
}

Json::Value numberOrNull(double value) { return std::isfinite(value) ? Json::Value(value) : Json::Value(); }

Json::Value jsonOf(const VerdictCheck& check) {
    Json::Value value;
    value["right"] = static_cast<Json::Int64>(check.right);
    value["undecided"] = static_cast<Json::Int64>(check.undecided);
    value["wronglyPassed"] = static_cast<Json::Int64>(check.wronglyPassed);
    value["wronglyFailed"] = static_cast<Json::Int64>(check.wronglyFailed);
    value["notMeasured"] = static_cast<Json::Int64>(check.notMeasured);
    return value;
}

}  // namespace

void printTruth(std::ostream& out, const orx::TRecipe& recipe, const TruthComparison& truth) {
    out << "\nbeside the truth, " << overview(truth) << "\n";
    const std::string ignored = ignoredColumns(truth.table());
    if (!ignored.empty()) out << "no value is called " << ignored << ": passed over\n";
    printAligned(out, rows(recipe, truth));
    for (const std::string& sentence : truth.wrong()) out << sentence << "\n";
}

void writeTruthHtml(std::ostream& out, const orx::TRecipe& recipe, const TruthComparison& truth) {
    out << "<h2>Beside the truth</h2><p>" << overview(truth) << ".</p><div class='scroll'><table>\n";
    const char* tag = "th";
    for (const std::vector<std::string>& cells : rows(recipe, truth)) {
        out << "<tr>";
        for (const std::string& cell : cells)
            out << "<" << tag << ">" << escapeHtml(cell) << "</" << tag << ">";
        out << "</tr>\n";
        tag = "td";
    }
    out << "</table></div><p class='soft'>Errors are measured minus true. Error / stated: root mean square "
           "of "
           "the errors over their stated standard uncertainties, 1 where those are right.</p>\n";
    for (const std::string& sentence : truth.wrong())
        out << "<p class='note'>" << escapeHtml(sentence) << "</p>\n";
}

Json::Value truthJson(const TruthComparison& truth) {
    Json::Value value;
    value["pictures"] = static_cast<Json::Int64>(truth.pictures());
    value["notInTheTable"] = static_cast<Json::Int64>(truth.unknown());
    value["goodParts"] = static_cast<Json::Int64>(truth.goodParts());
    value["badParts"] = static_cast<Json::Int64>(truth.badParts());
    value["verdicts"] = jsonOf(truth.parts());
    return value;
}

Json::Value truthJson(const ValueCheck& check) {
    Json::Value value;
    value["count"] = static_cast<Json::Int64>(check.count());
    value["rmsError"] = numberOrNull(check.rms());
    value["largestError"] = numberOrNull(check.largest());
    value["meanError"] = numberOrNull(check.mean());
    value["rmsErrorOverStated"] = numberOrNull(check.rmsOverStated());
    value["verdicts"] = jsonOf(check.verdicts);
    return value;
}

}  // namespace inspection
