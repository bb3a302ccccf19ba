#include "orxFunctions/calibration/plane_calibration.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>

#include "orxFunctions/calibration/plane/mapping.h"
#include "orxFunctions/calibration/plane/plane_refusal.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx {
namespace {

constexpr double kTilted = 15.0;     // degrees
constexpr int kFewestTilted = 3;     // views
constexpr double kRoughShare = 2.5;  // of the other views' typical distance
constexpr double kRoughest = 0.3;    // pixels, root mean square, of a sharp picture and a flat target
constexpr int kParts = 3;            // of the picture in each direction

std::string format(const char* pattern, double value) {
    char text[200];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

// Names the ninths of the picture that hold no point.
std::string emptyParts(cv::Size size, const std::vector<TTargetView>& views) {
    std::array<std::array<int, kParts>, kParts> counts{};
    for (const TTargetView& view : views) {
        if (!view.found) continue;
        for (const cv::Point2d& p : view.pixels) {
            const int column = std::clamp(static_cast<int>(kParts * p.x / size.width), 0, kParts - 1);
            const int row = std::clamp(static_cast<int>(kParts * p.y / size.height), 0, kParts - 1);
            ++counts[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
        }
    }
    const char* const names[kParts][kParts] = {{"upper left", "top", "upper right"},
                                               {"left", "middle", "right"},
                                               {"lower left", "bottom", "lower right"}};
    std::string list;
    for (std::size_t row = 0; row < kParts; ++row) {
        for (std::size_t column = 0; column < kParts; ++column) {
            if (counts[row][column] == 0)
                list += (list.empty() ? "" : ", ") + std::string(names[row][column]);
        }
    }
    return list;
}

// Of the target against the picture's plane, degrees.
double tiltOf(const TPlaneCalibration& calibration) {
    const double along = std::abs(plane::rotationMatrix(calibration.rotation)(2, 2));
    return degrees(std::acos(std::min(1.0, along)));
}

double rmsOf(const std::vector<cv::Point2d>& residuals) {
    double squares = 0.0;
    for (const cv::Point2d& r : residuals) squares += r.dot(r);
    return residuals.empty() ? 0.0 : std::sqrt(squares / static_cast<double>(residuals.size()));
}

void addRoughViews(const TPlaneCalibration& calibration, const std::vector<TTargetView>& views,
                   std::vector<std::string>& warnings) {
    std::vector<double> all(views.size(), 0.0);
    std::vector<double> found;
    for (std::size_t i = 0; i < views.size(); ++i) {
        all[i] = rmsOf(planeResiduals(calibration, views[i]));
        if (all[i] > 0.0) found.push_back(all[i]);
    }
    if (found.empty()) return;
    std::sort(found.begin(), found.end());
    const double typical = found[(found.size() - 1) / 2];
    for (std::size_t i = 0; i < views.size(); ++i) {
        if (all[i] <= kRoughShare * typical) continue;
        warnings.push_back("view " + std::to_string(i + 1) + format(" fits by %.3f pixels only", all[i]) +
                           format(", the others by %.3f: was it moved, or the target bent?", typical));
    }
}

}  // namespace

std::vector<std::string> planeWarnings(const TPlaneCalibration& calibration,
                                       const std::vector<TTargetView>& views) {
    std::vector<std::string> warnings;
    if (!plane::takesCalibration(calibration, "planeWarnings")) return warnings;
    const std::string empty = emptyParts(calibration.imageSize, views);
    if (calibration.lens && !empty.empty())
        warnings.push_back("no point of the target lay in these parts of the picture: " + empty +
                           "; there the lens is a guess");
    if (calibration.lens) {
        int tilted = 0;
        for (const TTargetView& view : views) {
            if (!view.found) continue;
            TPlaneOptions options;
            options.mostRms = 1e9;
            const TPlaneCalibration laid = relocatePlane(calibration, view, options);
            if (laid.valid() && tiltOf(laid) >= kTilted) ++tilted;
        }
        if (tilted < kFewestTilted) {
            warnings.push_back("the target is tilted by 15 degrees and more in " + std::to_string(tilted) +
                               " pictures only: tilt it this way and that, by 20 to 40 degrees");
        }
    }
    if (calibration.rms > kRoughest) {
        warnings.push_back(format("points lie %.3f pixels off, root mean square", calibration.rms) +
                           ": are the pictures sharp, the target flat and its numbers right?");
    }
    addRoughViews(calibration, views, warnings);
    return warnings;
}

}  // namespace orx
