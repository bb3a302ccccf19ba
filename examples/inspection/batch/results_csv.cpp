#include "inspection/batch/results_csv.h"

#include <cmath>
#include <locale>
#include <sstream>

#include "inspection/report/utf8.h"

namespace inspection {
namespace {

constexpr int kDigits = 10;

std::string cell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + "\"";
}

std::string number(double value) {
    if (!std::isfinite(value)) return "";
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(kDigits);
    text << value;
    return text.str();
}

}  // namespace

std::string csvHeader(const orx::TRecipe& recipe) {
    std::string header = "picture,verdict,problem";
    for (const orx::TRecipeTarget& target : recipe.targets()) {
        const std::string name = cleanUtf8(target.name);
        header += "," + cell(target.unit.empty() ? name : name + " (" + target.unit + ")") + "," +
                  cell(name + " deviation") + "," + cell(name + " verdict");
    }
    return header;
}

std::string csvRow(const PictureRecord& record) {
    std::string row = cell(record.name) + "," + orx::verdictText(record.result.verdict) + "," +
                      cell(cleanUtf8(record.result.problem));
    for (const orx::TRecipeValue& value : record.result.values)
        row += "," + (value.measured ? number(value.value) + "," + number(value.deviation) : ",") + "," +
               orx::verdictText(value.verdict);
    return row;
}

}  // namespace inspection
