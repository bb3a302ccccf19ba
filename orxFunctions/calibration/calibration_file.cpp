#include "orxFunctions/calibration/calibration_file.h"

#include <exception>
#include <utility>
#include <vector>

#include "orxFunctions/calibration/calibration_text_internal.h"
#include "orxFunctions/calibration/description_internal.h"
#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr const char* kIntrinsic = "imageIntrinsic";
constexpr const char* kDistortion = "imageDistortion";
constexpr const char* kImageSize = "imageSize";
constexpr const char* kDescription = "description";
constexpr const char* kIsConfigured = "isDistortionConfig";

struct Calibration {
    cv::Mat intrinsic;
    cv::Mat distortion;
    cv::Size imageSize;
    std::string description;
};

bool parse(const std::string& text, Calibration& calibration) try {
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
} catch (const std::exception&) {  // OpenCV's for what it can't parse, or no memory for a stated size
    return false;
}

}  // namespace

void calibrateData2File(cv::Mat intrinsic, cv::Mat distortion, cv::Size imageSize, std::string description,
                        std::string fileName) {
    cv::FileStorage storage(fileName, cv::FileStorage::WRITE | cv::FileStorage::MEMORY);
    storage.write(kIntrinsic, intrinsic);
    storage.write(kDistortion, distortion);
    cv::write(storage, kImageSize, imageSize);
    writeDescription(storage, kDescription, description);
    storage.write(kIsConfigured, 1);
    const platform::ReplaceResult result = writeCalibrationText(fileName, storage.releaseAndGetString());
    if (result == platform::ReplaceResult::kReplaced) return;
    refuseToWrite("calibrateData2File", platform::toPath(fileName));
    // As for a file that OpenCV can't open: a storage that is closed refuses what is written.
    if (result == platform::ReplaceResult::kRefused) cv::FileStorage().write(kIntrinsic, intrinsic);
}

bool calibrateDataFromFile(std::string fileName, cv::Mat& intrinsic, cv::Mat& distortion, cv::Size& imageSize,
                           std::string& description) try {
    std::string text;
    if (!readCalibrationText(fileName, text, "calibrateDataFromFile")) return false;
    Calibration calibration;
    if (!parse(text, calibration))
        return refuse(rcFileFormat, "calibrateDataFromFile", "it is no calibration: %s",
                      platform::shownName(platform::toPath(fileName)).c_str());
    intrinsic = calibration.intrinsic;
    distortion = calibration.distortion;
    imageSize = calibration.imageSize;
    description = std::move(calibration.description);
    return true;
} catch (const std::exception&) {
    return refuse(rcFileUnreadable, "calibrateDataFromFile", "there is no memory left to read it");
}

}  // namespace orx
