#include "inspection/run/image_source.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <system_error>

#include "inspection/report/utf8.h"
#include "orxFunctions/orxfunctions.h"
#include "support/picture_file.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 13> kExtensions = {".bmp", ".dib", ".jp2", ".jpe", ".jpeg", ".jpg", ".pbm",
                                                     ".pgm", ".png", ".pnm", ".ppm", ".tif",  ".tiff"};

void listFolder(const fs::path& folder, std::vector<ImageSource>& sources) {
    std::error_code failure;
    std::vector<fs::path> files;
    fs::directory_iterator entry(folder, failure);
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        std::error_code ignored;
        if (isPictureName(entry->path()) && !entry->is_directory(ignored)) files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) sources.push_back({file, ""});
    if (failure)
        sources.push_back({folder, "the folder can't be read: " + failure.message()});
    else if (files.empty())
        sources.push_back({folder, "no picture in this folder"});
}

constexpr const char* kNoPermission = "no permission to read it";

// Why the file can't be opened, found before opening it: reading a pipe would wait for ever.
std::string problemOf(const fs::path& path) {
    std::error_code failure;
    const fs::file_status status = fs::status(path, failure);
    if (status.type() == fs::file_type::not_found) return "no such file";
    if (failure) return failure == std::errc::permission_denied ? kNoPermission : failure.message();
    if (fs::is_directory(status)) return "is a folder";
    if (!fs::is_regular_file(status)) return "not a regular file";
    return "";
}

// A JPEG file without its end, whose missing rows decoders make up. Markers and segments: ITU-T T.81, annex
// B.
bool isCutJpeg(const std::vector<uchar>& bytes) {
    if (bytes.size() < 3 || bytes[0] != 0xFF || bytes[1] != 0xD8 || bytes[2] != 0xFF) return false;
    std::size_t i = 2;
    while (i + 1 < bytes.size()) {
        const unsigned marker = bytes[i + 1];
        if (bytes[i] != 0xFF || marker == 0xFF) {  // coded data, or a byte that fills
            ++i;
        } else if (marker == 0xD9) {
            return false;
        } else if (marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8)) {  // stands alone
            i += 2;
        } else if (i + 3 < bytes.size()) {  // what a segment holds, such as a thumbnail, is no marker
            i += std::size_t{2} + (static_cast<std::size_t>(bytes[i + 2]) << 8U) + bytes[i + 3];
        } else {
            break;
        }
    }
    return true;
}

cv::Mat decode(const std::vector<uchar>& bytes, int flags, std::string& problem) {
    cv::Mat grey = orx::decodePicture(bytes, flags);
    if (!grey.empty()) return grey;
    const orx::TRefusal refusal = orx::lastRefusal();
    if (refusal.code == orx::rcFileFormat)
        problem = "not an image, or of a kind that can't be read";
    else if (refusal.code == orx::rcFailed)
        problem = refusal.text;
    else  // OpenCV's limit of pixels, or no memory
        problem = "damaged, or too large to read";
    return {};
}

cv::Mat read(const fs::path& path, int flags, std::string& problem) {
    problem = problemOf(path);
    if (!problem.empty()) return {};
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        problem = errno == EACCES ? kNoPermission : std::string("can't be opened: ") + std::strerror(errno);
        return {};
    }
    std::error_code ignored;
    const std::uintmax_t size = fs::file_size(path, ignored);
    const std::vector<uchar> bytes = host::bytesOf(file, ignored ? 0 : size);
    if (file.bad()) {
        problem = "can't be read to its end";
        return {};
    }
    if (bytes.empty()) {
        problem = "the file is empty";
        return {};
    }
    if (isCutJpeg(bytes)) {
        problem = "cut off: the end of the file is missing";
        return {};
    }
    return decode(bytes, flags, problem);
}

}  // namespace

bool isPictureName(const fs::path& path) {
    std::string extension = path.extension().u8string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

std::vector<ImageSource> listSources(const std::vector<std::string>& inputs) {
    std::vector<ImageSource> sources;
    for (const std::string& input : inputs) {
        const fs::path path = fs::u8path(input);
        std::error_code ignored;
        if (fs::is_directory(path, ignored))
            listFolder(path, sources);
        else
            sources.push_back({path, ""});
    }
    return sources;
}

cv::Mat readGrey(const fs::path& path, std::string& problem) {
    return read(path, cv::IMREAD_GRAYSCALE, problem);
}

cv::Mat readDeepGrey(const fs::path& path, std::string& problem) {
    return read(path, cv::IMREAD_GRAYSCALE | cv::IMREAD_ANYDEPTH, problem);
}

cv::Mat readPicture(const fs::path& path, int flags, std::string& problem) {
    return read(path, flags, problem);
}

std::string displayName(const fs::path& path) { return cleanUtf8(path.u8string()); }

}  // namespace inspection
