#include "tests/soak/frame_ledger.h"

#include <algorithm>
#include <cmath>

namespace soak {
namespace {

// Of the picture's smaller side, as drivers/TQVisionDriver/scene_source.h says.
constexpr double kDiskRadius = 0.18;
constexpr double kTolerance = 0.5;  // pixels

// The largest whole circle. Nothing is found where noise hides it.
orx::TMeasuredCircle findDisk(const cv::Mat& picture) {
    ORXEdge::TMetricOptions finder;
    finder.automaticThresholds = true;
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(picture, edges, finder);
    orx::TFitOptions options;
    options.loss = orx::flTukey;
    orx::TMeasuredCircle largest;
    for (const ORXEdge::TMetricContour& edge : edges) {
        const orx::TMeasuredCircle circle = orx::fitCircleGeometric(edge, finder.sigma, options);
        if (circle.valid() && circle.sweep > 300 && circle.radius > largest.radius) largest = circle;
    }
    return largest;
}

std::string text(const char* what, double got, double wanted) {
    return std::string(what) + " " + std::to_string(got) + " in place of " + std::to_string(wanted);
}

}  // namespace

std::string FrameLedger::follow(const orx::TFrame& frame) {
    const std::uint64_t missing = frame.lostBefore + frame.droppedBefore;
    ++tally_.taken;
    tally_.lost += frame.lostBefore;
    tally_.dropped += frame.droppedBefore;
    const bool isNext =
        frame.start > start_ || (frame.start == start_ && frame.number == number_ + 1 + missing);
    start_ = frame.start;
    number_ = frame.number;
    if (frame.camera != camera_) return text("camera", frame.camera, camera_);
    if (!frame.isNumbered) return "a frame without a number";
    return isNext ? "" : "frame " + std::to_string(frame.number) + " does not follow";
}

std::string FrameLedger::measure(const cv::Mat& picture, orx::TMeasuredCircle& disk) {
    disk = findDisk(picture);
    if (!disk.valid()) return "no disk was found";
    const double radius = kDiskRadius * std::min(picture.rows, picture.cols);
    ++tally_.measured;
    return std::abs(disk.radius - radius) < kTolerance ? "" : text("a disk of radius", disk.radius, radius);
}

std::string FrameLedger::enter(const orx::TFrame& frame, orx::TMeasuredCircle& disk) {
    const std::string problem = follow(frame);
    if (!problem.empty()) return problem;
    if (frame.image.empty()) return "a frame without a picture";
    if (camera_ < kScenes) return measure(frame.image, disk);
    double lowest = 0.0;
    double highest = 0.0;
    cv::minMaxLoc(frame.image, &lowest, &highest);
    if (lowest != highest) return "a picture of two";
    if (isDevice_) return "";  // it counts on when it is not asked
    const auto level = static_cast<double>((frame.number - 1) % kPictures);
    return lowest == level ? "" : text("a picture of level", lowest, level);
}

}  // namespace soak
