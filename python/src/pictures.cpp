// Pictures made of pictures: analysis/enhance.h, colour.h, flatten.h, white_balance.h, auto_canny.h,
// fill_holes.h, thinning.h, clean_up.h.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <optional>
#include <tuple>
#include <utility>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/analysis/auto_canny.h"
#include "orxFunctions/analysis/clean_up.h"
#include "orxFunctions/analysis/colour.h"
#include "orxFunctions/analysis/enhance.h"
#include "orxFunctions/analysis/fill_holes.h"
#include "orxFunctions/analysis/flatten.h"
#include "orxFunctions/analysis/thinning.h"
#include "orxFunctions/analysis/white_balance.h"
#include "refusals.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

// `make(source, result)` answers whether it was done.
template <typename Make>
AnyArray madeOf(const Argument& image, ImageKind kind, Make&& make) {
    const Image picture = imageOf(image, "image", kind);
    cv::Mat result;
    if (!unlocked([&] { return make(picture.mat, result); })) raiseRefusal();
    return arrayFrom(std::move(result));
}

template <typename Make>
ArrayOf<unsigned char> bytesOf(const Argument& image, ImageKind kind, Make&& make) {
    const Image picture = imageOf(image, "image", kind);
    cv::Mat result = unlocked([&] { return make(picture.mat); });
    if (result.empty()) raiseRefusal();
    return bytesFrom(std::move(result));
}

template <typename Make>
ArrayOf<unsigned char> binaryOf(const Argument& image, Make&& make) {
    const Image picture = imageOf(image, "image", ikBinary);
    cv::Mat result;
    if (!unlocked([&] { return make(picture.mat, result); })) raiseRefusal();
    return bytesFrom(std::move(result));
}

AnyArray enhance(const Argument& image, int method, double clipLimit, int tiles, double gain, double sigma) {
    return madeOf(image, ikAny, [&](const cv::Mat& from, cv::Mat& to) {
        return orx::enhanceImage(from, to, static_cast<orx::TEnchanceMethod>(method),
                                 {clipLimit, tiles, gain, sigma});
    });
}

AnyArray correctGamma(const Argument& image, double gamma) {
    return madeOf(image, ikAny,
                  [&](const cv::Mat& from, cv::Mat& to) { return orx::correctGamma(from, to, gamma); });
}

AnyArray stretchLog(const Argument& image, double gain) {
    return madeOf(image, ikAny,
                  [&](const cv::Mat& from, cv::Mat& to) { return orx::stretchLog(from, to, gain); });
}

AnyArray suppressHighlights(const Argument& image, double knee, double ceiling) {
    return madeOf(image, ikAny, [&](const cv::Mat& from, cv::Mat& to) {
        return orx::suppressHighlights(from, to, {knee, ceiling});
    });
}

AnyArray background(const Argument& image, int window, bool brightObjects) {
    return madeOf(image, ikGreyAnyDepth, [&](const cv::Mat& from, cv::Mat& to) {
        return orx::getBackground(from, to, {window, brightObjects});
    });
}

AnyArray flattenLight(const Argument& image, int window, bool brightObjects) {
    return madeOf(image, ikGreyAnyDepth, [&](const cv::Mat& from, cv::Mat& to) {
        return orx::flattenLight(from, to, {window, brightObjects});
    });
}

std::tuple<double, double, double> whiteBalanceGains(const Argument& image, int method, double whiteShare) {
    const Image picture = imageOf(image, "image", ikAny);
    const orx::TWhiteBalance balance = unlocked([&] {
        return orx::getWhiteBalance(picture.mat, {static_cast<orx::TWhiteBalanceMethod>(method), whiteShare});
    });
    if (!balance.valid) raiseRefusal();
    return {balance.gains[0], balance.gains[1], balance.gains[2]};
}

AnyArray applyWhiteBalance(const Argument& image, const std::tuple<double, double, double>& gains) {
    const auto [blue, green, red] = gains;
    const orx::TWhiteBalance balance{{blue, green, red}, true};
    return madeOf(image, ikAny, [&](const cv::Mat& from, cv::Mat& to) {
        return orx::applyWhiteBalance(from, to, balance);
    });
}

AnyArray whiteBalance(const Argument& image, int method, double whiteShare) {
    return madeOf(image, ikAny, [&](const cv::Mat& from, cv::Mat& to) {
        return orx::whiteBalance(from, to, {static_cast<orx::TWhiteBalanceMethod>(method), whiteShare});
    });
}

