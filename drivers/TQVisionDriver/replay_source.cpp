#include "drivers/TQVisionDriver/replay_source.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <system_error>

#include "drivers/TQVisionDriver/trace.h"

namespace vision {
namespace {

constexpr std::uintmax_t kLargestFile = 1U << 29U;

bool isPictureName(const std::filesystem::path& file) {
    std::string extension = file.extension().u8string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    constexpr std::array kExtensions = {".bmp", ".jpeg", ".jpg",  ".pgm", ".png",
                                        ".ppm", ".tif",  ".tiff", ".webp"};
    return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

// Through memory, since cv::imread takes no wide file names. Empty when it is no picture.
cv::Mat decoded(const std::filesystem::path& file) {
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(file, failed);
    if (failed || size == 0 || size > kLargestFile) return {};
    std::ifstream stream(file, std::ios::binary);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
    stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    if (bytes.empty()) return {};
    try {
        return cv::imdecode(bytes, cv::IMREAD_ANYCOLOR);
    } catch (const cv::Exception& failure) {
        trace(file.u8string() + ": " + failure.what());
        return {};
    }
}

}  // namespace

std::vector<std::filesystem::path> pictureFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code failed;
    for (std::filesystem::directory_iterator entry(folder, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        std::error_code unknown;
        if (entry->is_regular_file(unknown) && isPictureName(entry->path())) files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool ReplayMaker::available() {
    if (!pictureFiles(settings_.folder).empty()) return true;
    trace("no pictures in " + settings_.folder.u8string());
    return false;
}

bool ReplayMaker::prepare(PictureFormat& format) {
    files_ = pictureFiles(settings_.folder);
    for (const std::filesystem::path& file : files_) {
        const cv::Mat first = decoded(file);
        if (first.empty()) continue;
        format = {first.cols, first.rows, first.channels()};
        return true;
    }
    trace("no readable picture in " + settings_.folder.u8string());
    return false;
}

Made ReplayMaker::make(std::int64_t number, cv::Mat& picture) {
    const auto count = static_cast<std::int64_t>(files_.size());
    if (!settings_.loop && number > count) return Made::kEnd;
    picture = decoded(files_[static_cast<std::size_t>((number - 1) % count)]);
    return picture.empty() ? Made::kNothing : Made::kPicture;
}

bool ReplayMaker::setParameter(int /*id*/, long /*value*/, bool /*running*/) { return false; }

float ReplayMaker::parameter(int /*id*/) { return kNoValue; }

}  // namespace vision
