#include "orxFunctions/display/fit_picture_internal.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace orx::display {
namespace {

// From this zoom on single pixels are looked at, and shown as squares.
constexpr double kSharpZoom = 8.0;

int toColour(int channels) { return channels == 1 ? cv::COLOR_GRAY2BGR : cv::COLOR_BGRA2BGR; }

void deepTo8Bit(const cv::Mat& image, cv::Mat& out) {
    switch (image.depth()) {
        case CV_8S:
            return image.convertTo(out, CV_8U, 1.0, 128.0);
        case CV_16U:
            return image.convertTo(out, CV_8U, 1.0 / 256.0);
        case CV_16S:
            return image.convertTo(out, CV_8U, 1.0 / 256.0, 128.0);
        case CV_32S:
            return image.convertTo(out, CV_8U, 1.0 / 16777216.0, 128.0);
        case CV_8U:
            return image.copyTo(out);
        default:
            return image.convertTo(out, CV_8U, 255.0);
    }
}

void copyPart(const cv::Mat& from, const cv::Rect& part, cv::Mat& to) {
    if (!part.empty()) from(part).copyTo(to(part));
}

// Paints the background where the image will not be.
void paintAround(const cv::Mat& background, const cv::Rect& image, cv::Mat& picture) {
    const int right = image.x + image.width;
    const int bottom = image.y + image.height;
    copyPart(background, {0, 0, picture.cols, image.y}, picture);
    copyPart(background, {0, bottom, picture.cols, picture.rows - bottom}, picture);
    copyPart(background, {0, image.y, image.x, image.height}, picture);
    copyPart(background, {right, image.y, picture.cols - right, image.height}, picture);
}

// One direction of the zoomed window: pixel x of the image reaches from start + x * scale to start + (x + 1)
// * scale.
struct Axis {
    double scale;
    double start;
    int imageSize;
    int windowSize;

    int toWindow(double x) const {
        return static_cast<int>(std::clamp(std::round(start + x * scale), 0.0, double(windowSize)));
    }
    // The pixels of the image that can be seen, and `margin` more on either side.
    cv::Range visible(int margin) const {
        const double first = std::floor(-start / scale) - margin;
        const double last = std::ceil((windowSize - start) / scale) + margin;
        const double size = imageSize;
        return {static_cast<int>(std::clamp(first, 0.0, size)),
                static_cast<int>(std::clamp(last, 0.0, size))};
    }
    cv::Range covered(const cv::Range& pixels) const {
        return {toWindow(pixels.start), toWindow(pixels.end)};
    }
    // The place in the pixels from `first` on that is seen in window pixel 0 of a part at `from`, counted
    // between the pixels' centres.
    double origin(int from, int first) const { return (from + 0.5 - start) / scale - 0.5 - first; }
};

}  // namespace

bool isShowable(const cv::Mat& image) {
    const int channels = image.channels();
    return image.dims == 2 && !image.empty() && (channels == 1 || channels == 3 || channels == 4);
}

void toBgr(const cv::Mat& image, cv::Mat& out) {
    if (image.depth() != CV_8U) {
        cv::Mat shallow;
        deepTo8Bit(image, shallow);
        return toBgr(shallow, out);
    }
    if (image.channels() == 3)
        image.copyTo(out);
    else
        cv::cvtColor(image, out, toColour(image.channels()));
}

cv::Mat PictureFitter::fit(const cv::Mat& image, const FitGeometry& fit, const cv::Mat& background) {
    picture_.create(background.size(), CV_8UC3);
    const cv::Rect place = cv::Rect(static_cast<int>(fit.offsetX), static_cast<int>(fit.offsetY),
                                    static_cast<int>(fit.shownWidth), static_cast<int>(fit.shownHeight)) &
                           cv::Rect({}, picture_.size());
    paintAround(background, place, picture_);
    if (!place.empty()) resizeInto(image, picture_(place));
    return picture_;
}

cv::Mat PictureFitter::stretch(const cv::Mat& image, cv::Size window) {
    cv::resize(halvedFor(image, window), stretched_, window, 0, 0, cv::INTER_LINEAR);
    return stretched_;
}

cv::Mat PictureFitter::zoom(const cv::Mat& image, const FitGeometry& fit, const Zoom& zoom,
                            const cv::Mat& background) {
    background.copyTo(picture_);
    const double zx = zoom.width / picture_.cols;
    const double zy = zoom.height / picture_.rows;
    const Axis x{zx * fit.shownWidth / image.cols, fit.offsetX * zx - zoom.panX, image.cols, picture_.cols};
    const Axis y{zy * fit.shownHeight / image.rows, fit.offsetY * zy - zoom.panY, image.rows, picture_.rows};
    if (!(x.scale > 0.0) || !(y.scale > 0.0)) return picture_;

    const bool shrinks = x.scale < 1.0 || y.scale < 1.0;
    const cv::Range columns = x.visible(shrinks ? 0 : 2);
    const cv::Range rows = y.visible(shrinks ? 0 : 2);
    const cv::Range toColumns = x.covered(columns);
    const cv::Range toRows = y.covered(rows);
    if (columns.empty() || rows.empty() || toColumns.empty() || toRows.empty()) return picture_;

    const cv::Mat seen = image(rows, columns);
    const cv::Mat place = picture_(toRows, toColumns);
    if (shrinks) {
        resizeInto(seen, place);
    } else {
        const double inverse[6] = {1.0 / x.scale, 0.0,           x.origin(toColumns.start, columns.start),
                                   0.0,           1.0 / y.scale, y.origin(toRows.start, rows.start)};
        magnifyInto(seen, inverse, zoom.factor > kSharpZoom ? cv::INTER_NEAREST : cv::INTER_LINEAR, place);
    }
    return picture_;
}

cv::Mat PictureFitter::copy(const cv::Mat& image) {
    toBgr(image, picture_);
    return picture_;
}

void PictureFitter::resizeInto(const cv::Mat& image, cv::Mat out) {
    const cv::Mat& source = halvedFor(image, out.size());
    if (image.type() == CV_8UC3) return cv::resize(source, out, out.size(), 0, 0, cv::INTER_LINEAR);
    cv::resize(source, resized_, out.size(), 0, 0, cv::INTER_LINEAR);
    toBgr(resized_, out);
}

void PictureFitter::magnifyInto(const cv::Mat& image, const double inverse[6], int interpolation,
                                cv::Mat out) {
    const cv::Matx23d matrix(inverse);
    const int flags = interpolation | cv::WARP_INVERSE_MAP;
    if (image.type() == CV_8UC3)
        return cv::warpAffine(image, out, matrix, out.size(), flags, cv::BORDER_REPLICATE);
    cv::warpAffine(image, resized_, matrix, out.size(), flags, cv::BORDER_REPLICATE);
    toBgr(resized_, out);
}

// Linear interpolation reads two pixels by two for a pixel of the result. A larger image is halved first, as
// often as needed, by means over two by two pixels: nothing thin is missed, and this takes a tenth of the
// time of a mean over the exact area. An odd last row or column is left out.
const cv::Mat& PictureFitter::halvedFor(const cv::Mat& image, cv::Size size) {
    const cv::Mat* last = &image;
    std::size_t level = 0;
    while (last->cols >= 2 * size.width && last->rows >= 2 * size.height && last->cols > 1 &&
           last->rows > 1) {
        const cv::Size half = last->size() / 2;
        cv::resize((*last)({{}, half * 2}), halves_[level], half, 0, 0, cv::INTER_AREA);
        last = &halves_[level++];
    }
    return *last;
}

}  // namespace orx::display
