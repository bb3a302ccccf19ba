// Contours, holes, thinning and clean-up against plain loops and OpenCV.
#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

using fuzz::require;
using Contours = std::vector<std::vector<cv::Point>>;

cv::Mat binary(fuzz::Input& input) {
    const int level = input.between(0, 255);
    cv::Mat image = input.grey();
    return image > level;
}

// The pixels of 0 that the border reaches by steps of 4 or 8 neighbours.
cv::Mat outside(const cv::Mat& image, bool diagonal) {
    cv::Mat reached = cv::Mat::zeros(image.size(), CV_8UC1);
    std::vector<cv::Point> stack;
    const auto visit = [&](int x, int y) {
        if (x < 0 || y < 0 || x >= image.cols || y >= image.rows) return;
        if (image.at<uchar>(y, x) != 0 || reached.at<uchar>(y, x) != 0) return;
        reached.at<uchar>(y, x) = 255;
        stack.emplace_back(x, y);
    };
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            if (x == 0 || y == 0 || x == image.cols - 1 || y == image.rows - 1) visit(x, y);
        }
    }
    while (!stack.empty()) {
        const cv::Point p = stack.back();
        stack.pop_back();
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                if (diagonal || dx == 0 || dy == 0) visit(p.x + dx, p.y + dy);
            }
        }
    }
    return reached;
}

void checkHoles(const cv::Mat& image, fuzz::Input& input) {
    orx::TFillHolesOptions options;
    options.objects = input.flag() ? orx::cnEight : orx::cnFour;
    cv::Mat filled;
    require(orx::fillHoles(image, filled, options), "binary pictures are taken");
    cv::Mat expected = image.clone();
    expected.setTo(255, (image == 0) & (outside(image, options.objects == orx::cnFour) == 0));
    require(fuzz::same(filled, expected), "holes are what the border does not reach");
    options.maxArea = input.between(0, 40);
    cv::Mat limited;
    require(orx::fillHoles(image, limited, options), "limits are taken");
    cv::Mat labels;
    cv::Mat stats;
    cv::Mat centres;
    const cv::Mat holes = filled & ~image;
    const int count = cv::connectedComponentsWithStats(holes, labels, stats, centres,
                                                       options.objects == orx::cnEight ? 4 : 8);
    cv::Mat kept = image.clone();
    for (int i = 1; i < count; ++i) {
        if (stats.at<int>(i, cv::CC_STAT_AREA) <= options.maxArea) kept.setTo(255, labels == i);
    }
    require(fuzz::same(limited, kept), "larger holes stay open");
}

// By definition: passes over the whole picture, each of two steps.
cv::Mat plainThinning(const cv::Mat& image, bool guoHall) {
    cv::Mat marked = cv::Mat::zeros(image.rows + 2, image.cols + 2, CV_8UC1);
    cv::Mat inner = marked(cv::Rect(1, 1, image.cols, image.rows));
    inner.setTo(1, image != 0);
    for (bool changed = true; changed;) {
        changed = false;
        for (int step = 0; step < 2; ++step) {
            std::vector<cv::Point> gone;
            for (int y = 1; y <= image.rows; ++y) {
                for (int x = 1; x <= image.cols; ++x) {
                    const auto at = [&](int dx, int dy) -> int { return marked.at<uchar>(y + dy, x + dx); };
                    if (at(0, 0) == 0) continue;
                    const std::array<int, 9> p = {at(0, -1), at(1, -1), at(1, 0),   at(1, 1), at(0, 1),
                                                  at(-1, 1), at(-1, 0), at(-1, -1), at(0, -1)};
                    bool removes = false;
                    if (guoHall) {
                        int crossings = 0;
                        for (std::size_t i = 0; i < 8; i += 2)
                            crossings += (p[i] == 0 && (p[i + 1] != 0 || p[(i + 2) % 8] != 0)) ? 1 : 0;
                        const int n1 = (p[7] | p[0]) + (p[1] | p[2]) + (p[3] | p[4]) + (p[5] | p[6]);
                        const int n2 = (p[0] | p[1]) + (p[2] | p[3]) + (p[4] | p[5]) + (p[6] | p[7]);
                        const int n = std::min(n1, n2);
                        const int side = step == 0 ? ((p[0] | p[1] | (1 - p[3])) & p[2])
                                                   : ((p[4] | p[5] | (1 - p[7])) & p[6]);
                        removes = crossings == 1 && n >= 2 && n <= 3 && side == 0;
                    } else {
                        int neighbours = 0;
                        int crossings = 0;
                        for (std::size_t i = 0; i < 8; ++i) {
                            neighbours += p[i];
                            crossings += p[i] == 0 && p[i + 1] == 1 ? 1 : 0;
                        }
                        const int first = step == 0 ? p[0] * p[2] * p[4] : p[0] * p[2] * p[6];
                        const int second = step == 0 ? p[2] * p[4] * p[6] : p[0] * p[4] * p[6];
                        removes =
                            neighbours >= 2 && neighbours <= 6 && crossings == 1 && first == 0 && second == 0;
                    }
                    if (removes) gone.emplace_back(x, y);
                }
            }
            for (const cv::Point& p : gone) marked.at<uchar>(p) = 0;
            changed = changed || !gone.empty();
        }
    }
    return inner * 255;
}

