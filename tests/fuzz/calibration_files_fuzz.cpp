// Calibration files of all three formats: any bytes read, what is accepted used, written and read again.
#include <array>
#include <cmath>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/temporary_folder.h"

namespace {

using fuzz::require;

void checkCamera(const std::string& file, const std::string& copy) {
    cv::Mat intrinsic;
    cv::Mat distortion;
    cv::Size size;
    std::string description;
    if (!orx::calibrateDataFromFile(file, intrinsic, distortion, size, description)) {
        require(intrinsic.empty() && description.empty() && size == cv::Size(),
                "a refusal leaves the outputs");
        return;
    }
    if (intrinsic.dims > 2 || distortion.dims > 2) return;
    orx::calibrateData2File(intrinsic, distortion, size, description, copy);
    cv::Mat intrinsicAgain;
    cv::Mat distortionAgain;
    cv::Size sizeAgain;
    std::string descriptionAgain;
    require(orx::calibrateDataFromFile(copy, intrinsicAgain, distortionAgain, sizeAgain, descriptionAgain),
            "what was read is written and read again");
    require(description == descriptionAgain && size == sizeAgain, "the same description and size");
    require(intrinsic.size() == intrinsicAgain.size() && distortion.size() == distortionAgain.size(),
            "matrices of the same size");
}

void checkPlane(const std::string& file, const std::string& copy, cv::Point2d pixel) {
    const orx::TPlaneCalibration plane = orx::readPlaneCalibration(file);
    require(*orx::planeStatusText(plane.status) != 0, "a status has a text");
    const cv::Point2d place = orx::imageToPlane(plane, pixel);
    if (!plane.valid()) {
        require(plane.status == orx::plUnreadable && std::isnan(place.x), "refused files map nothing");
        return;
    }
    const cv::Point2d back = orx::planeToImage(plane, place);
    if (!std::isnan(back.x) && cv::norm(place) < 1e9 && cv::norm(pixel) < 1e5) {
        require(cv::norm(back - pixel) < 1e-3, "to the plane and back");
        orx::pixelSize(plane, pixel);
        const cv::Mat c = orx::planeCovariance(plane, {pixel, {3, 4}});
        require(c.empty() || c.size() == cv::Size(4, 4), "two points, four numbers");
    }
    require(orx::writePlaneCalibration(copy, plane) == orx::plOk, "what was read is written");
    const orx::TPlaneCalibration again = orx::readPlaneCalibration(copy);
    require(again.valid() && again.imageSize == plane.imageSize && again.description == plane.description,
            "and read again");
    const cv::Point2d same = orx::imageToPlane(again, pixel);
    require(fuzz::nearly(same.x, place.x, 1e-6) && fuzz::nearly(same.y, place.y, 1e-6),
            "to the same mapping");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const std::array<const char*, 3> kExtensions = {".yml", ".json", ".xml"};
    fuzz::Input input(bytes, size);
    const std::string extension = kExtensions[input.byte() % kExtensions.size()];
    const cv::Point2d pixel{2.5 * input.byte(), 2.5 * input.byte()};
    const std::filesystem::path folder = fuzz::emptyFolder();
    const std::string file = (folder / ("a" + extension)).string();
    const std::string copy = (folder / ("b" + extension)).string();
    test::writeBytes(file, input.rest());
    checkCamera(file, copy);
    checkPlane(file, copy, pixel);
    fuzz::forgetMessages();
    return 0;
}
