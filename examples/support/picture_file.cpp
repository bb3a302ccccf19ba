#include "support/picture_file.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <system_error>

#include "orxFunctions/orxfunctions.h"

namespace host {
namespace {

constexpr std::uintmax_t kMostBytes = 0x7FFFFFFF;  // that decodePicture takes

}  // namespace

cv::Mat readPicture(const std::filesystem::path& file, int flags) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) return {};
    std::ifstream stream(file, std::ios::binary);
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (!stream || error || size > kMostBytes) return {};
    const std::vector<unsigned char> bytes = bytesOf(stream, size);
    return stream.bad() || bytes.size() > kMostBytes ? cv::Mat() : orx::decodePicture(bytes, flags);
}

bool writePicture(const std::filesystem::path& file, const cv::Mat& picture,
                  const std::vector<int>& parameters) {
    std::error_code ignored;
    // A pipe could be waited for without end.
    if (std::filesystem::exists(file, ignored) && !std::filesystem::is_regular_file(file, ignored))
        return false;
    std::vector<uchar> bytes;
    if (!orx::encodePicture(file.extension().u8string(), picture, bytes, parameters)) return false;
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream.fail()) return true;
    std::filesystem::remove(file, ignored);  // half a picture helps nobody
    return false;
}

std::vector<unsigned char> bytesOf(std::istream& stream, std::uintmax_t expected) {
    constexpr std::size_t kAtOnce = std::size_t{1} << 20U;
    std::vector<unsigned char> bytes;
    std::size_t more = static_cast<std::size_t>(std::min<std::uintmax_t>(expected, 64 * kAtOnce)) + 1;
    do {
        const std::size_t before = bytes.size();
        bytes.resize(before + more);
        stream.read(reinterpret_cast<char*>(bytes.data() + before), static_cast<std::streamsize>(more));
        bytes.resize(before + static_cast<std::size_t>(stream.gcount()));
        more = kAtOnce;
    } while (stream);
    return bytes;
}

}  // namespace host
