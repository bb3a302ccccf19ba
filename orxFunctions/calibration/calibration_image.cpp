#include "orxFunctions/calibration/calibration_image.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

constexpr std::int64_t kMostBytes = std::int64_t{1} << 30U;
constexpr unsigned char kWhite = 255;

bool isDrawable(int width, int height, int channels, const char* function) {
    if (width > 0 && height > 0 && std::int64_t{width} * height <= kMostBytes / channels) return true;
    return refuse(rcImageSize, function, "a picture of %d x %d with %d channels; 1 byte to 1 GiB is taken",
                  width, height, channels);
}

cv::Mat refuseMemory(const char* function) {
    refuse(rcMemory, function);
    return {};
}

// Both kinds of picture repeat two rows: one begins with one colour, the other with the other.
using Row = std::vector<unsigned char>;

void copyRow(const Row& row, cv::Mat& image, int y) { std::memcpy(image.ptr(y), row.data(), row.size()); }

// The squares along one axis of a chessboard: how many fit, and where the pattern begins once it is centred.
//
// Square i of an axis begins at margin + i * size. Starting from (0, 0), the pattern grows by two squares to
// the right, by two down and by one diagonally: it reaches each square (i, j) with an even i + j, and none
// other.
class ChessAxis {
  public:
    ChessAxis(std::int64_t length, std::int64_t squareSize, std::int64_t margin)
        : length_(length), size_(squareSize), margin_(margin) {
        const std::int64_t room = length - margin - margin - squareSize + 1;  // for the last square's start
        count_ = squareSize > 0 && room >= 0 ? room / squareSize + 1 : 0;
    }

    std::int64_t count() const { return count_; }

    // Centres the pattern, whose last square drawn has that number: the canvas moves by a whole number of
    // pixels.
    void centre(std::int64_t lastSquare) {
        const std::int64_t end = std::max<std::int64_t>(0, margin_ + (lastSquare + 1) * size_ - 1);
        shift_ = (length_ - end + margin_) / 2 - margin_;
    }

    // The number of the square that covers a pixel of the centred picture; -1 for none. Before it is centred
    // the pattern ends where the canvas does.
    std::int64_t squareAt(std::int64_t pixel) const {
        const std::int64_t onCanvas = pixel - shift_;
        if (onCanvas < std::max<std::int64_t>(0, margin_) || onCanvas >= length_) return -1;
        const std::int64_t square = (onCanvas - margin_) / size_;
        return square < count_ ? square : -1;
    }

  private:
    std::int64_t length_;
    std::int64_t size_;
    std::int64_t margin_;
    std::int64_t count_ = 0;
    std::int64_t shift_ = 0;
};

// The number of the last square along an axis that has a partner of even sum across it.
std::int64_t lastDrawn(const ChessAxis& along, const ChessAxis& across) {
    const std::int64_t last = along.count() - 1;
    return last % 2 == 1 && across.count() == 1 ? last - 1 : last;
}

Row chessRow(const ChessAxis& columns, int width, int parity) {
    Row row(static_cast<std::size_t>(width), kWhite);
    for (int x = 0; x < width; ++x) {
        const std::int64_t square = columns.squareAt(x);
        if (square >= 0 && square % 2 == parity) row[static_cast<std::size_t>(x)] = 0;
    }
    return row;
}

cv::Mat drawBackground(int width, int height, int cellSize, int colour0, int colour1) {
    const std::int64_t size = std::abs(static_cast<std::int64_t>(cellSize));
    const unsigned char colours[] = {static_cast<unsigned char>(colour0),
                                     static_cast<unsigned char>(colour1)};
    Row rows[2];
    for (int parity = 0; parity < 2; ++parity) {
        rows[parity].resize(static_cast<std::size_t>(width));
        for (int c = 0; c < width; ++c)
            rows[parity][static_cast<std::size_t>(c)] = colours[(c / size + parity) % 2];
    }
    cv::Mat image(height, width, CV_8UC1);
    for (int r = 0; r < height; ++r) copyRow(rows[r / size % 2], image, r);
    return image;
}

cv::Mat drawChessboard(cv::Size imageSize, int squareSize, int margin) {
    cv::Mat image(imageSize, CV_8UC1, cv::Scalar::all(kWhite));
    ChessAxis columns(imageSize.width, squareSize, margin);
    ChessAxis lines(imageSize.height, squareSize, margin);
    if (columns.count() == 0 || lines.count() == 0) return image;

    const std::int64_t lastColumn = lastDrawn(columns, lines);
    lines.centre(lastDrawn(lines, columns));
    columns.centre(lastColumn);
    const Row rows[] = {chessRow(columns, imageSize.width, 0), chessRow(columns, imageSize.width, 1)};
    for (int y = 0; y < imageSize.height; ++y) {
        const std::int64_t line = lines.squareAt(y);
        if (line >= 0) copyRow(rows[line % 2], image, y);
    }
    return image;
}

}  // namespace

cv::Mat createBackgroundImg(int width, int height, int channels, int cellSize, int colour0, int colour1) {
    const int channelsDrawn = channels == 3 || channels == 4 ? channels : 1;
    constexpr const char* kFunction = "createBackgroundImg";
    if (!isDrawable(width, height, channelsDrawn, kFunction)) return {};
    if (cellSize == 0) {
        refuse(rcOption, kFunction, "cells of 0 pixels");
        return {};
    }
    try {
        cv::Mat image = drawBackground(width, height, cellSize, colour0, colour1);
        if (channelsDrawn == 3) cv::cvtColor(image, image, cv::COLOR_GRAY2BGR);
        if (channelsDrawn == 4) cv::cvtColor(image, image, cv::COLOR_GRAY2BGRA);
        return image;
    } catch (const std::exception&) {  // no memory
        return refuseMemory(kFunction);
    }
}

cv::Mat createCalibrateImage(cv::Size imageSize, int squareSize, int margin) {
    if (!isDrawable(imageSize.width, imageSize.height, 1, "createCalibrateImage")) return {};
    try {
        return drawChessboard(imageSize, squareSize, margin);
    } catch (const std::exception&) {  // no memory
        return refuseMemory("createCalibrateImage");
    }
}

}  // namespace orx
