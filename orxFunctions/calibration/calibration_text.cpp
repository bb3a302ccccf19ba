#include "orxFunctions/calibration/calibration_text_internal.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
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
