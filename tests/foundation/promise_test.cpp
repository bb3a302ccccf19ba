// The promise that nothing throws for bad input, beside its exceptions: the list in orxfunctions.h against
// what every public header and every source says. The tests of the functions themselves provoke each.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Names = std::set<std::string>;

const std::filesystem::path kRoot = ORX_SOURCE_FOLDER;

std::string textOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The functions of each header in the table of orxfunctions.h: "//     name   folder/header.h   what
// happens".
std::map<std::string, Names> listedByHeader() {
    const std::string text = textOf(kRoot / "orxFunctions/orxfunctions.h");
    static const std::regex kRow(
        R"(// {5}([~A-Za-z0-9]+) +([a-z_]+/[a-z_0-9]+\.h)  +.*(exceptions|ends the process))");
    std::map<std::string, Names> listed;
    for (std::sregex_iterator at(text.begin(), text.end(), kRow), end; at != end; ++at)
        listed["orxFunctions/" + (*at)[2].str()].insert((*at)[1]);
    return listed;
}

std::vector<std::string> linesOf(const std::filesystem::path& path) {
    std::istringstream text(textOf(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

// A header on one line, without the marks of its comments: sentences run over several lines.
std::string flattened(const std::vector<std::string>& lines) {
    std::string flat;
    for (const std::string& line : lines) {
        const std::size_t from = line.find_first_not_of(" /*");
        if (from != std::string::npos) flat += line.substr(from) + ' ';
    }
    return flat;
}

std::string without(std::string text, const std::string& phrase) {
    for (std::size_t at = 0; (at = text.find(phrase, at)) != std::string::npos;)
        text.erase(at, phrase.size());
    return text;
}

bool hasAnyOf(const std::string& text, const std::vector<const char*>& phrases) {
    return std::any_of(phrases.begin(), phrases.end(),
                       [&](const char* phrase) { return text.find(phrase) != std::string::npos; });
}

// Whether a header speaks of exceptions or of the end of the process, other than to rule them out.
bool admitsTrouble(const std::filesystem::path& header) {
    std::string text = flattened(linesOf(header));
    for (const char* harmless :
         {"Nothing throws", "Neither throws", "must not throw", "with the exception of",
          "One that throws is reported", "what it throws is told", "callback that throws is told",
          "A C++ exception that comes out of the driver is a refusal of it, with the exception's text"})
        text = without(text, harmless);
    return hasAnyOf(text, {"throw", "xception", "assertion error", "ends the process", "end the process",
                           "terminates", "aborts"});
}

TEST(Promise, TheListNamesEveryHeaderThatAdmitsAnException) {
    Names listed;
    for (const auto& [header, functions] : listedByHeader()) listed.insert(header);
    Names admitting;
    const std::vector<std::string> headers = linesOf(ORX_PUBLIC_HEADERS);
    EXPECT_GT(headers.size(), 50U);
    for (const std::string& header : headers) {
        if (header != "orxFunctions/orxfunctions.h" && admitsTrouble(kRoot / header))
            admitting.insert(header);
    }
    EXPECT_EQ(admitting, listed);
}

TEST(Promise, EachFunctionOfTheListIsDeclaredWhereItSays) {
    EXPECT_FALSE(listedByHeader().empty());
    for (const auto& [header, functions] : listedByHeader()) {
        const std::string text = textOf(kRoot / header);
        for (const std::string& name : functions)
            EXPECT_THAT(text, testing::HasSubstr(" " + name + "(")) << header;
    }
}

TEST(Promise, TheGuidesNameTheSameFunctions) {
    for (const char* guide : {"docs/guides/overview.md", "CONTRIBUTING.md"}) {
        const std::string text = textOf(kRoot / guide);
        const std::size_t from = text.find("Nothing throws for bad input");
        ASSERT_NE(from, std::string::npos) << guide;
        const std::string paragraph = text.substr(from, text.find("\n\n", from) - from);
        for (const auto& [header, functions] : listedByHeader()) {
            for (const std::string& name : functions)
                EXPECT_THAT(paragraph, testing::HasSubstr("`" + name + "`")) << guide;
        }
    }
}

// Of its own the library throws in three places: pose.cpp is on the list, and calibration_text.cpp and
// zeros.h say that there is no memory left, as containers do.
TEST(Promise, NoOtherSourceThrowsOrEndsTheProcess) {
    Names found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kRoot / "orxFunctions")) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".cpp" && extension != ".h") continue;
        for (const std::string& line : linesOf(entry.path())) {
            if (hasAnyOf(line.substr(0, line.find("//")),
                         {"throw ", "throw;", "cv::error(", "CV_Error", "CV_Assert", "std::exit(", "_Exit(",
                          "quick_exit(", "std::abort(", "std::terminate("}))
                found.insert(entry.path().filename().string());
        }
    }
    EXPECT_EQ(found, (Names{"calibration_text.cpp", "pose.cpp", "zeros.h"}));
}

