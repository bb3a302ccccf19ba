#include "inspection/batch/truth_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <system_error>

#include "inspection/report/utf8.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostColumns = 10000;

std::string atLine(int line, const std::string& text) {
    return "line " + std::to_string(line) + ": " + cleanUtf8(text);
}

// Goes through the text once, cell by cell.
class CsvReader {
  public:
    explicit CsvReader(const std::string& text) : text_(text) {
        if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0) at_ = 3;
    }

    bool read(std::vector<CsvRow>& rows, std::string& problem) {
        while (at_ < text_.size()) {
            CsvRow row;
            row.line = line_;
            if (!readRow(row, problem)) return false;
            if (row.cells.size() == 1 && row.cells.front().empty()) continue;
            if (!rows.empty() && row.cells.size() != rows.front().cells.size()) {
                problem =
                    atLine(row.line, std::to_string(row.cells.size()) + " cells, where the first row has " +
                                         std::to_string(rows.front().cells.size()));
                return false;
            }
            rows.push_back(std::move(row));
        }
        return true;
    }

  private:
    bool readRow(CsvRow& row, std::string& problem) {
        for (;;) {
            std::string cell;
            const bool isQuoted = at_ < text_.size() && text_[at_] == '"';
            if (isQuoted ? !readQuoted(cell, problem) : !readPlain(cell, problem)) return false;
            row.cells.push_back(std::move(cell));
            if (row.cells.size() > kMostColumns) {
                problem = atLine(line_, "more than " + std::to_string(kMostColumns) + " cells");
                return false;
            }
            if (at_ >= text_.size()) return true;
            if (text_[at_++] == ',') continue;
            // The end of a line, of which the first byte was taken.
            if (text_[at_ - 1] == '\r' && at_ < text_.size() && text_[at_] == '\n') ++at_;
            ++line_;
            return true;
        }
    }

    bool readPlain(std::string& cell, std::string& problem) {
        const std::size_t end = std::min(text_.find_first_of(",\r\n\"", at_), text_.size());
        cell = text_.substr(at_, end - at_);
        at_ = end;
        if (end == text_.size() || text_[end] != '"') return true;
        problem = atLine(line_, "a quotation mark within a cell that does not begin with one");
        return false;
    }

    bool readQuoted(std::string& cell, std::string& problem) {
        const int first = line_;
        for (++at_; at_ < text_.size(); ++at_) {
            if (text_[at_] != '"') {
                if (text_[at_] == '\n') ++line_;
                cell += text_[at_];
            } else if (at_ + 1 < text_.size() && text_[at_ + 1] == '"') {
                cell += text_[at_++];
            } else {
                ++at_;
                const bool ends =
                    at_ == text_.size() || std::string(",\r\n").find(text_[at_]) != std::string::npos;
                if (!ends) problem = atLine(line_, "something follows the quotation mark that ends a cell");
                return ends;
            }
        }
        problem = atLine(first, "a quotation mark that is never closed");
        return false;
    }

    const std::string& text_;
    std::size_t at_ = 0;
    int line_ = 1;
};

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// False for what is neither empty nor a finite number.
bool readNumber(const std::string& cell, double& value) {
    const std::string text = trimmed(cell);
    value = std::numeric_limits<double>::quiet_NaN();
    if (text.empty()) return true;
    const char* const end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, value);
    return failure == std::errc() && stop == end && std::isfinite(value);
}

std::string withForwardSlashes(std::string name) {
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

}  // namespace

bool parseCsv(const std::string& text, std::vector<CsvRow>& rows, std::string& problem) {
    rows.clear();
    return CsvReader(text).read(rows, problem);
}

bool TruthTable::read(const fs::path& file, const orx::TRecipe& recipe, std::string& problem) {
    std::error_code failure;
    if (!fs::is_regular_file(file, failure)) {
        problem = "there is no such file";
        return false;
    }
    const std::uintmax_t size = fs::file_size(file, failure);
    if (failure || size > kMostBytes) {
        problem = failure ? failure.message() : "it is larger than 64 MiB";
        return false;
    }
    std::ifstream stream(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream.is_open() || stream.bad()) {
        problem = "it can't be read";
        return false;
    }
    return parse(text, recipe, problem);
}

bool TruthTable::parse(const std::string& text, const orx::TRecipe& recipe, std::string& problem) {
    *this = TruthTable();
    std::vector<CsvRow> rows;
    if (!parseCsv(text, rows, problem)) return false;
    if (rows.empty()) {
        problem = "it is empty";
        return false;
    }
    if (!readHeader(rows.front(), recipe, problem)) return false;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (!readRow(rows[i], recipe.targets().size(), problem)) return false;
    }
    return true;
}

bool TruthTable::readHeader(const CsvRow& header, const orx::TRecipe& recipe, std::string& problem) {
    std::unordered_map<std::string, int> targets;
    for (std::size_t i = 0; i < recipe.targets().size(); ++i) {
        const orx::TRecipeTarget& target = recipe.targets()[i];
        // A value may be called as another one is with its unit: the plain name goes first.
        targets[target.name] = static_cast<int>(i);
        targets.emplace(target.name + (target.unit.empty() ? "" : " (" + target.unit + ")"),
                        static_cast<int>(i));
    }
    std::vector<bool> seen(recipe.targets().size(), false);
    bool hasPictures = false;
    for (std::size_t column = 0; column < header.cells.size(); ++column) {
        const std::string name = trimmed(header.cells[column]);
        targetOf_.push_back(-1);
        if (name == "picture" && !hasPictures) {
            hasPictures = true;
            pictureColumn_ = column;
            continue;
        }
        const auto found = targets.find(name);
        if (found == targets.end()) {
            ignored_.push_back(name);
            continue;
        }
        if (seen[static_cast<std::size_t>(found->second)]) {
            problem = atLine(header.line, "two columns for the value \"" + name + "\"");
            return false;
        }
        seen[static_cast<std::size_t>(found->second)] = true;
        targetOf_.back() = found->second;
    }
    if (!hasPictures)
        problem = atLine(header.line, "no column is called \"picture\"");
    else if (std::find(seen.begin(), seen.end(), true) == seen.end())
        problem = atLine(header.line, "no column is called as a value of the recipe");
    return problem.empty();
}

bool TruthTable::readRow(const CsvRow& row, std::size_t targets, std::string& problem) {
    const std::string picture = withForwardSlashes(row.cells[pictureColumn_]);
    if (picture.empty()) {
        problem = atLine(row.line, "no picture is named");
        return false;
    }
    std::vector<double> values(targets, std::numeric_limits<double>::quiet_NaN());
    for (std::size_t column = 0; column < row.cells.size(); ++column) {
        if (targetOf_[column] < 0) continue;
        if (!readNumber(row.cells[column], values[static_cast<std::size_t>(targetOf_[column])])) {
            problem = atLine(row.line, "\"" + row.cells[column].substr(0, 100) + "\" is no number");
            return false;
        }
    }
    if (truths_.emplace(picture, std::move(values)).second) return true;
    problem = atLine(row.line, "the picture \"" + picture + "\" stands twice");
    return false;
}

const std::vector<double>* TruthTable::of(const std::string& picture) const {
    const std::string name = withForwardSlashes(picture);
    for (std::size_t at = 0;;) {
        const auto found = truths_.find(name.substr(at));
        if (found != truths_.end()) return &found->second;
        const std::size_t slash = name.find('/', at);
        if (slash == std::string::npos) return nullptr;
        at = slash + 1;
    }
}

}  // namespace inspection
