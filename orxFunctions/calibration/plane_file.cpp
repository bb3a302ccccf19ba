#include "orxFunctions/calibration/plane_calibration.h"

#include <exception>
#include <string>
#include <utility>

#include "orxFunctions/calibration/calibration_text_internal.h"
#include "orxFunctions/calibration/description_internal.h"
#include "orxFunctions/calibration/plane/plane_refusal.h"
#include "orxFunctions/calibration/plane/plausible.h"
#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

// The keys of calibrateData2File first, so that its readers find a camera.
constexpr const char* kIntrinsic = "imageIntrinsic";
constexpr const char* kDistortion = "imageDistortion";
constexpr const char* kImageSize = "imageSize";
constexpr const char* kDescription = "description";
constexpr const char* kIsConfigured = "isDistortionConfig";
constexpr const char* kPlane = "plane";
constexpr int kVersion = 1;

std::string textOf(const TPlaneCalibration& calibration, const std::string& fileName) {
    cv::FileStorage storage(fileName, cv::FileStorage::WRITE | cv::FileStorage::MEMORY);
    storage.write(kIntrinsic, calibration.lens ? cv::Mat(calibration.camera) : cv::Mat());
    storage.write(kDistortion, calibration.lens ? cv::Mat(calibration.distortion.t()) : cv::Mat());
    cv::write(storage, kImageSize, calibration.imageSize);
    writeDescription(storage, kDescription, calibration.description);
    storage.write(kIsConfigured, 1);
    storage.startWriteStruct(kPlane, cv::FileNode::MAP);
    storage.write("version", kVersion);
    storage.write("unit", "mm");
    if (calibration.lens) {
        storage.write("rotation", cv::Mat(calibration.rotation));
        storage.write("translation", cv::Mat(calibration.translation));
    } else {
        storage.write("homography", cv::Mat(calibration.homography));
    }
    storage.write("covariance", cv::Mat(calibration.covariance));
    storage.write("degreesOfFreedom", calibration.degreesOfFreedom);
    storage.write("noise", calibration.noise);
    storage.write("rms", calibration.rms);
    storage.write("coverage", calibration.coverage);
    storage.write("views", calibration.views);
    storage.endWriteStruct();
    return storage.releaseAndGetString();
}

template <int rows, int cols>
bool readMatrix(const cv::FileNode& node, cv::Matx<double, rows, cols>& numbers) {
    cv::Mat matrix;
    if (node.empty() || !isMatrix(node)) return false;
    node >> matrix;
    if (matrix.type() != CV_64F || matrix.size() != cv::Size(cols, rows)) return false;
    numbers = cv::Matx<double, rows, cols>(matrix);
    return true;
}

bool readNumber(const cv::FileNode& node, double& number) {
    if (!node.isInt() && !node.isReal()) return false;
    number = static_cast<double>(node);
    return true;
}

bool readNumber(const cv::FileNode& node, int& number) {
    if (!node.isInt()) return false;
    number = static_cast<int>(node);
    return true;
}

bool readSize(const cv::FileNode& node, cv::Size& size) {
    return node.isSeq() && node.size() == 2 && readNumber(node[0], size.width) &&
           readNumber(node[1], size.height);
}

bool readCamera(const cv::FileStorage& storage, TPlaneCalibration& calibration) {
    const cv::FileNode plane = storage[kPlane];
    calibration.lens = plane["homography"].empty();
    if (!calibration.lens) return readMatrix(plane["homography"], calibration.homography);
    cv::Matx<double, 1, 5> distortion;
    if (!readMatrix(storage[kIntrinsic], calibration.camera) ||
        !readMatrix(storage[kDistortion], distortion)) {
        return false;
    }
    calibration.distortion = cv::Vec<double, 5>(distortion.val);
    return readMatrix<3, 1>(plane["rotation"], calibration.rotation) &&
           readMatrix<3, 1>(plane["translation"], calibration.translation);
}

// What is missing or of the wrong type; empty where nothing is.
std::string parse(const std::string& text, TPlaneCalibration& calibration) {
    const cv::FileStorage storage(text, cv::FileStorage::READ | cv::FileStorage::MEMORY);
    if (!storage.isOpened()) return "the text is none of a calibration";
    const cv::FileNode plane = storage[kPlane];
    if (!plane.isMap()) return "it tells no plane";
    int version = 0;
    if (!readNumber(plane["version"], version) || version != kVersion) return "the version is not known";
    if (!plane["unit"].isString() || plane["unit"].string() != "mm") return "the unit is not mm";
    if (!readSize(storage[kImageSize], calibration.imageSize)) return "the size of the picture is missing";
    if (!readCamera(storage, calibration)) return "the camera or the plane's place is missing";
    if (!readMatrix(plane["covariance"], calibration.covariance)) return "the covariance is missing";
    if (!readNumber(plane["degreesOfFreedom"], calibration.degreesOfFreedom) ||
        !readNumber(plane["noise"], calibration.noise) || !readNumber(plane["rms"], calibration.rms) ||
        !readNumber(plane["coverage"], calibration.coverage) ||
        !readNumber(plane["views"], calibration.views)) {
        return "a statistic is missing";
    }
    calibration.description = readDescription(storage[kDescription]);
    return plane::flawOf(calibration);
}

TPlaneCalibration unreadable(const std::string& problem) {
    TPlaneCalibration calibration;
    calibration.status = plUnreadable;
    calibration.problem = problem;
    return calibration;
}

}  // namespace

TPlaneStatus writePlaneCalibration(const std::string& fileName, const TPlaneCalibration& calibration) {
    constexpr const char* kFunction = "writePlaneCalibration";
    if (!plane::takesCalibration(calibration, kFunction)) return calibration.status;
    const std::string flaw = plane::flawOf(calibration);
    if (!flaw.empty()) {
        refuse(rcNotFinite, kFunction, "what no camera can have: %s", flaw.c_str());
        return plUnwritable;
    }
    try {
        const auto result = writeCalibrationText(fileName, textOf(calibration, fileName));
        if (result == platform::ReplaceResult::kReplaced) return plOk;
        refuseToWrite(kFunction, platform::toPath(fileName));
    } catch (const std::exception& error) {
        refuse(rcFailed, kFunction, "%s", error.what());
    }
    return plUnwritable;
}

TPlaneCalibration readPlaneCalibration(const std::string& fileName) {
    constexpr const char* kFunction = "readPlaneCalibration";
    std::string text;
    if (!readCalibrationText(fileName, text, kFunction))
        return unreadable("the file can't be read, or is too large");
    TPlaneCalibration calibration;
    std::string problem;
    try {
        problem = parse(text, calibration);
    } catch (const std::exception&) {  // OpenCV's for what it can't parse, or no memory for a stated size
        problem = "the text is none of a calibration";
    }
    calibration.status = plOk;
    if (!problem.empty()) calibration = unreadable(problem);
    plane::tellResult(calibration, kFunction);
    return calibration;
}

}  // namespace orx
