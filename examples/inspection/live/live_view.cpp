#include "inspection/live/live_view.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace inspection {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kBetweenPictures{100};
constexpr double kTextShare = 0.05;  // of the picture's height

cv::Scalar colourOf(orx::TVerdict verdict) {
    if (verdict == orx::vdPass) return {70, 190, 70};
    if (verdict == orx::vdFail) return {60, 60, 235};
    return verdict == orx::vdNoLimits ? cv::Scalar(210, 160, 60) : cv::Scalar(0, 190, 230);
}

// The verdict and the counts under a picture, where they hide nothing of it.
cv::Mat withLine(const cv::Mat& drawn, const std::string& line, orx::TVerdict verdict) {
    const int height = std::max(16, cvRound(kTextShare * drawn.rows));
    cv::Mat picture;
    cv::copyMakeBorder(drawn, picture, 0, 2 * height, 0, 0, cv::BORDER_CONSTANT, cv::Scalar(25, 25, 25));
    const auto write = [&](const std::string& text, int row, const cv::Scalar& colour) {
        int base = 0;
        double scale = height / 32.0;
        const cv::Size size = cv::getTextSize(text, cv::FONT_HERSHEY_SIMPLEX, scale, 1, &base);
        scale *= std::min(1.0, 0.96 * picture.cols / std::max(1, size.width));
        const cv::Point at(height / 3, drawn.rows + row * height + 3 * height / 4);
        cv::putText(picture, text, at, cv::FONT_HERSHEY_SIMPLEX, scale, colour, height > 30 ? 2 : 1,
                    cv::LINE_AA);
    };
    write(orx::verdictText(verdict), 0, colourOf(verdict));
    write(line, 1, cv::Scalar(230, 230, 230));
    cv::rectangle(picture, {0, 0, picture.cols, picture.rows}, colourOf(verdict), std::max(2, height / 8));
    return picture;
}

}  // namespace

cv::Mat sideBySide(const std::vector<cv::Mat>& pictures) {
    cv::Size cell;
    for (const cv::Mat& picture : pictures)
        cell = {std::max(cell.width, picture.cols), std::max(cell.height, picture.rows)};
    if (cell.empty()) return {};
    const int count = static_cast<int>(pictures.size());
    const int columns = static_cast<int>(std::ceil(std::sqrt(count)));
    const int rows = (count + columns - 1) / columns;
    cv::Mat all(rows * cell.height, columns * cell.width, CV_8UC3, cv::Scalar(25, 25, 25));
    for (int i = 0; i < count; ++i) {
        const cv::Mat& picture = pictures[static_cast<std::size_t>(i)];
        const cv::Point at(i % columns * cell.width, i / columns * cell.height);
        if (!picture.empty()) picture.copyTo(all(cv::Rect(at, picture.size())));
    }
    return all;
}

bool LiveView::open() { return window_.open(title_, {1200, 800}); }

bool LiveView::isDue(int camera) const {
    return Clock::now() - pictures_[static_cast<std::size_t>(camera)].at >= kBetweenPictures;
}

void LiveView::show(int camera, const cv::Mat& drawn, const std::string& line, orx::TVerdict verdict) {
    if (drawn.type() != CV_8UC3) return;
    Shown& shown = pictures_[static_cast<std::size_t>(camera)];
    shown.picture = withLine(drawn, line, verdict);
    shown.at = Clock::now();
    std::vector<cv::Mat> all;
    for (const Shown& one : pictures_) all.push_back(one.picture);
    window_.show(sideBySide(all));
}

bool LiveView::goesOn() { return window_.handleEvents(); }

}  // namespace inspection