void checkThinning(const cv::Mat& image) {
    for (const bool guoHall : {false, true}) {
        cv::Mat thinned;
        require(orx::thinning(image, thinned, guoHall ? orx::tnGuoHall : orx::tnZhangSuen),
                "pictures are taken");
        require(fuzz::same(thinned, plainThinning(image, guoHall)),
                "thinning is that of the published passes");
    }
}

// What OpenCV finds, kept by the limits.
Contours plainContours(const cv::Mat& image, orx::TContourType type, const orx::TContourOptions& options) {
    Contours all;
    std::vector<cv::Vec4i> tree;
    cv::findContours(image, all, tree, type == orx::ctExternal ? cv::RETR_EXTERNAL : cv::RETR_CCOMP,
                     options.points == orx::cpAll ? cv::CHAIN_APPROX_NONE : cv::CHAIN_APPROX_SIMPLE);
    Contours kept;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (type == orx::ctHoles && tree[i][3] < 0) continue;
        const double area = cv::contourArea(all[i]);
        if (cv::arcLength(all[i], true) < options.minLength) continue;
        if (area >= options.minArea && area <= options.maxArea) kept.push_back(all[i]);
    }
    return kept;
}

void sortByFirst(Contours& contours) {
    std::sort(contours.begin(), contours.end(), [](const auto& a, const auto& b) {
        return std::lexicographical_compare(
            a.begin(), a.end(), b.begin(), b.end(),
            [](cv::Point p, cv::Point q) { return p.y != q.y ? p.y < q.y : p.x < q.x; });
    });
}

void checkContours(const cv::Mat& image, fuzz::Input& input) {
    orx::TContourOptions options;
    options.minLength = input.between(0, 30);
    options.minArea = input.between(0, 30);
    if (input.flag()) options.maxArea = input.between(0, 200);
    options.points = input.flag() ? orx::cpAll : orx::cpCorners;
    for (const auto type : {orx::ctExternal, orx::ctAll, orx::ctHoles}) {
        Contours found = orx::getContours(image, type, options);
        Contours plain = plainContours(image, type, options);
        sortByFirst(found);
        sortByFirst(plain);
        require(found == plain, "the contours that OpenCV finds");
    }
    const Contours external = orx::getContours(image, orx::ctExternal, options);
    const Contours largest = orx::getContours(image, orx::ctLargest, options);
    require(largest.size() == (external.empty() ? 0U : 1U) || !external.empty(), "one largest contour");
    for (const auto& contour : external) {
        if (!largest.empty())
            require(cv::contourArea(contour) <= cv::contourArea(largest[0]),
                    "none is larger than the largest");
        const cv::Rect box = cv::boundingRect(contour);
        for (int mode = -1; mode <= 3; ++mode) {
            const cv::Point2d c = orx::getContourCenterSubPix(contour, mode);
            require(c.x >= box.x - 1e-6 && c.y >= box.y - 1e-6 && c.x <= box.x + box.width - 1 + 1e-6 &&
                        c.y <= box.y + box.height - 1 + 1e-6,
                    "centres lie in the bounding rectangle");
            require(orx::getContourCenterPt(contour, mode) == cv::Point(cvRound(c.x), cvRound(c.y)),
                    "the pixel nearest to the centre");
        }
        require(orx::getContourCenterPts({contour}, 0)[0] == orx::getContourCenterPt(contour, 0),
                "centres of many are those of one");
    }
    for (const auto& hull : orx::getContours(image, orx::ctConvexHull, options))
        require(hull.size() < 3 || cv::isContourConvex(hull), "hulls are convex");
    for (const auto& contour : orx::getContours(image, orx::ctAll, {})) {
        for (const orx::TEdgeProbe& probe : orx::probesAlongContour(contour)) {
            const double length = cv::norm(probe.normal);  // none at the tip of a stroke one pixel wide
            require(length == 0 || std::abs(length - 1) < 1e-3, "normals have length 1");
        }
    }
}

