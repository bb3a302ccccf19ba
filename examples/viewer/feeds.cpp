#include "viewer/feeds.h"

#include <algorithm>
#include <chrono>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

namespace viewer {
namespace {

const cv::Scalar kFrameColour(60, 200, 255);
const cv::Scalar kCircleColour(90, 235, 110);
const cv::Scalar kTextColour(255, 255, 255);
constexpr double kSmallestPart = 400.0;  // square pixels
constexpr float kRoundness = 0.85F;      // of the sides' ratio

bool isRound(const std::vector<cv::Point>& contour) {
    const cv::Size2f sides = cv::minAreaRect(contour).size;
    return std::min(sides.width, sides.height) > kRoundness * std::max(sides.width, sides.height);
}

void writeLines(TPictureBox& box, const std::vector<std::string>& lines) {
    TDrawTexts texts{lines, 2, 1, cv::FONT_HERSHEY_SIMPLEX, kTextColour};
    box.setDrawText(texts);
}

}  // namespace

Feed::Feed(Belt& belt, TPictureBox& box, void (*show)(cv::Mat& picture, TPictureBox& box))
    : thread_([this, &belt, &box, show] {
          while (!isEnding_) {
              cv::Mat picture = belt.picture();
              show(picture, box);
              std::this_thread::sleep_for(std::chrono::milliseconds(30));
          }
      }) {}

Feed::~Feed() {
    isEnding_ = true;
    thread_.join();
}

void showParts(cv::Mat& picture, TPictureBox& box) {
    cv::Mat grey, binary;
    cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
    cv::GaussianBlur(grey, grey, {5, 5}, 0);
    cv::threshold(grey, binary, orx::getThresholdValue(grey, orx::tmOtsu), 255, cv::THRESH_BINARY);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);

    int round = 0;
    int oblong = 0;
    TOverlay marks;
    for (const std::vector<cv::Point>& contour : contours) {
        const cv::Rect part = cv::boundingRect(contour);
        const bool isCut = part.x <= 0 || part.br().x >= picture.cols;
        if (isCut || cv::contourArea(contour) < kSmallestPart) continue;
        if (!isRound(contour)) {
            marks.setStyle({kFrameColour, 2, 1.0});
            marks.rectangle(cv::Rect2d(part.x - 4, part.y - 4, part.width + 8, part.height + 8));
            ++oblong;
            continue;
        }
        const orx::TCircle circle = orx::TRansacCircle(contour, 100, 500, 1.0).doRansac();
        if (!circle.valid) continue;
        marks.setStyle({kCircleColour, 2, 1.0}).circle({circle.x, circle.y}, circle.r);
        ++round;
    }
    box.setPicture(picture, marks);
    writeLines(box, {std::to_string(round) + " round, " + std::to_string(oblong) + " long"});
}

void showLevel(cv::Mat& picture, TPictureBox& box) {
    box.setImage(picture, false);
    cv::Rect2d selection;
    const bool hasSelection = TPictureBox::getSelectionRect(selection);
    const cv::Rect part = cv::Rect(selection) & cv::Rect({}, picture.size());
    if (!hasSelection || part.empty()) return writeLines(box, {"draw a rectangle"});
    const cv::Scalar mean = cv::mean(picture(part));
    writeLines(box, {"level " + zul::doubleToStr((mean[0] + mean[1] + mean[2]) / 3.0, 1),
                     std::to_string(part.width) + " x " + std::to_string(part.height)});
}

}  // namespace viewer
