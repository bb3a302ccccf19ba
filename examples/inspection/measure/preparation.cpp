#include "inspection/measure/preparation.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

#include "inspection/measure/methods.h"
#include "orxFunctions/analysis/flatten.h"
#include "orxFunctions/analysis/threshold.h"

namespace inspection {
namespace {

int bordersAbove(const cv::Mat& grey, int level) {
    int above = 0;
    for (int column = 0; column < grey.cols; ++column)
        above += int{grey.at<uchar>(0, column) > level} + int{grey.at<uchar>(grey.rows - 1, column) > level};
    for (int row = 0; row < grey.rows; ++row)
        above += int{grey.at<uchar>(row, 0) > level} + int{grey.at<uchar>(row, grey.cols - 1) > level};
    return above;
}

bool objectsAreBright(const cv::Mat& grey, int level, Polarity polarity) {
    if (polarity != Polarity::kAuto) return polarity == Polarity::kBright;
    return bordersAbove(grey, level) <= grey.cols + grey.rows;
}

std::array<int, 256> histogramOf(const cv::Mat& grey) {
    std::array<int, 256> histogram{};
    for (int row = 0; row < grey.rows; ++row) {
        const auto* pixels = grey.ptr<uchar>(row);
        for (int column = 0; column < grey.cols; ++column) ++histogram[pixels[column]];
    }
    return histogram;
}

int levelOf(cv::Mat& grey, const Settings& settings) {
    return orx::getThresholdValue(grey, methodByName(settings.method));
}

}  // namespace

std::optional<Preparation> prepare(const cv::Mat& grey, const Settings& settings, std::string& error) {
    Preparation result;
    result.grey = grey.clone();
    if (settings.smooth > 0.0) cv::GaussianBlur(grey, result.grey, cv::Size(), settings.smooth);

    result.level = levelOf(result.grey, settings);
    result.brightObjects = objectsAreBright(result.grey, result.level, settings.polarity);
    if (settings.background > 0) {
        orx::flattenLight(result.grey, result.grey, {std::max(3, settings.background), result.brightObjects});
        result.level = levelOf(result.grey, settings);
    }
    if (result.level < 0) {
        error = "the method " + settings.method + " finds no threshold in this picture";
        return std::nullopt;
    }
    result.histogram = histogramOf(result.grey);
    cv::threshold(result.grey, result.objects, result.level, 255,
                  result.brightObjects ? cv::THRESH_BINARY : cv::THRESH_BINARY_INV);
    if (settings.close > 1) {
        const cv::Mat element =
            cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(settings.close, settings.close));
        cv::morphologyEx(result.objects, result.objects, cv::MORPH_CLOSE, element);
    }
    return result;
}

}  // namespace inspection
