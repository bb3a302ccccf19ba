// Targets and what is made of them: pages, boards drawn and found again, planes calibrated from views of a
// camera that is known, point sets laid over one another, poses.
#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;

orx::TTarget target(fuzz::Input& input) {
    orx::TTarget t;
    t.kind = input.flag() ? orx::tkDotGrid : orx::tkChessboard;
    t.columns = input.between(3, 9);
    t.rows = input.between(3, 8);
    if (input.byte() % 8U == 0) t.rows = input.integer();
    t.pitch = input.option(5, 20);
    t.diameter = input.option(0.3, 0.7) * t.pitch;
    return t;
}

void checkPages(fuzz::Input& input) {
    const orx::TTarget t = target(input);
    orx::TTargetPage page;
    page.width = input.option(50, 500);
    page.height = input.option(50, 500);
    page.scaleBar = input.flag();
    const std::string svg = orx::targetToSvg(t, page);
    const std::string pdf = orx::targetToPdf(t, page);
    require(svg.empty() == pdf.empty(), "as SVG and as PDF alike");
    if (svg.empty()) return;
    require(svg.find("</svg>") != std::string::npos, "a whole SVG");
    require(pdf.rfind("%PDF-", 0) == 0 && pdf.find("%%EOF") != std::string::npos, "a whole PDF");
}

void checkBoards(fuzz::Input& input) {
    const int width = input.between(-1, 300);
    const int height = input.between(-1, 300);
    const int square = input.between(-2, 60);
    const int margin = input.between(-3, 60);
    const int channels = input.between(0, 5);
    const int colours[2] = {input.integer(), input.integer()};
    const cv::Mat ground = orx::createBackgroundImg(width, height, channels, square, colours[0], colours[1]);
    require(ground.empty() == (width < 1 || height < 1 || square == 0),
            "a picture for sizes of one and more");
    if (!ground.empty() && square > 0) {
        const int n = ground.channels();
        const int x = input.between(0, 32767) % ground.cols;
        const int y = input.between(0, 32767) % ground.rows;
        const unsigned expected = static_cast<unsigned>(colours[(x / square + y / square) % 2]) & 0xFFU;
        require(ground.ptr(y)[x * n] == expected, "cells in turn");
    }
    const cv::Mat board = orx::createCalibrateImage({width, height}, square, margin);
    require(board.empty() == (width < 1 || height < 1), "a picture for sizes of one and more");
    if (!board.empty()) require(cv::countNonZero((board != 0) & (board != 255)) == 0, "black and white");
}

void checkFinding(fuzz::Input& input) {
    orx::TTarget t = target(input);
    t.rows = std::min(8, std::max(3, t.rows));
    const double stated = t.diameter / t.pitch;
    const double share =
        stated > 0 && stated < 1 ? stated : 0.5;  // drawn so where the target's is no sound one
    const int pitch = input.between(8, 24);
    const int left = input.between(0, 40);
    const unsigned grain = 1 + input.byte() % 12U;
    cv::Mat image(left + (t.rows + 2) * pitch + 8, left + (t.columns + 2) * pitch + 8, CV_8UC1,
                  cv::Scalar(220));
    if (t.kind == orx::tkChessboard) {
        for (int y = 0; y <= t.rows; ++y) {
            for (int x = 0; x <= t.columns; ++x) {
                if ((x + y) % 2 == 0)
                    image(cv::Rect(left + 4 + x * pitch, left + 4 + y * pitch, pitch, pitch)) = 40;
            }
        }
    } else {
        for (int y = 1; y <= t.rows; ++y) {
            for (int x = 1; x <= t.columns; ++x) {
                const cv::Point at{16 * (left + x * pitch), 16 * (left + y * pitch)};
                cv::circle(image, at, static_cast<int>(8 * pitch * share), cv::Scalar(40), cv::FILLED,
                           cv::LINE_AA, 4);
            }
        }
    }
    cv::Point2f corners[4] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    cv::Point2f moved[4];
    for (int i = 0; i < 4; ++i) {
        corners[i] = {corners[i].x * static_cast<float>(image.cols),
                      corners[i].y * static_cast<float>(image.rows)};
        const cv::Point by{input.between(-12, 12), input.between(-12, 12)};
        moved[i] = corners[i] + cv::Point2f(by);
    }
    cv::Mat seen;
    cv::warpPerspective(image, seen, cv::getPerspectiveTransform(corners, moved), image.size(),
                        cv::INTER_LINEAR, cv::BORDER_CONSTANT, cv::Scalar(220));
    unsigned state = 1;
    for (int y = 0; y < seen.rows; ++y) {
        for (int x = 0; x < seen.cols; ++x) {
            state = state * 1664525U + 1013904223U;
            seen.at<uchar>(y, x) =
                cv::saturate_cast<uchar>(seen.at<uchar>(y, x) + static_cast<int>((state >> 16U) % grain));
        }
    }
    const orx::TTargetView view = orx::findTarget(seen, t);
    require(view.found == view.problem.empty(), "a problem tells why it is not found");
    if (!view.found) return;
    const auto count = static_cast<std::size_t>(t.columns * t.rows);
    require(view.pixels.size() == count && view.plane.size() == count && view.deviations.size() == count,
            "all points");
    for (const cv::Point2d& p : view.pixels)
        require(p.x > -2 && p.y > -2 && p.x < seen.cols + 1 && p.y < seen.rows + 1,
                "points lie in the picture");
    for (const double d : view.deviations) require(d > 0 && std::isfinite(d), "deviations are told");
}

