#include <cstdio>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"

int main(int, char** arguments) {
    cv::Mat image = cv::imread(arguments[1], cv::IMREAD_GRAYSCALE), binary;
    cv::threshold(image, binary, orx::getThresholdValue(image, orx::tmOtsu), 255, cv::THRESH_BINARY);
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(binary, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);
    for (const std::vector<cv::Point>& contour : contours) {
        const orx::TCircle circle = orx::TRansacCircle(contour, 500, 500, 1.0).doRansac();
        if (circle.valid) std::printf("circle at (%.1f, %.1f), radius %.1f\n", circle.x, circle.y, circle.r);
    }
}