ArrayOf<unsigned char> toGray(const Argument& image, int bits) {
    return bytesOf(image, ikAny, [&](const cv::Mat& from) { return orx::toGray(from, bits); });
}

ArrayOf<unsigned char> toBgr(const Argument& image, int bits) {
    return bytesOf(image, ikAny, [&](const cv::Mat& from) { return orx::toBGR(from, bits); });
}

orx::TAutoCannyOptions cannyOptions(int method, double spread, double lowRatio, double blur, int bits) {
    return {static_cast<orx::TCannyMethod>(method), spread, lowRatio, blur, bits};
}

ArrayOf<unsigned char> autoCanny(const Argument& image, int method, double spread, double lowRatio,
                                 double blur, int bits) {
    return bytesOf(image, ikAny, [&](const cv::Mat& from) {
        return orx::autoCanny(from, cannyOptions(method, spread, lowRatio, blur, bits));
    });
}

std::pair<double, double> cannyThresholds(const Argument& image, int method, double spread, double lowRatio,
                                          double blur, int bits) {
    const Image picture = imageOf(image, "image", ikAny);
    const orx::TCannyThresholds found = unlocked([&] {
        return orx::getCannyThresholds(picture.mat, cannyOptions(method, spread, lowRatio, blur, bits));
    });
    if (!found.valid) raiseRefusal();
    return {found.low, found.high};
}

ArrayOf<unsigned char> fillHoles(const Argument& image, double maxArea, int connectivity) {
    return binaryOf(image, [&](const cv::Mat& from, cv::Mat& to) {
        return orx::fillHoles(from, to, {maxArea, static_cast<orx::TConnectivity>(connectivity)});
    });
}

ArrayOf<unsigned char> thinning(const Argument& image, int method) {
    return binaryOf(image, [&](const cv::Mat& from, cv::Mat& to) {
        return orx::thinning(from, to, static_cast<orx::TThinningMethod>(method));
    });
}

ArrayOf<unsigned char> removeSmallObjects(const Argument& image, double minArea) {
    return binaryOf(
        image, [&](const cv::Mat& from, cv::Mat& to) { return orx::removeSmallObjects(from, to, minArea); });
}

ArrayOf<unsigned char> removeShortLines(const Argument& image, double minLength) {
    return binaryOf(
        image, [&](const cv::Mat& from, cv::Mat& to) { return orx::removeShortLines(from, to, minLength); });
}

}  // namespace

void bindPictures(py::module_& core) {
    core.def("enhance", &enhance, py::arg("image"), py::arg("method"), py::arg("clip_limit"),
             py::arg("tiles"), py::arg("gain"), py::arg("sigma"));
    core.def("correct_gamma", &correctGamma, py::arg("image"), py::arg("gamma"));
    core.def("stretch_log", &stretchLog, py::arg("image"), py::arg("gain"));
    core.def("suppress_highlights", &suppressHighlights, py::arg("image"), py::arg("knee"),
             py::arg("ceiling"));
    core.def("background", &background, py::arg("image"), py::arg("window"), py::arg("bright_objects"));
    core.def("flatten_light", &flattenLight, py::arg("image"), py::arg("window"), py::arg("bright_objects"));
    core.def("white_balance_gains", &whiteBalanceGains, py::arg("image"), py::arg("method"),
             py::arg("white_share"));
    core.def("apply_white_balance", &applyWhiteBalance, py::arg("image"), py::arg("gains"));
    core.def("white_balance", &whiteBalance, py::arg("image"), py::arg("method"), py::arg("white_share"));
    core.def("to_gray", &toGray, py::arg("image"), py::arg("bits"));
    core.def("to_bgr", &toBgr, py::arg("image"), py::arg("bits"));
    core.def("auto_canny", &autoCanny, py::arg("image"), py::arg("method"), py::arg("spread"),
             py::arg("low_ratio"), py::arg("blur"), py::arg("bits"));
    core.def("canny_thresholds", &cannyThresholds, py::arg("image"), py::arg("method"), py::arg("spread"),
             py::arg("low_ratio"), py::arg("blur"), py::arg("bits"));
    core.def("fill_holes", &fillHoles, py::arg("image"), py::arg("max_area"), py::arg("connectivity"));
    core.def("thinning", &thinning, py::arg("image"), py::arg("method"));
    core.def("remove_small_objects", &removeSmallObjects, py::arg("image"), py::arg("min_area"));
    core.def("remove_short_lines", &removeShortLines, py::arg("image"), py::arg("min_length"));
}

}  // namespace orxpy
