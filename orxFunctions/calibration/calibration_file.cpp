#include "orxFunctions/calibration/calibration_file.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <utility>
#include <vector>

#include "orxFunctions/calibration/description_internal.h"
#include "orxFunctions/platform/file_access_internal.h"

namespace orx {
namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20U;
constexpr int kMostLevels = 800;

constexpr const char* kIntrinsic = "imageIntrinsic";
constexpr const char* kDistortion = "imageDistortion";
constexpr const char* kImageSize = "imageSize";
constexpr const char* kDescription = "description";
constexpr const char* kIsConfigured = "isDistortionConfig";

// The text of a file, inflated where OpenCV compressed it (names that end with .gz). False when it can't be
// read or is too long.
bool readText(const std::string& fileName, std::string& text) {
    const platform::GzipFile file = platform::openGzip(platform::toPath(fileName), "rb");
    if (!file) return false;
    std::vector<char> block(std::size_t{1} << 16U);
    int count = 0;
    while ((count = gzread(file.get(), block.data(), static_cast<unsigned>(block.size()))) > 0) {
        text.append(block.data(), static_cast<std::size_t>(count));
        if (text.size() > kMostBytes) return false;
    }
    return count == 0;
}

// A new file for a text, compressed where its name ends with .gz. (OpenCV would open the file itself, but
// only a name in the code page of the process.)
class CalibrationTarget {
  public:
    explicit CalibrationTarget(const std::string& fileName) {
        const std::filesystem::path path = platform::toPath(fileName);
        if (path.extension() == ".gz") {
            compressed_ = platform::openGzip(path, "wb3");
        } else {
            plain_ = platform::openToWriteText(path);
        }
    }

    bool isOpen() const { return compressed_ || plain_; }

    void write(const std::string& text) const {
        if (compressed_) gzwrite(compressed_.get(), text.data(), static_cast<unsigned>(text.size()));
        if (plain_) std::fwrite(text.data(), 1, text.size(), plain_.get());
    }

  private:
    platform::GzipFile compressed_;
    platform::File plain_;
};

// True when a matrix holds as many numbers as its size says, so that reading it takes no memory for others.
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

struct Calibration {
    cv::Mat intrinsic;
    cv::Mat distortion;
    cv::Size imageSize;
    std::string description;
};

bool parse(const std::string& text, Calibration& calibration) {
    const cv::FileStorage storage(text, cv::FileStorage::READ | cv::FileStorage::MEMORY);
    if (!storage.isOpened() || static_cast<int>(storage[kIsConfigured]) == 0) return false;
    if (!isMatrix(storage[kIntrinsic]) || !isMatrix(storage[kDistortion])) return false;
    storage[kIntrinsic] >> calibration.intrinsic;
    storage[kDistortion] >> calibration.distortion;
    std::vector<int> size;
    storage[kImageSize] >> size;
    if (size.size() == 2) calibration.imageSize = cv::Size(size[0], size[1]);
    calibration.description = readDescription(storage[kDescription]);
    return true;
}

}  // namespace

void calibrateData2File(cv::Mat intrinsic, cv::Mat distortion, cv::Size imageSize, std::string description,
                        std::string fileName) {
    const CalibrationTarget target(fileName);
    cv::FileStorage storage;
    // Otherwise it stays closed, and refuses what is written as it does for a file that OpenCV can't open.
    if (target.isOpen()) storage.open(fileName, cv::FileStorage::WRITE | cv::FileStorage::MEMORY);
    storage.write(kIntrinsic, intrinsic);
    storage.write(kDistortion, distortion);
    cv::write(storage, kImageSize, imageSize);
    writeDescription(storage, kDescription, description);
    storage.write(kIsConfigured, 1);
    target.write(storage.releaseAndGetString());
}

bool calibrateDataFromFile(std::string fileName, cv::Mat& intrinsic, cv::Mat& distortion, cv::Size& imageSize,
                           std::string& description) {
    Calibration calibration;
    try {
        std::string text;
        if (!readText(fileName, text) || nestingBound(text) > kMostLevels || !parse(text, calibration)) {
            return false;
        }
    } catch (const std::exception&) {  // OpenCV's for what it can't parse, or no memory for a stated size
        return false;
    }
    intrinsic = calibration.intrinsic;
    distortion = calibration.distortion;
    imageSize = calibration.imageSize;
    description = std::move(calibration.description);
    return true;
}

}  // namespace orx
