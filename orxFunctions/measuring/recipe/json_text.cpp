#include "orxFunctions/measuring/recipe/json_text.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <utility>

namespace orx::recipes {
namespace {

constexpr std::size_t kMostBytes = 4U << 20U;
constexpr int kMostDepth = 16;
// A value takes about a hundred bytes of memory, however short it is written.
constexpr std::ptrdiff_t kMostEntries = 300000;
constexpr std::size_t kMostProblems = 100;

// The length of the UTF-8 character at `p`, 0 where there is none (RFC 3629).
std::size_t characterLength(const unsigned char* p, std::size_t left) {
    const auto follows = [&](std::size_t i, unsigned low = 0x80U, unsigned high = 0xBFU) {
        return i < left && p[i] >= low && p[i] <= high;
    };
    const unsigned lead = p[0];
    if (lead < 0x80U) return 1;
    if (lead >= 0xC2U && lead <= 0xDFU) return follows(1) ? 2 : 0;
    if (lead >= 0xE0U && lead <= 0xEFU) {
        const bool good = follows(1, lead == 0xE0U ? 0xA0U : 0x80U, lead == 0xEDU ? 0x9FU : 0xBFU);
        return good && follows(2) ? 3 : 0;
    }
    if (lead >= 0xF0U && lead <= 0xF4U) {
        const bool good = follows(1, lead == 0xF0U ? 0x90U : 0x80U, lead == 0xF4U ? 0x8FU : 0xBFU);
        return good && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

// The offset of the first byte that is no UTF-8; the size where all is.
std::size_t firstBadByte(const std::string& text) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    std::size_t i = 0;
    while (i < text.size()) {
        const std::size_t length = characterLength(bytes + i, text.size() - i);
        if (length == 0) return i;
        i += length;
    }
    return i;
}

// jsoncpp tells its errors as "* Line 3, Column 5\n  What is wrong\n"; the first one is the one that counts.
void addSyntaxError(const std::string& errors, Problems& problems) {
    int line = 0;
    int column = 0;
    if (std::sscanf(errors.c_str(), "* Line %d, Column %d", &line, &column) != 2) {
        problems.addAtLine(0, "", "no JSON: " + errors.substr(0, 200));
        return;
    }
    const std::size_t from = std::min(errors.find('\n'), errors.size() - 1) + 1;
    std::string message = errors.substr(from, errors.find('\n', from) - from);
    message.erase(0, std::min(message.find_first_not_of(' '), message.size()));
    if (!isPlainText(message)) message = "a character that does not belong there";
    problems.addAtLine(line, "",
                       "no JSON at column " + std::to_string(column) + ": " + message.substr(0, 200));
}

bool parseChecked(const std::string& text, Json::Value& root, Problems& problems) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = kMostDepth;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &root, &errors)) return true;
        addSyntaxError(errors, problems);
    } catch (const std::exception&) {  // how jsoncpp refuses depth
        problems.addAtLine(0, "", "nested deeper than " + std::to_string(kMostDepth));
    }
    return false;
}

}  // namespace

Problems::Problems(const std::string& text) {
    lineStarts_.push_back(0);
    for (std::size_t i = 0; i < text.size() && i <= kMostBytes; ++i) {
        if (text[i] == '\n') lineStarts_.push_back(static_cast<std::ptrdiff_t>(i) + 1);
    }
}

int Problems::lineOf(std::ptrdiff_t offset) const {
    const auto next = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset);
    return static_cast<int>(next - lineStarts_.begin());
}

bool Problems::full() const { return found_.size() >= kMostProblems; }

void Problems::add(std::ptrdiff_t offset, const std::string& field, const std::string& text) {
    addAtLine(lineOf(offset), field, text);
}

void Problems::addAtLine(int line, const std::string& field, const std::string& text) {
    if (!full()) found_.push_back({line, field, text});
}

std::vector<TRecipeProblem> Problems::take() {
    const auto earlier = [](const TRecipeProblem& a, const TRecipeProblem& b) { return a.line < b.line; };
    std::stable_sort(found_.begin(), found_.end(), earlier);
    return std::move(found_);
}

bool isPlainText(const std::string& text) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20U || c == 0x7F; };
    return firstBadByte(text) == text.size() && std::none_of(text.begin(), text.end(), isControl);
}

bool parseJson(const std::string& text, Json::Value& root, Problems& problems) {
    if (text.size() > kMostBytes) {
        problems.addAtLine(0, "", "longer than 4 MiB");
        return false;
    }
    const std::size_t bad = firstBadByte(text);
    if (bad < text.size()) {
        problems.add(static_cast<std::ptrdiff_t>(bad), "", "not UTF-8");
        return false;
    }
    const auto isSeparator = [](char c) { return c == ',' || c == '[' || c == '{'; };
    if (std::count_if(text.begin(), text.end(), isSeparator) > kMostEntries) {
        problems.addAtLine(0, "", "more than " + std::to_string(kMostEntries) + " entries");
        return false;
    }
    return parseChecked(text, root, problems);
}

}  // namespace orx::recipes