void checkCleanUp(const cv::Mat& image, fuzz::Input& input) {
    const int least = input.between(0, 60);
    cv::Mat cleaned;
    require(orx::removeSmallObjects(image, cleaned, least), "pictures are taken");
    cv::Mat labels;
    cv::Mat stats;
    cv::Mat centres;
    const int count = cv::connectedComponentsWithStats(image, labels, stats, centres, 8);
    cv::Mat expected = image.clone();
    for (int i = 1; i < count; ++i) {
        if (stats.at<int>(i, cv::CC_STAT_AREA) < least) expected.setTo(0, labels == i);
    }
    require(fuzz::same(cleaned, expected), "objects of so many pixels stay");
    cv::Mat lines;
    require(orx::removeShortLines(image, lines, least), "pictures are taken");
    require(cv::countNonZero(lines & ~image) == 0, "nothing is added");
    Contours contours = orx::getContours(image, orx::ctAll, {});
    Contours kept = contours;
    orx::removeSmallContours(kept, least, 2.0 * least);
    contours.erase(std::remove_if(contours.begin(), contours.end(),
                                  [&](const auto& c) {
                                      return cv::contourArea(c) < least ||
                                             cv::arcLength(c, true) < 2.0 * least;
                                  }),
                   contours.end());
    require(kept == contours, "contours of that size stay");
}

void checkAnything(fuzz::Input& input) {
    const cv::Mat image = input.matrix();
    cv::Mat out;
    orx::fillHoles(image, out, {input.number(), static_cast<orx::TConnectivity>(input.between(3, 9))});
    orx::thinning(image, out, static_cast<orx::TThinningMethod>(input.between(-1, 2)));
    orx::removeSmallObjects(image, out, input.number());
    orx::removeShortLines(image, out, input.number());
    orx::TContourOptions options;
    options.minLength = input.number();
    options.minArea = input.number();
    options.maxArea = input.number();
    orx::getContours(image, static_cast<orx::TContourType>(input.between(-1, 5)), options);
    std::vector<cv::Vec4i> segments;
    for (int i = input.between(0, 9); i > 0; --i)
        segments.push_back(cv::Vec4i{input.integer(), input.integer(), input.integer(), input.integer()});
    const std::size_t before = segments.size();
    orx::removeShortLines(segments, input.number());
    require(segments.size() <= before, "segments are only removed");
    std::vector<cv::Point> contour;
    for (int i = input.between(0, 15); i > 0; --i) contour.push_back({input.integer(), input.integer()});
    for (int mode = 0; mode < 3; ++mode) orx::getContourCenterPt(contour, mode);
    orx::probesAlongContour(contour);
    Contours many{contour};
    const double area = input.number();
    orx::removeSmallContours(many, area, input.number());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    cv::setNumThreads(1);
    fuzz::Input input(bytes, size);
    const int kind = input.between(0, 4);
    if (kind == 4) {
        checkAnything(input);
        return 0;
    }
    const cv::Mat image = binary(input);
    if (kind == 0) checkHoles(image, input);
    if (kind == 1) checkThinning(image);
    if (kind == 2) checkContours(image, input);
    if (kind == 3) checkCleanUp(image, input);
    return 0;
}
