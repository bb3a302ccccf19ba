#include "examples/calibration/camera_calibration.h"

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "support/picture_file.h"

namespace calibration {
namespace {

std::vector<cv::Point3f> cornersInSpace(const Board& board) {
    std::vector<cv::Point3f> corners;
    for (int row = 0; row < board.corners.height; ++row) {
        for (int column = 0; column < board.corners.width; ++column) {
            corners.emplace_back(static_cast<float>(column * board.square),
                                 static_cast<float>(row * board.square), 0.F);
        }
    }
    return corners;
}

}  // namespace

std::vector<cv::Point2f> findCorners(const cv::Mat& grey, const Board& board) {
    std::vector<cv::Point2f> corners;
    if (!cv::findChessboardCorners(grey, board.corners, corners)) return {};
    cv::cornerSubPix(grey, corners, cv::Size(5, 5), cv::Size(-1, -1),
                     cv::TermCriteria(cv::TermCriteria::EPS | cv::TermCriteria::COUNT, 50, 1e-4));
    return corners;
}

std::vector<Photograph> readPhotographs(const std::vector<std::string>& files, const Board& board,
                                        cv::Size& imageSize) {
    std::vector<Photograph> photographs;
    for (const std::string& file : files) {
        Photograph photograph;
        photograph.file = file;
        const cv::Mat grey = host::readPicture(std::filesystem::u8path(file), cv::IMREAD_GRAYSCALE);
        if (imageSize.empty()) imageSize = grey.size();
        if (!grey.empty() && grey.size() == imageSize) photograph.corners = findCorners(grey, board);
        photographs.push_back(photograph);
    }
    return photographs;
}

Calibration calibrate(std::vector<Photograph>& photographs, const Board& board, cv::Size imageSize) {
    std::vector<std::vector<cv::Point2f>> seen;
    for (const Photograph& photograph : photographs) {
        if (!photograph.corners.empty()) seen.push_back(photograph.corners);
    }
    Calibration result;
    if (seen.size() < 3) return result;
    const std::vector<std::vector<cv::Point3f>> inSpace(seen.size(), cornersInSpace(board));
    std::vector<cv::Mat> rotations;
    std::vector<cv::Mat> translations;
    cv::Mat intrinsicDeviations;
    cv::Mat extrinsicDeviations;
    cv::Mat errors;
    result.error =
        cv::calibrateCamera(inSpace, seen, imageSize, result.intrinsic, result.distortion, rotations,
                            translations, intrinsicDeviations, extrinsicDeviations, errors);
    result.imageSize = imageSize;
    result.valid = true;
    int used = 0;
    for (Photograph& photograph : photographs) {
        if (!photograph.corners.empty()) photograph.error = errors.at<double>(used++);
    }
    return result;
}

cv::Size targetCorners(cv::Size imageSize, int squareSize, int margin) {
    const auto squares = [&](int length) { return (length - 2 * margin + 1) / squareSize; };
    return {squares(imageSize.width) - 1, squares(imageSize.height) - 1};
}

}  // namespace calibration