// A code and the public function that refuses with it, as the sources name them: refuse(rcX, "f" and the
// checks of images, which stand for three codes.
using Refusals = std::set<std::pair<std::string, std::string>>;

Refusals refusalsOf(const std::string& source) {
    Refusals found;
    static const std::regex kRefuse(R"rx(refuse\(\s*(?:orx::)?(rc[A-Z]\w*),\s*"(~?\w+)")rx");
    static const std::regex kTakes(R"rx(takes(Image|Bytes|Picture)\([^;]*?,\s*"(~?\w+)"\))rx");
    const std::sregex_iterator end;
    for (std::sregex_iterator at(source.begin(), source.end(), kRefuse); at != end; ++at)
        found.insert({(*at)[1], (*at)[2]});
    for (std::sregex_iterator at(source.begin(), source.end(), kTakes); at != end; ++at) {
        found.insert({"rcEmptyImage", (*at)[2]});
        found.insert({"rcImageDimensions", (*at)[2]});
        if ((*at)[1] != "Image") found.insert({"rcImageType", (*at)[2]});
    }
    return found;
}

Refusals refusalsOfTheLibrary() {
    Refusals found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kRoot / "orxFunctions")) {
        if (entry.path().extension() == ".cpp") found.merge(refusalsOf(textOf(entry.path())));
    }
    return found;
}

bool declares(const std::string& header, const std::string& function) {
    return std::regex_search(header, std::regex("(^|[^\\w.])" + function + "\\("));
}

TEST(Promise, EachCodeOfARefusalStandsInTheHeaderOfItsFunction) {
    std::vector<std::string> headers;
    for (const std::string& header : linesOf(ORX_PUBLIC_HEADERS)) {
        if (header != "orxFunctions/orxfunctions.h") headers.push_back(textOf(kRoot / header));
    }
    const Refusals refusals = refusalsOfTheLibrary();
    EXPECT_GT(refusals.size(), 10U);
    for (const auto& [code, function] : refusals) {
        const bool told = std::any_of(headers.begin(), headers.end(),
                                      [&, &c = code, &f = function](const std::string& header) {
                                          return declares(header, f) && header.find(c) != std::string::npos;
                                      });
        EXPECT_TRUE(told) << function << " refuses with " << code
                          << ", which no header that declares it names";
    }
}

TEST(Promise, EachCodeThatAHeaderNamesExists) {
    const std::string codes = textOf(kRoot / "orxFunctions/foundation/refusal.h");
    static const std::regex kCode(R"(\brc[A-Z]\w*\b)");
    for (const std::string& header : linesOf(ORX_PUBLIC_HEADERS)) {
        const std::string text = textOf(kRoot / header);
        for (std::sregex_iterator at(text.begin(), text.end(), kCode), end; at != end; ++at)
            EXPECT_THAT(codes, testing::HasSubstr("    " + at->str() + " = ")) << header;
    }
}

}  // namespace
