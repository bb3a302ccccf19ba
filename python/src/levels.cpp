// Thresholds: analysis/threshold.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <optional>
#include <utility>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/analysis/threshold.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

std::optional<int> thresholdLevel(const Argument& image, int method) {
    const Image grey = imageOf(image, "image", ikGrey);
    const int level = unlocked(
        [&] { return orx::getThresholdValue(grey.mat, static_cast<orx::TThresholdMethod>(method)); });
    if (level >= 0) return level;
    return nothingFound();
}

std::optional<std::pair<int, double>> otsuLevel(const Argument& image) {
    const Image grey = imageOf(image, "image", ikGrey);
    double score = 0.0;
    const int level = unlocked([&] { return orx::getThresholdValOTSU(grey.mat, score); });
    if (level >= 0) return std::make_pair(level, score);
    return nothingFound();
}

std::optional<int> levelForCount(const Argument& image, int count) {
    const Image grey = imageOf(image, "image", ikGrey);
    const int level = unlocked([&] { return orx::getThresholdValueByRequiredNumber(grey.mat, count); });
    if (level >= 0) return level;
    return nothingFound();
}

ArrayOf<unsigned char> thresholdQuadrants(const Argument& image, int operation, int size) {
    const Image grey = imageOf(image, "image", ikGrey);
    cv::Mat binary;
    unlocked([&] { orx::OTSUfourPartsThreshold(std::as_const(grey.mat), binary, operation, size); });
    if (binary.empty()) raiseRefusal();
    return bytesFrom(std::move(binary));
}

}  // namespace

void bindLevels(py::module_& core) {
    core.def("threshold_level", &thresholdLevel, py::arg("image"), py::arg("method"));
    core.def("otsu_level", &otsuLevel, py::arg("image"));
    core.def("level_for_count", &levelForCount, py::arg("image"), py::arg("count"));
    core.def("threshold_quadrants", &thresholdQuadrants, py::arg("image"), py::arg("operation"),
             py::arg("size"));
}

}  // namespace orxpy
