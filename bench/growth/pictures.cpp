// Operators on pictures of VGA, 1.2, 5 and 20 megapixels.
#include <map>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "bench/edge_mosaic.h"
#include "bench/growth/growth.h"
#include "bench/parts_picture.h"
#include "docs/tools/matching_accuracy.h"
#include "orxFunctions/orxfunctions.h"

namespace growth {
namespace {

const cv::Size kSizes[] = {{640, 480}, {1280, 960}, {2592, 1944}, {5184, 3888}};

cv::Size sizeOf(std::int64_t pixels) {
    for (const cv::Size& size : kSizes) {
        if (size.area() == pixels) return size;
    }
    return {};
}

std::vector<std::int64_t> areas() {
    std::vector<std::int64_t> pixels;
    for (const cv::Size& size : kSizes) pixels.push_back(size.area());
    return pixels;
}

cv::Mat board(cv::Size size) {
    const int square = size.height / 10;
    cv::Mat img = orx::createCalibrateImage(size, square, square);
    cv::GaussianBlur(img, img, {}, 1.0);
    return img;
}

// Made once, and kept: the largest take longer than what is measured.
const cv::Mat& kept(cv::Mat (*make)(cv::Size), std::int64_t pixels) {
    static std::map<std::pair<cv::Mat (*)(cv::Size), std::int64_t>, cv::Mat> made;
    cv::Mat& img = made[{make, pixels}];
    if (img.empty()) img = make(sizeOf(pixels));
    return img;
}

// `call` takes a picture made by `make`, and a matrix that is the same at every call.
template <class Call>
void add(const std::string& name, cv::Mat (*make)(cv::Size), Call call) {
    growth::add(name, areas(), [make, call](std::int64_t n) {
        return [&img = kept(make, n), out = cv::Mat(), call]() mutable { call(img, out); };
    });
}

using bench::binaryParts;
using bench::colourParts;
using bench::greyParts;
using Mat = cv::Mat;

void addBinary() {
    add("contours", binaryParts, [](const Mat& img, Mat&) { orx::getContours(img, orx::ctAll); });
    add("contours_of_holes", binaryParts, [](const Mat& img, Mat&) { orx::getContours(img, orx::ctHoles); });
    add("thinning", binaryParts, [](const Mat& img, Mat& out) { orx::thinning(img, out); });
    add("fill_holes", binaryParts, [](const Mat& img, Mat& out) { orx::fillHoles(img, out); });
    add("remove_small_objects", binaryParts,
        [](const Mat& img, Mat& out) { orx::removeSmallObjects(img, out, 100); });
    add("remove_short_lines", binaryParts,
        [](const Mat& img, Mat& out) { orx::removeShortLines(img, out, 20.0); });
}

void addGrey() {
    add("threshold_otsu", greyParts, [](const Mat& img, Mat&) { orx::getThresholdValue(img, orx::tmOtsu); });
    add("threshold_four_parts", greyParts,
        [](const Mat& img, Mat& out) { orx::OTSUfourPartsThreshold(img, out, cv::MORPH_OPEN, 5); });
    add("auto_canny", greyParts, [](const Mat& img, Mat& out) { out = orx::autoCanny(img); });
    add("equalise", greyParts,
        [](const Mat& img, Mat& out) { orx::enhanceImage(img, out, orx::emEqualize); });
    add("detail_gain", greyParts,
        [](const Mat& img, Mat& out) { orx::enhanceImage(img, out, orx::emDetailGain); });
    add("flatten_light", greyParts, [](const Mat& img, Mat& out) { orx::flattenLight(img, out); });
    add("image_noise", greyParts, [](const Mat& img, Mat&) { orx::getImageNoise(img); });
    add("focus_gray_difference", greyParts, [](const Mat& img, Mat&) { AutoFocus::calcGrayDifference(img); });
    add("focus_brenner", greyParts, [](const Mat& img, Mat&) { AutoFocus::calcBrenner(img); });
    add("focus_tenengrad", greyParts, [](const Mat& img, Mat&) { AutoFocus::calcTenengrad(img); });
    add("focus_laplacian", greyParts, [](const Mat& img, Mat&) { AutoFocus::calcLaplacianVariance(img); });
    add("target_chessboard", board, [](const Mat& img, Mat&) { orx::findTarget(img, {}); });
}

void addColour() {
    add("to_gray", colourParts, [](const Mat& img, Mat& out) { out = orx::toGray(img); });
    add("gamma", colourParts, [](const Mat& img, Mat& out) { orx::correctGamma(img, out, 0.6); });
    add("stretch_log", colourParts, [](const Mat& img, Mat& out) { orx::stretchLog(img, out); });
    add("suppress_highlights", colourParts,
        [](const Mat& img, Mat& out) { orx::suppressHighlights(img, out); });
    add("white_balance", colourParts, [](const Mat& img, Mat& out) { orx::whiteBalance(img, out); });
    add("equalise_colour", colourParts,
        [](const Mat& img, Mat& out) { orx::enhanceImage(img, out, orx::emEqualize); });
}

void addEdges() {
    add("edges_sub_pixel", edge_mosaic::make,
        [contours = std::vector<ORXEdge::TContour>()](const Mat& img, Mat&) mutable {
            ORXEdge::EdgesSubPix(img, contours, 12, 36, 1.0);
        });
    add("edges_sub_pixel_metric", edge_mosaic::make,
        [contours = std::vector<ORXEdge::TMetricContour>()](const Mat& img, Mat&) mutable {
            ORXEdge::edgesSubPixMetric(img, contours);
        });
}

// Into a window of 800 x 600.
void addShow() {
    growth::add("show_picture", areas(), [](std::int64_t n) {
        auto box = std::make_shared<TPictureBox>();
        box->setWindowSize(800, 600);
        return [box, img = kept(colourParts, n)]() mutable {
            box->setImage(img, false);
            box->showImage();
        };
    });
}

// One part, anywhere and at any angle.
void addFind() {
    growth::add("find_part", areas(), [](std::int64_t n) {
        static std::map<std::int64_t, cv::Mat> made;
        static const orx::TPartModel model = matching_accuracy::teachAlone(scenes::PartKind::plate, 0, 100);
        if (made[n].empty()) {
            scenes::PartSceneSettings settings;
            settings.kind = scenes::PartKind::plate;
            settings.seed = 17;
            settings.size = sizeOf(n);
            made[n] = scenes::renderParts(settings).image;
        }
        orx::TFindOptions options;
        options.maxParts = 1;
        return [&img = made[n], options] { benchmark::DoNotOptimize(orx::findParts(img, model, options)); };
    });
}

}  // namespace

void addPictureOperators() {
    addBinary();
    addGrey();
    addColour();
    addEdges();
    addShow();
    addFind();
}

}  // namespace growth
