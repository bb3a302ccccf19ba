#include "orxFunctions/calibration/plane_calibration.h"

#include <cmath>
#include <cstddef>
#include <limits>

#include "orxFunctions/calibration/plane/mapping.h"
#include "orxFunctions/calibration/plane/plane_refusal.h"
#include "orxFunctions/calibration/plane/sensitivity.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
const cv::Point2d kNowhere(kNaN, kNaN);
constexpr std::size_t kMostPoints = 2000;

struct MappedPoints {
    std::vector<cv::Point2d> places;
    std::vector<cv::Matx22d> derivatives;  // by their pixels
};

// False where one has no place, and for none.
bool mapAll(const TPlaneCalibration& calibration, const std::vector<cv::Point2d>& pixels,
            MappedPoints& mapped, const char* function) {
    if (pixels.empty()) return refuse(rcTooFew, function, "there are no points");
    const plane::Mapping mapping(calibration);
    mapped.places.resize(pixels.size());
    mapped.derivatives.resize(pixels.size());
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (!mapping.toPlane(pixels[i], mapped.places[i], &mapped.derivatives[i]))
            return plane::refusePlace(calibration, function);
    }
    return true;
}

cv::Matx22d jacobianAt(const TPlaneCalibration& calibration, cv::Point2d pixel, const char* function) {
    cv::Point2d place;
    cv::Matx22d derivative;
    if (plane::Mapping(calibration).toPlane(pixel, place, &derivative)) return derivative;
    plane::refusePlace(calibration, function);
    return cv::Matx22d::all(kNaN);
}

// The place whose picture a pixel is gives way, when parameters change, by as much as they would move its
// picture.
cv::Mat sensitivityOf(const TPlaneCalibration& calibration, const MappedPoints& mapped) {
    cv::Mat result = plane::imageSensitivity(calibration, mapped.places);
    for (int i = 0; i < static_cast<int>(mapped.places.size()); ++i) {
        for (int k = 0; k < kPlaneParameters; ++k) {
            double& x = result.at<double>(2 * i, k);
            double& y = result.at<double>(2 * i + 1, k);
            const cv::Vec2d moved = mapped.derivatives[static_cast<std::size_t>(i)] * cv::Vec2d(x, y);
            x = -moved[0];
            y = -moved[1];
        }
    }
    return result;
}

// D C D^T for a block-diagonal D of 2 x 2 blocks.
cv::Mat carriedOver(const std::vector<cv::Matx22d>& blocks, const cv::Mat& covariance) {
    cv::Mat result(covariance.size(), CV_64F);
    for (int i = 0; i < static_cast<int>(blocks.size()); ++i) {
        for (int j = 0; j < static_cast<int>(blocks.size()); ++j) {
            const cv::Matx22d between(
                covariance.at<double>(2 * i, 2 * j), covariance.at<double>(2 * i, 2 * j + 1),
                covariance.at<double>(2 * i + 1, 2 * j), covariance.at<double>(2 * i + 1, 2 * j + 1));
            const cv::Matx22d there =
                blocks[static_cast<std::size_t>(i)] * between * blocks[static_cast<std::size_t>(j)].t();
            for (int k = 0; k < 4; ++k) result.at<double>(2 * i + k / 2, 2 * j + k % 2) = there(k / 2, k % 2);
        }
    }
    return result;
}

}  // namespace

const char* planeStatusText(TPlaneStatus status) {
    switch (status) {
        case plOk:
            return "ok";
        case plNoTarget:
            return "the target was not found";
        case plTooFewViews:
            return "too few pictures of the target, or too much alike, to find the lens";
        case plMixedSizes:
            return "pictures of different sizes";
        case plNotConverged:
            return "the points follow no camera";
        case plBadOptions:
            return "an option outside its range";
        case plBadViews:
            return "the points are not finite, or of no use in number or order";
        case plUnreadable:
            return "no plane calibration can be read there";
        case plUnwritable:
            return "the file can't be written";
    }
    return "unknown status";
}

cv::Point2d imageToPlane(const TPlaneCalibration& calibration, cv::Point2d pixel) {
    cv::Point2d place;
    if (plane::Mapping(calibration).toPlane(pixel, place)) return place;
    plane::refusePlace(calibration, "imageToPlane");
    return kNowhere;
}

std::vector<cv::Point2d> imageToPlane(const TPlaneCalibration& calibration,
                                      const std::vector<cv::Point2d>& pixels) {
    const plane::Mapping mapping(calibration);
    std::vector<cv::Point2d> places(pixels.size(), kNowhere);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (mapping.toPlane(pixels[i], places[i])) continue;
        plane::refusePlace(calibration, "imageToPlane");
        places[i] = kNowhere;
    }
    return places;
}

cv::Point2d planeToImage(const TPlaneCalibration& calibration, cv::Point2d millimetres) {
    cv::Point2d pixel;
    if (plane::Mapping(calibration).toImage(millimetres, pixel)) return pixel;
    plane::refusePlace(calibration, "planeToImage");
    return kNowhere;
}

std::vector<cv::Point2d> planeToImage(const TPlaneCalibration& calibration,
                                      const std::vector<cv::Point2d>& millimetres) {
    const plane::Mapping mapping(calibration);
    std::vector<cv::Point2d> pixels(millimetres.size(), kNowhere);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (mapping.toImage(millimetres[i], pixels[i])) continue;
        plane::refusePlace(calibration, "planeToImage");
        pixels[i] = kNowhere;
    }
    return pixels;
}

cv::Matx22d planeJacobian(const TPlaneCalibration& calibration, cv::Point2d pixel) {
    return jacobianAt(calibration, pixel, "planeJacobian");
}

double pixelSize(const TPlaneCalibration& calibration, cv::Point2d pixel) {
    return std::sqrt(std::abs(cv::determinant(jacobianAt(calibration, pixel, "pixelSize"))));
}

cv::Mat planeSensitivity(const TPlaneCalibration& calibration, const std::vector<cv::Point2d>& pixels) {
    MappedPoints mapped;
    if (!mapAll(calibration, pixels, mapped, "planeSensitivity")) return {};
    return sensitivityOf(calibration, mapped);
}

cv::Mat planeCovariance(const TPlaneCalibration& calibration, const std::vector<cv::Point2d>& pixels,
                        const cv::Mat& pixelCovariance) {
    constexpr const char* kFunction = "planeCovariance";
    if (pixels.size() > kMostPoints) {
        refuse(rcTooMany, kFunction, "%zu points; %zu at most are taken", pixels.size(), kMostPoints);
        return {};
    }
    const int n = 2 * static_cast<int>(pixels.size());
    const bool exact = pixelCovariance.empty();
    if (!exact && (pixelCovariance.dims != 2 || pixelCovariance.size() != cv::Size(n, n) ||
                   pixelCovariance.type() != CV_64F)) {
        refuse(rcSizesDiffer, kFunction, "the covariance is not %d x %d doubles as the points want it", n, n);
        return {};
    }
    MappedPoints mapped;
    if (!mapAll(calibration, pixels, mapped, kFunction)) return {};
    const cv::Mat sensitivity = sensitivityOf(calibration, mapped);
    cv::Mat result = sensitivity * cv::Mat(calibration.covariance) * sensitivity.t();
    if (!exact) result += carriedOver(mapped.derivatives, pixelCovariance);
    return result;
}

}  // namespace orx
