#include "orxFunctions/calibration/calibration_text_internal.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include "orxFunctions/calibration/description_internal.h"
#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20U;
constexpr int kMostLevels = 800;
constexpr int kCompression = 3;
constexpr int kGzip = 16;  // added to the window's bits: with the head and the checksum of a .gz file

// As a .gz file holds it.
std::string compressed(const std::string& text) {
    z_stream stream{};
    if (deflateInit2(&stream, kCompression, Z_DEFLATED, MAX_WBITS + kGzip, MAX_MEM_LEVEL,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<z_stream, int (*)(z_stream*)> open(&stream, deflateEnd);
    std::string bytes(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));  // zlib reads it only
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    deflate(&stream, Z_FINISH);
    bytes.resize(bytes.size() - stream.avail_out);
    return bytes;
}

// OpenCV's reader of XML follows a null pointer where the text ends, or a NUL stands, within a tag. It reads
// no further than the NUL anyway; and a comment behind the end is within no tag.
void endOutsideOfTags(std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos || text[first] != '<') return;
    text.resize(std::min(text.find('\0'), text.size()));
    text += "\n<!-- -->\n";
}

bool isKeyBegin(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

// Nothing but spaces and a comment from `at` on.
bool isBlank(std::string_view line, std::size_t at) {
    const std::size_t first = line.find_first_not_of(' ', at);
    return first == std::string_view::npos || line[first] == '#' || line[first] == '\r';
}

// OpenCV's reader of YAML steps over three characters where the collection of a document ends, whatever
// stands there, and may then read for ever. They are "---" or "..." where each document is a mapping with its
// keys at the beginnings of lines, as OpenCV writes them.
bool endsDocumentsByMarks(std::string_view text) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);  // the byte order mark of UTF-8
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos || text[begin] != '%') return true;
    if (text.find('\0') != std::string_view::npos) return false;
    bool isBefore = true;  // the first key of a document
    for (std::size_t at = 0, end = 0; at < text.size(); at = end + 1) {
        end = std::min(text.find('\n', at), text.size());
        const std::string_view line = text.substr(at, end - at);
        const std::string_view mark = line.substr(0, 3);
        if (mark == "---" || mark == "...") {
            if (!isBlank(line, 3)) return false;
            isBefore = true;
        } else if (isBefore && !isBlank(line, 0) && line[line.find_first_not_of(' ')] != '%') {
            if (!isKeyBegin(line[0])) return false;
            isBefore = false;
        }
    }
    return true;
}

}  // namespace

bool readCalibrationText(const std::string& fileName, std::string& text, const char* function) {
    const std::filesystem::path path = platform::toPath(fileName);
    const platform::GzipFile file = platform::openGzip(path);
    if (!file) return refuseToRead(function, path);
    std::vector<char> block(std::size_t{1} << 16U);
    int count = 0;
    while ((count = gzread(file.get(), block.data(), static_cast<unsigned>(block.size()))) > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
        if (text.size() > kMostBytes)
            return refuse(rcFileFormat, function, "longer than 64 MiB: %s",
                          platform::shownName(path).c_str());
    }
    if (count < 0)
        return refuse(rcFileFormat, function, "it can't be inflated: %s", platform::shownName(path).c_str());
    endOutsideOfTags(text);
    if (!endsDocumentsByMarks(text))
        return refuse(rcFileFormat, function, "YAML whose documents are no mappings: %s",
                      platform::shownName(path).c_str());
    return nestingBound(text) <= kMostLevels ||
           refuse(rcFileFormat, function, "it nests deeper than %d levels: %s", kMostLevels,
                  platform::shownName(path).c_str());
}

platform::ReplaceResult writeCalibrationText(const std::string& fileName, const std::string& text) {
    const std::filesystem::path path = platform::toPath(fileName);
    return platform::replaceFile(
        path, path.extension() == ".gz" ? compressed(text) : platform::withPlatformLineEnds(text));
}

bool isMatrix(const cv::FileNode& node) {
    if (node.empty()) return true;
    if (!node.isMap()) return false;
    // OpenCV reads a matrix without "rows" as one of any number of dimensions. None of ours has more than
    // two.
    const cv::FileNode rows = node["rows"];
    const cv::FileNode cols = node["cols"];
    if (!rows.isInt() || !cols.isInt()) return false;
    const auto height = static_cast<std::int64_t>(static_cast<int>(rows));
    const auto width = static_cast<std::int64_t>(static_cast<int>(cols));
    return height >= 0 && width >= 0 && height * width <= static_cast<std::int64_t>(node["data"].size());
}

}  // namespace orx
