#include "orxFunctions/matching/model/teach_region.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/matching/model/byte_grey.h"
#include "orxFunctions/matching/model/pyramid.h"

namespace orx::matching {
namespace {

cv::Rect all(cv::Size size) { return {cv::Point(), size}; }

cv::Rect around(const cv::Rect& rect, int margin) {
    return {rect.x - margin, rect.y - margin, rect.width + 2 * margin, rect.height + 2 * margin};
}

// Multiples of `unit` around it.
cv::Rect aligned(const cv::Rect& rect, int unit) {
    const auto down = [unit](int v) { return v / unit * unit; };
    const cv::Point low(down(rect.x), down(rect.y));
    return {low, cv::Point(down(rect.br().x + unit - 1), down(rect.br().y + unit - 1))};
}

// The pixels of a level that show a rectangle of the picture.
cv::Rect onLevel(const cv::Rect& rect, int level) {
    const cv::Rect wide = aligned(rect, 1 << level);
    return {wide.x >> level, wide.y >> level, wide.width >> level, wide.height >> level};
}

bool liesIn(cv::Point2d p, cv::Size picture) {
    return p.x >= -0.5 && p.y >= -0.5 && p.x <= picture.width - 0.5 && p.y <= picture.height - 0.5;
}

}  // namespace

bool TeachRegion::contains(cv::Point2d place) const {
    const cv::Point pixel = cv::Point(cvRound(place.x), cvRound(place.y)) - box.tl();
    if (!all(box.size()).contains(pixel)) return false;
    return inside.empty() || inside.at<unsigned char>(pixel) != 0;
}

TeachRegion regionOf(const cv::Rect& rect, cv::Size picture) {
    const bool fits = rect.x >= 0 && rect.y >= 0 && rect.width > 0 && rect.height > 0 &&
                      rect.width <= picture.width && rect.height <= picture.height &&
                      rect.x <= picture.width - rect.width && rect.y <= picture.height - rect.height;
    TeachRegion region;
    if (fits) region.box = rect;
    return region;
}

TeachRegion regionOf(const std::vector<cv::Point2d>& polygon, cv::Size picture) {
    constexpr int kShift = 8;  // fractional bits of OpenCV's coordinates
    TeachRegion region;
    if (polygon.size() < 3) return region;
    cv::Point2d low = polygon.front();
    cv::Point2d high = low;
    for (const cv::Point2d& p : polygon) {
        if (!liesIn(p, picture)) return region;
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    const cv::Rect box(cv::Point(cvFloor(low.x), cvFloor(low.y)),
                       cv::Point(cvCeil(high.x) + 1, cvCeil(high.y) + 1));
    region.box = box & all(picture);
    std::vector<cv::Point> corners;
    corners.reserve(polygon.size());
    for (const cv::Point2d& p : polygon) {
        corners.emplace_back(cvRound((p.x - region.box.x) * (1 << kShift)),
                             cvRound((p.y - region.box.y) * (1 << kShift)));
    }
    region.inside = cv::Mat::zeros(region.box.size(), CV_8UC1);
    cv::fillPoly(region.inside, std::vector<std::vector<cv::Point>>{corners}, cv::Scalar(255), cv::LINE_8,
                 kShift);
    return region;
}

TeachRegion regionOf(const cv::Mat& mask, cv::Size picture) {
    TeachRegion region;
    if (mask.dims != 2 || mask.type() != CV_8UC1 || mask.size() != picture) return region;
    region.box = cv::boundingRect(mask);
    if (!region.box.empty()) region.inside = mask(region.box);
    return region;
}

TeachPyramid::TeachPyramid(const cv::Mat& img, const TeachRegion& region, int levels, int margin) {
    const int unit = 1 << (levels - 1);
    const cv::Rect cut = aligned(around(region.box, 0), unit);
    const cv::Rect crop = cv::Rect(cut.x - margin * unit, cut.y - margin * unit,
                                   cut.width + 2 * margin * unit, cut.height + 2 * margin * unit) &
                          all(img.size());
    pyramid_ = makePyramid(byteGrey(img(crop)), levels);
    for (int k = 0; k < this->levels(); ++k) {
        const cv::Mat& level = pyramid_[static_cast<std::size_t>(k)];
        // The crop begins at a multiple of the unit, or at the picture's border.
        const cv::Point corner(crop.x >> k, crop.y >> k);
        const cv::Rect wanted = around(onLevel(region.box, k), margin) - corner;
        const cv::Rect view = wanted & all(level.size());
        views_.push_back(view.empty() ? cv::Mat() : level(view));
        corners_.push_back(corner + view.tl());
    }
}

}  // namespace orx::matching
