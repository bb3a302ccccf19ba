// One number for a picture: analysis/focus.h, image_noise.h, the automatic threshold of subpixel_edges.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <optional>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/analysis/focus.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/analysis/subpixel_edges.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using Grade = double (*)(const cv::Mat&);
constexpr Grade kFocusMeasures[] = {AutoFocus::calcGrayDifference, AutoFocus::calcBrenner,
                                    AutoFocus::calcTenengrad, AutoFocus::calcLaplacianVariance};

double gradeOf(const Argument& image, Grade grade) {
    const Image picture = imageOf(image, "image", ikAny);
    const double value = unlocked([&] { return grade(picture.mat); });
    if (value < 0.0) raiseRefusal();
    return value;
}

double focus(const Argument& image, int measure) {
    if (measure < 0 || measure > 3) throw py::value_error("measure: expected 0 to 3");
    return gradeOf(image, kFocusMeasures[measure]);
}

double imageNoise(const Argument& image) { return gradeOf(image, orx::getImageNoise); }

std::optional<double> edgeThreshold(const Argument& gx, const Argument& gy) {
    const Image alongX = imageOf(gx, "gx", ikGradient), alongY = imageOf(gy, "gy", ikGradient);
    const double level = unlocked([&] { return ORXEdge::calcEdgeThresVal(alongX.mat, alongY.mat); });
    if (level >= 0.0) return level;
    return nothingFound();
}

}  // namespace

void bindGrades(py::module_& core) {
    core.def("focus", &focus, py::arg("image"), py::arg("measure"));
    core.def("image_noise", &imageNoise, py::arg("image"));
    core.def("edge_threshold", &edgeThreshold, py::arg("gx"), py::arg("gy"));
}

}  // namespace orxpy
