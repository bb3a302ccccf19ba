#include <cstdio>
#include <opencv2/imgcodecs.hpp>

#include "orxFunctions/orxfunctions.h"

int refused() {
    std::fprintf(stderr, "%s\n", orx::lastRefusal().text.c_str());
    return 1;
}

int main(int count, char** arguments) {
    if (count != 3) {
        std::fprintf(stderr, "usage: find LESSON PICTURE\n");
        return 2;
    }
    const cv::Mat lesson = cv::imread(arguments[1], cv::IMREAD_GRAYSCALE);  // the part alone
    const cv::Mat image = cv::imread(arguments[2], cv::IMREAD_GRAYSCALE);
    const orx::TPartModel model = orx::teachPart(lesson, cv::Rect(cv::Point(), lesson.size()));
    if (!model.valid()) return refused();
    for (const std::string& warning : model.report().warnings) std::printf("%s\n", warning.c_str());

    orx::TFindOptions options;
    options.maxParts = 10;
    options.minScore = 0.6;  // of the outline must be seen
    const orx::TFindResult found = orx::findParts(image, model, options);
    if (!found.valid()) return refused();
    for (const orx::TFoundPart& part : found.parts) {
        std::printf("(%.3f, %.3f) +- (%.3f, %.3f), %.3f +- %.3f degrees, score %.2f\n", part.pose.x,
                    part.pose.y, part.deviationX, part.deviationY, part.pose.angle, part.deviationAngle,
                    part.score);
    }
}
