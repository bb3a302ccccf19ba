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

Feed::Feed(Belt& belt, TPictureBox& box, void (*draw)(const cv::Mat& picture, TPictureBox& box))
    : thread_([this, &belt, &box, draw] {
          while (!isEnding_) {
              cv::Mat picture = belt.picture();
              draw(picture, box);
              box.setImage(picture, false);
              std::this_thread::sleep_for(std::chrono::milliseconds(30));
          }
      }) {}

Feed::~Feed() {
    isEnding_ = true;
    thread_.join();
}

void drawParts(const cv::Mat& picture, TPictureBox& box) {
    cv::Mat grey, binary;
    cv::cvtColor(picture, grey, cv::COLOR_BGR2GRAY);
    cv::GaussianBlur(grey, grey, {5, 5}, 0);
    cv::threshold(grey, binary, orx::getThresholdValue(grey, orx::tmOtsu), 255, cv::THRESH_BINARY);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);

    std::vector<TDrawRect> rects;
    std::vector<TDrawCircle> circles;
    for (const std::vector<cv::Point>& contour : contours) {
        const cv::Rect part = cv::boundingRect(contour);
        const bool isCut = part.x <= 0 || part.br().x >= picture.cols;
        if (isCut || cv::contourArea(contour) < kSmallestPart) continue;
        if (!isRound(contour)) {
            rects.push_back({part.x - 4, part.y - 4, part.width + 8, part.height + 8, 2, kFrameColour});
            continue;
        }
        const orx::TCircle circle = orx::TRansacCircle(contour, 100, 500, 1.0).doRansac();
        if (circle.valid)
            circles.push_back({cvRound(circle.x), cvRound(circle.y), circle.r, 2, kCircleColour});
    }

    box.clearDraw();
    for (const TDrawRect& rect : rects) box.setDrawRect(rect);
    for (const TDrawCircle& circle : circles) box.setDrawCircle(circle);
    writeLines(box, {std::to_string(circles.size()) + " round, " + std::to_string(rects.size()) + " long"});
}

void drawLevel(const cv::Mat& picture, TPictureBox& box) {
    cv::Rect2d selection;
    if (!TPictureBox::getSelectionRect(selection)) return writeLines(box, {"draw a rectangle"});
    const cv::Rect part = cv::Rect(selection) & cv::Rect({}, picture.size());
    if (part.empty()) return writeLines(box, {"draw a rectangle"});
    const cv::Scalar mean = cv::mean(picture(part));
    writeLines(box, {"level " + zul::doubleToStr((mean[0] + mean[1] + mean[2]) / 3.0, 1),
                     std::to_string(part.width) + " x " + std::to_string(part.height)});
}

}  // namespace viewer