// Views as a camera without distortion has them, each point moved a little.
std::vector<orx::TTargetView> views(fuzz::Input& input) {
    std::vector<orx::TTargetView> list(static_cast<std::size_t>(input.between(0, 5)));
    const double focal = 300 + 4.0 * input.byte();
    const int columns = input.between(3, 7);
    const double noise = input.byte() / 400.0;
    unsigned state = input.byte();
    const auto grain = [&] {
        state = state * 1664525U + 1013904223U;
        return ((state >> 16U) % 201 / 100.0 - 1) * noise;
    };
    for (orx::TTargetView& view : list) {
        view.found = input.byte() % 16U != 0;
        view.imageSize = {640, 480};
        const cv::Vec3d turn{input.between(-60, 60) / 100.0, input.between(-60, 60) / 100.0,
                             input.between(-60, 60) / 100.0};
        const cv::Vec3d shift{input.between(-40, 10) * 1.0, input.between(-40, 10) * 1.0,
                              100.0 + input.byte()};
        const double s[3] = {std::sin(turn[0]), std::sin(turn[1]), std::sin(turn[2])};
        const double c[3] = {std::cos(turn[0]), std::cos(turn[1]), std::cos(turn[2])};
        const cv::Matx33d rx(1, 0, 0, 0, c[0], -s[0], 0, s[0], c[0]);
        const cv::Matx33d ry(c[1], 0, s[1], 0, 1, 0, -s[1], 0, c[1]);
        const cv::Matx33d rz(c[2], -s[2], 0, s[2], c[2], 0, 0, 0, 1);
        for (int i = 0; i < columns * 5; ++i) {
            const cv::Point2d p(10.0 * (i % columns), 10.0 * (i / columns));
            const cv::Vec3d q = rx * ry * rz * cv::Vec3d(p.x, p.y, 0) + shift;
            view.plane.push_back(p);
            const double x = 320 + focal * q[0] / q[2] + grain();
            view.pixels.push_back({x, 240 + focal * q[1] / q[2] + grain()});
            view.deviations.push_back(0.02);
        }
        if (input.byte() % 16U == 0 && !view.pixels.empty())
            view.pixels[0] = {input.number(), input.number()};
        if (input.byte() % 32U == 0) view.deviations.pop_back();
    }
    return list;
}

