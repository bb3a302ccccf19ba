#include "orxFunctions/calibration/calibration_text_internal.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "orxFunctions/calibration/description_internal.h"

namespace orx {
namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20U;
constexpr int kMostLevels = 800;

}  // namespace

bool readCalibrationText(const std::string& fileName, std::string& text) {
    const platform::GzipFile file = platform::openGzip(platform::toPath(fileName), "rb");
    if (!file) return false;
    std::vector<char> block(std::size_t{1} << 16U);
    int count = 0;
    while ((count = gzread(file.get(), block.data(), static_cast<unsigned>(block.size()))) > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
        if (text.size() > kMostBytes) return false;
    }
    return count == 0 && nestingBound(text) <= kMostLevels;
}

CalibrationTarget::CalibrationTarget(const std::string& fileName) {
    const std::filesystem::path path = platform::toPath(fileName);
    if (path.extension() == ".gz") {
        compressed_ = platform::openGzip(path, "wb3");
    } else {
        plain_ = platform::openToWriteText(path);
    }
}

bool CalibrationTarget::write(const std::string& text) {
    // What can't be written may come to light no sooner than when the file is closed.
    if (compressed_) {
        const auto size = static_cast<unsigned>(text.size());
        const bool written = gzwrite(compressed_.get(), text.data(), size) == static_cast<int>(size);
        return gzclose(compressed_.release()) == Z_OK && written;
    }
    if (!plain_) return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), plain_.get()) == text.size();
    return std::fclose(plain_.release()) == 0 && written;
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
