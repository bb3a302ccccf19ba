#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/pyramid.h"
#include "orxFunctions/matching/part_model.h"

namespace orx {
namespace {

using matching::ModelData;
using matching::OutlinePoint;

// Share of the typical contrast that an edge of the part must reach.
constexpr double kContrastShare = 0.3;
// A level on which the outline is smaller than this, pixels, tells parts from nothing.
constexpr double kLeastRadius = 6;
constexpr std::size_t kLeastPoints = 16;

TPartModel refused(TMatchStatus status) {
    auto data = std::make_shared<ModelData>();
    data->report.status = status;
    return TPartModel(data);
}

cv::Mat byteGrey(const cv::Mat& img) {
    const cv::Mat grey = greyOf(img);
    if (grey.depth() == CV_8U) return grey;
    cv::Mat bytes;
    grey.convertTo(bytes, CV_8U, 1 / levelUnit(img));
    return bytes;
}

bool isAcceptable(const TTeachOptions& options) {
    return isBetween(options.sigma, 0.5, 5) && isBetween(options.minContrast, 0, 255) &&
           isBetween(options.levels, 0, 8) && std::isfinite(options.direction) &&
           (!options.hasReference ||
            (std::isfinite(options.reference.x) && std::isfinite(options.reference.y)));
}

// Edge points on a level of the pyramid that lie in the mask, in pixels of the finest level.
std::vector<OutlinePoint> edgesOn(const cv::Mat& level, int number, const cv::Mat& mask, double sigma,
                                  double minContrast) {
    ORXEdge::TMetricOptions find;
    find.sigma = sigma;
    // What the optics blurs as much as the finder reads 0.7 of its contrast.
    find.high = 0.7 * minContrast;
    find.low = 0.5 * find.high;
    std::vector<ORXEdge::TMetricContour> contours;
    ORXEdge::edgesSubPixMetric(level, contours, find);
    std::vector<OutlinePoint> points;
    int chain = 0;
    for (const ORXEdge::TMetricContour& contour : contours) {
        for (std::size_t i = 0; i < contour.points.size(); ++i) {
            const cv::Point2d place = matching::fromLevel(cv::Point2d(contour.points[i]), number);
            const cv::Point pixel(cvRound(place.x), cvRound(place.y));
            const bool inside = pixel.x >= 0 && pixel.y >= 0 && pixel.x < mask.cols && pixel.y < mask.rows &&
                                mask.at<unsigned char>(pixel) != 0;
            if (!inside) continue;
            const double direction = contour.direction[i];
            points.push_back({place,
                              {std::cos(direction), std::sin(direction)},
                              contour.deviation[i],
                              contour.contrast[i],
                              chain});
        }
        ++chain;
    }
    return points;
}

double typicalContrast(const std::vector<OutlinePoint>& points) {
    std::vector<double> contrasts;
    for (const OutlinePoint& point : points) contrasts.push_back(point.contrast);
    const auto middle = contrasts.begin() + static_cast<std::ptrdiff_t>(contrasts.size() / 2);
    std::nth_element(contrasts.begin(), middle, contrasts.end());
    return *middle;
}

cv::Point2d middleOf(const std::vector<OutlinePoint>& points) {
    cv::Point2d low = points.front().position;
    cv::Point2d high = low;
    for (const OutlinePoint& point : points) {
        low = {std::min(low.x, point.position.x), std::min(low.y, point.position.y)};
        high = {std::max(high.x, point.position.x), std::max(high.y, point.position.y)};
    }
    return (low + high) * 0.5;
}

}  // namespace

TPartModel teachPart(const cv::Mat& img, const cv::Mat& mask, const TTeachOptions& options) {
    if (!isPicture(img)) return refused(msBadImage);
    if (mask.type() != CV_8UC1 || mask.size() != img.size()) return refused(msBadRegion);
    if (!isAcceptable(options)) return refused(msBadOptions);
    auto data = std::make_shared<ModelData>();
    const std::vector<cv::Mat> pyramid =
        matching::makePyramid(byteGrey(img), options.levels > 0 ? options.levels : 8);
    const double first = options.minContrast > 0 ? options.minContrast : 20;
    std::vector<OutlinePoint> points = edgesOn(pyramid[0], 0, mask, options.sigma, first);
    if (points.size() < kLeastPoints) return refused(msTooFewEdges);
    data->contrast = typicalContrast(points);
    const double least = options.minContrast > 0 ? options.minContrast : kContrastShare * data->contrast;
    points.erase(std::remove_if(points.begin(), points.end(),
                                [least](const OutlinePoint& p) { return p.contrast < least; }),
                 points.end());
    if (points.size() < kLeastPoints) return refused(msTooFewEdges);

    const cv::Point2d reference = options.hasReference ? options.reference : middleOf(points);
    data->taught = {reference.x, reference.y, options.direction, 1};
    const TPartPose intoModel = invertPose(data->taught);
    const TPartPose turn{0, 0, -options.direction, 1};
    data->sigma = options.sigma;
    for (OutlinePoint& point : points) {
        point.position = applyPose(intoModel, point.position);
        point.normal = applyPose(turn, point.normal);
        data->report.radius = std::max(data->report.radius, std::hypot(point.position.x, point.position.y));
    }
    data->outline = points;
    for (std::size_t k = 0; k < pyramid.size(); ++k) {
        const int number = static_cast<int>(k);
        const bool chosen = options.levels > 0;
        if (!chosen && data->report.radius / (1 << number) < kLeastRadius) break;
        matching::ModelLevel level;
        const std::vector<OutlinePoint> edges =
            k == 0 ? std::vector<OutlinePoint>() : edgesOn(pyramid[k], number, mask, options.sigma, least);
        if (k == 0) {
            for (const OutlinePoint& p : points) level.points.push_back({p.position, p.normal});
        } else {
            for (const OutlinePoint& p : edges) {
                level.points.push_back({applyPose(intoModel, p.position), applyPose(turn, p.normal)});
            }
        }
        if (level.points.size() < kLeastPoints) break;
        data->report.pointsPerLevel.push_back(static_cast<int>(level.points.size()));
        data->levels.push_back(level);
    }
    data->report.status = msOk;
    return TPartModel(data);
}

TPartModel teachPart(const cv::Mat& img, const cv::Rect& region, const TTeachOptions& options) {
    if (!isPicture(img)) return refused(msBadImage);
    cv::Mat mask = cv::Mat::zeros(img.size(), CV_8UC1);
    const cv::Rect inside = region & cv::Rect(cv::Point(), img.size());
    if (inside.empty() || inside != region) return refused(msBadRegion);
    mask(inside).setTo(255);
    return teachPart(img, mask, options);
}

}  // namespace orx