void checkPlane(fuzz::Input& input) {
    orx::TPlaneOptions options;
    options.lens = input.byte() % 4U != 0;
    options.radial = input.between(0, 3);
    options.tangential = input.flag();
    options.planeView = input.between(0, 3) - (input.byte() % 16U == 0 ? 2 : 0);
    options.mostRms = 5;
    const bool isRaised = options.lens && input.flag();
    options.height = isRaised ? input.option(-5, 5) : 0;
    options.heightDeviation = isRaised ? input.option(0, 1) : 0;
    options.scaleDeviation = input.flag() ? input.option(0, 0.01) : 0;
    const std::vector<orx::TTargetView> seen = views(input);
    const orx::TPlaneCalibration plane = orx::calibratePlane(seen, options);
    require(*orx::planeStatusText(plane.status) != 0, "a status has a text");
    orx::planeWarnings(plane, seen);
    if (!plane.valid()) {
        require(std::isnan(orx::imageToPlane(plane, cv::Point2d(1, 2)).x), "no calibration maps nothing");
        return;
    }
    require(plane.rms <= options.mostRms && plane.noise >= 0, "as near as asked for");
    const std::vector<cv::Point2d> pixels{{300, 200}, {340, 260}};
    const std::vector<cv::Point2d> places = orx::imageToPlane(plane, pixels);
    const std::vector<cv::Point2d> back = orx::planeToImage(plane, places);
    for (std::size_t i = 0; i < 2; ++i) {
        if (!std::isnan(back[i].x)) require(cv::norm(back[i] - pixels[i]) < 1e-6, "to the plane and back");
    }
    const cv::Mat c = orx::planeCovariance(plane, pixels);
    if (!c.empty()) {
        for (int i = 0; i < 4; ++i) require(c.at<double>(i, i) >= 0, "variances");
        require(cv::norm(c, c.t(), cv::NORM_INF) <= 1e-9 * cv::norm(c), "a covariance is symmetric");
    }
    const orx::TPlaneCalibration other = orx::relocatePlane(plane, seen.back(), options);
    require(!other.valid() || other.lens, "another plane of the same lens");
    for (const orx::TTargetView& view : seen)
        require(orx::planeResiduals(plane, view).size() <= view.pixels.size(), "a residual for each point");
}

void checkSets(fuzz::Input& input) {
    std::vector<cv::Point3d> a;
    std::vector<cv::Point3d> b;
    const double turn = input.byte() / 40.0;
    const cv::Point3d shift{input.option(-99, 99), input.option(-99, 99), input.option(-99, 99)};
    for (int i = input.between(0, 12); i > 0; --i) {
        const cv::Point3d p{input.number(), input.number(), input.number()};
        a.push_back(p);
        b.push_back({std::cos(turn) * p.x - std::sin(turn) * p.y + shift.x,
                     std::sin(turn) * p.x + std::cos(turn) * p.y + shift.y, p.z + shift.z});
    }
    if (input.byte() % 16U == 0) b.push_back({});
    cv::Mat m;
    const bool solved = orx::calcAXequalsB(a, b, m);
    require(solved == (a.size() == b.size() && a.size() >= 4) || !solved, "four pairs or more");
    const bool modest =
        std::all_of(a.begin(), a.end(), [](const cv::Point3d& p) { return cv::norm(p) < 1e4; });
    if (solved && modest && cv::norm(shift) < 1e4) {
        const cv::Mat r = m(cv::Rect(0, 0, 3, 3));
        require(cv::norm(r * r.t() - cv::Mat::eye(3, 3, CV_64F)) < 1e-6, "a rotation");
        for (std::size_t i = 0; i < a.size(); ++i) {
            const cv::Mat q = m * (cv::Mat_<double>(4, 1) << a[i].x, a[i].y, a[i].z, 1);
            require(std::abs(q.at<double>(0) - b[i].x) + std::abs(q.at<double>(1) - b[i].y) +
                            std::abs(q.at<double>(2) - b[i].z) <
                        1e-2,
                    "points come to lie on one another");
        }
    }
    orx::cpuTrsfMat({a.begin(), a.end()}, {b.begin(), b.end()});
    const zul::TPoint6D pose{
        1, 2, 3, input.option(-180, 180), input.option(-180, 180), input.option(-180, 180)};
    if (!std::isfinite(pose.rx + pose.ry + pose.rz)) return;  // ends the process, as it says
    if (std::abs(pose.rx) > 1e6 || std::abs(pose.ry) > 1e6 || std::abs(pose.rz) > 1e6) return;
    const cv::Mat t = orx::TPoint6DToMatrix().Point6D2Matrix44(pose);
    require(t.at<double>(0, 3) == 1 && t.at<double>(2, 3) == 3 && t.at<double>(3, 3) == 1, "a transform");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkPages, checkBoards, checkFinding, checkPlane, checkSets}, bytes, size);
    return 0;
}
