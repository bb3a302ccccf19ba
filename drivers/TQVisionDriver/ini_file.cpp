#include "drivers/TQVisionDriver/ini_file.h"

#include <algorithm>

namespace vision {
namespace {

constexpr std::size_t kMostProblems = 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\v\f";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

bool isName(std::string_view text) {
    return !text.empty() && text.size() <= 64 && std::all_of(text.begin(), text.end(), isNameCharacter);
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

class Parser {
  public:
    void add(std::string_view line, int number) {
        if (line.empty() || line.front() == ';' || line.front() == '#') return;
        if (line.front() == '[') {
            addSection(line, number);
        } else {
            addEntry(line, number);
        }
    }

    void complain(const std::string& problem) {
        if (file.problems.size() < kMostProblems) file.problems.push_back(problem);
    }

    IniFile file;

  private:
    void addSection(std::string_view line, int number) {
        const std::string_view name =
            line.back() == ']' ? trimmed(line.substr(1, line.size() - 2)) : std::string_view();
        inSection_ = isName(name);
        if (inSection_) {
            file.sections.push_back({lowered(name), number, {}});
        } else {
            complain("line " + std::to_string(number) + ": no section name; the section is left out");
        }
    }

    void addEntry(std::string_view line, int number) {
        const std::size_t equals = line.find('=');
        const std::string_view key =
            equals == std::string_view::npos ? std::string_view() : trimmed(line.substr(0, equals));
        if (!isName(key)) {
            complain("line " + std::to_string(number) + ": neither a section nor \"key = value\"");
        } else if (!inSection_) {
            complain("line " + std::to_string(number) + ": belongs to no section");
        } else {
            file.sections.back().entries.push_back(
                {lowered(key), std::string(trimmed(line.substr(equals + 1))), number});
        }
    }

    bool inSection_ = false;
};

}  // namespace

IniFile parseIni(std::string_view text) {
    Parser parser;
    if (text.size() > kLargestIniText || text.find('\0') != std::string_view::npos) {
        parser.complain("not a settings file: too large, or not text");
        return parser.file;
    }
    if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        parser.add(trimmed(text.substr(0, end)), number);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parser.file;
}

}  // namespace vision
