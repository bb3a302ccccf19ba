#include "calibration/target_files.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "support/picture_file.h"

namespace calibration {
namespace {

namespace fs = std::filesystem;

std::string writePng(const TargetFiles& files) {
    const cv::Size size(files.pngWidth, files.pngHeight);
    const cv::Mat target = orx::createCalibrateImage(size, files.pngSquare, files.pngMargin);
    if (target.empty() || !host::writePicture(fs::u8path(files.png), target))
        return "can't write " + files.png;
    const cv::Size corners = targetCorners(size, files.pngSquare, files.pngMargin);
    std::printf("%s: a board of %d x %d inner corners\n", files.png.c_str(), corners.width, corners.height);
    return {};
}

std::string writePage(const std::string& file, const std::string& text) {
    if (!orx::writeWholeFile(fs::u8path(file), text)) return "can't write " + file;
    std::printf("%s: print it without scaling, and check the line below the target\n", file.c_str());
    return {};
}

}  // namespace

bool pageOf(const std::string& text, orx::TTargetPage& page) {
    if (text == "A4") return true;  // as it is by itself
    if (text == "A3") {
        page.width = 420;
        page.height = 297;
        return true;
    }
    const std::size_t by = text.find('x');
    if (by == std::string::npos) return false;
    char* end = nullptr;
    page.width = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + by) return false;
    page.height = std::strtod(text.c_str() + by + 1, &end);
    return end == text.c_str() + text.size() && page.width > 0 && page.height > 0;
}

std::string problemOfTargets(const TargetFiles& files, const orx::TTarget& target) {
    const cv::Size corners =
        targetCorners({files.pngWidth, files.pngHeight}, files.pngSquare, files.pngMargin);
    if (!files.png.empty() && std::min(corners.width, corners.height) < 1)
        return "--target: no board of such squares fits inside the margins";
    orx::TTargetPage page;
    if (!pageOf(files.page, page))
        return "--page: '" + files.page + "' is neither A4 nor A3 nor WIDTHxHEIGHT in millimetres";
    const bool wantsPage = !files.pdf.empty() || !files.svg.empty();
    if (wantsPage && orx::targetToSvg(target, page).empty())
        return "--page: the target with a white margin does not fit on " + files.page;
    return {};
}

std::string writeTargets(const TargetFiles& files, const orx::TTarget& target) {
    std::string problem = problemOfTargets(files, target);
    if (!problem.empty()) return problem;
    orx::TTargetPage page;
    pageOf(files.page, page);
    if (!files.png.empty()) problem = writePng(files);
    if (problem.empty() && !files.pdf.empty()) problem = writePage(files.pdf, orx::targetToPdf(target, page));
    if (problem.empty() && !files.svg.empty()) problem = writePage(files.svg, orx::targetToSvg(target, page));
    return problem;
}

cv::Size targetCorners(cv::Size imageSize, int squareSize, int margin) {
    const auto corners = [&](std::int64_t length) {
        return static_cast<int>((length - 2 * std::int64_t{margin} + 1) / squareSize - 1);
    };
    return {corners(imageSize.width), corners(imageSize.height)};
}

}  // namespace calibration
