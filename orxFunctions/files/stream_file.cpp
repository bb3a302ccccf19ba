#include "orxFunctions/files/stream_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <utility>
#include <vector>

#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/file_access_internal.h"

namespace orx {
namespace {

constexpr std::uint64_t kElementBytes = 8;
constexpr std::size_t kTextBytes = 255;
constexpr std::uint64_t kMostBytesUnproven = std::uint64_t{1} << 30U;
constexpr std::uint64_t kMostElements = std::uint64_t{1} << 59U;

bool writeBytes(std::FILE* file, const void* bytes, std::size_t size) {
    return size == 0 || std::fwrite(bytes, 1, size, file) == size;
}

bool writeZeros(std::FILE* file, std::uint64_t count) {
    const std::vector<char> zeros(static_cast<std::size_t>(std::min<std::uint64_t>(count, 1U << 20U)));
    while (count > 0) {
        const std::size_t part = static_cast<std::size_t>(std::min<std::uint64_t>(count, zeros.size()));
        if (!writeBytes(file, zeros.data(), part)) return false;
        count -= part;
    }
    return true;
}

bool writePair(std::FILE* file, std::int32_t first, std::int32_t second) {
    const std::int32_t pair[] = {first, second};
    return writeBytes(file, pair, sizeof pair);
}

// As many bytes as asked for, from the first element on; zeros beyond the end of the buffer that the matrix
// views.
bool writeElements(std::FILE* file, const cv::Mat& img, std::uint64_t size) {
    const auto available = static_cast<std::uint64_t>(img.dataend - img.data);
    const std::uint64_t present = std::min(size, available);
    return writeBytes(file, img.data, static_cast<std::size_t>(present)) && writeZeros(file, size - present);
}

bool writeText(std::FILE* file, const std::string& text) {
    std::array<char, kTextBytes> field = {};
    std::memcpy(field.data(), text.data(), std::min(text.size(), field.size()));
    return writeBytes(file, field.data(), field.size());
}

// What a short file lacks stays as it was; ferror tells whether it could not be read instead.
void readBytes(std::FILE* file, void* bytes, std::size_t size) {
    if (size == 0 || std::ferror(file) != 0) return;
    [[maybe_unused]] const std::size_t read = std::fread(bytes, 1, size, file);
}

struct Pair {
    std::int32_t first = 0;
    std::int32_t second = 0;
};

Pair readPair(std::FILE* file) {
    std::int32_t values[2] = {0, 0};
    readBytes(file, &values[0], sizeof values[0]);
    readBytes(file, &values[1], sizeof values[1]);
    return {values[0], values[1]};
}

std::string readText(std::FILE* file) {
    std::array<char, kTextBytes> field = {};
    readBytes(file, field.data(), field.size());
    return {field.begin(), std::find(field.begin(), field.end(), '\0')};
}

// Limited to what no file holds: two sizes of 31 bits and the 3 bits of an element don't fit into 64.
std::uint64_t bytesOf(std::int64_t rows, std::int64_t cols) {
    return std::min(static_cast<std::uint64_t>(rows * cols), kMostElements) * kElementBytes;
}

bool maySpend(std::uint64_t bytes, const std::filesystem::path& path) {
    if (bytes <= kMostBytesUnproven) return true;
    if (bytes >= kMostElements * kElementBytes) return false;
    std::error_code error;
    const std::uintmax_t length = std::filesystem::file_size(path, error);
    return !error && length >= bytes;
}

bool allocate(const Pair& size, const std::filesystem::path& path, cv::Mat& matrix) {
    if (size.first < 0 || size.second < 0 || !maySpend(bytesOf(size.first, size.second), path)) {
        return refuse(rcFileFormat, "streamFile2Image", "%d rows of %d numbers can't be in the file: %s",
                      size.first, size.second, platform::shownName(path).c_str());
    }
    try {
        matrix = cv::Mat::zeros(size.first, size.second, CV_64FC1);
        return true;
    } catch (const std::exception&) {
        return refuse(rcMemory, "streamFile2Image", "no memory for %d rows of %d numbers", size.first,
                      size.second);
    }
}

}  // namespace

bool image2StreamFile(cv::Mat img, cv::Size size, std::string path, std::string text) {
    if (img.data == nullptr || img.dims == 0 || img.total() == 0)
        return refuse(rcEmptyImage, "image2StreamFile");
    const std::filesystem::path target = platform::toPath(path);
    platform::File file = platform::openToWrite(target);
    if (!file) return refuseToWrite("image2StreamFile", target);
    const bool written = writePair(file.get(), img.rows, img.cols) &&
                         writeElements(file.get(), img, bytesOf(img.rows, img.cols)) &&
                         writePair(file.get(), size.width, size.height) && writeText(file.get(), text);
    return platform::closeWritten(std::move(file), target, written) ||
           refuseToWrite("image2StreamFile", target);
}

bool streamFile2Image(std::string path, cv::Mat& img, cv::Size& size, std::string& text) {
    const std::filesystem::path source = platform::toPath(path);
    const platform::File file = platform::openToRead(source);
    if (!file) return refuseToRead("streamFile2Image", source);
    const Pair dimensions = readPair(file.get());
    cv::Mat matrix;
    if (!allocate(dimensions, source, matrix)) return false;
    const std::uint64_t bytes = bytesOf(dimensions.first, dimensions.second);
    readBytes(file.get(), matrix.data, static_cast<std::size_t>(bytes));
    const Pair stored = readPair(file.get());
    std::string storedText = readText(file.get());
    if (std::ferror(file.get()) != 0) return refuseToRead("streamFile2Image", source);
    img = matrix;
    size = cv::Size(stored.first, stored.second);
    text = std::move(storedText);
    return true;
}

}  // namespace orx
