#include "orxFunctions/matching/part_model.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/matching/model/bounds.h"
#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/teach_edges.h"
#include "orxFunctions/matching/model/teach_levels.h"
#include "orxFunctions/matching/model/teach_region.h"
#include "orxFunctions/matching/model/teach_report.h"

namespace orx {
namespace {

using matching::ModelData;
using matching::OutlinePoint;
using matching::TeachPyramid;
using matching::TeachRegion;

bool isAcceptable(const TTeachOptions& options) {
    constexpr double kFar = matching::kFarthest;
    const cv::Point2d reference = options.hasReference ? options.reference : cv::Point2d();
    return takesOptions("teachPart",
                        {{"sigma", options.sigma, 0.5, 5},
                         {"minContrast", options.minContrast, 0, 255},
                         {"levels", static_cast<double>(options.levels), 0, matching::kMostLevels},
                         {"direction", options.direction, -1e6, 1e6},
                         {"reference.x", reference.x, -kFar, kFar},
                         {"reference.y", reference.y, -kFar, kFar}});
}

TPartModel refuseImage() { return matching::refusedModel(msBadImage); }

// From pixels of the picture into the model's plane.
void moveIntoPlane(std::vector<OutlinePoint>& points, const TPartPose& taught) {
    const double c = std::cos(radians(taught.angle));
    const double s = std::sin(radians(taught.angle));
    const auto turned = [c, s](cv::Point2d v) { return cv::Point2d(c * v.x + s * v.y, c * v.y - s * v.x); };
    for (OutlinePoint& point : points) {
        point.position = turned(point.position - cv::Point2d(taught.x, taught.y));
        point.normal = turned(point.normal);
    }
}

// The outline on all levels that still tell the part, in pixels of the picture.
std::vector<std::vector<OutlinePoint>> levelsOf(const TeachPyramid& pyramid,
                                                const std::vector<OutlinePoint>& outline,
                                                const TTeachOptions& options) {
    const double least = matching::leastContrastFor(outline, options.minContrast);
    std::vector<std::vector<OutlinePoint>> levels = {outline};
    const int most =
        options.levels > 0 ? options.levels : matching::levelsFor(matching::boundsOf(outline).extent());
    for (int k = 1; k < std::min(most, pyramid.levels()); ++k) {
        const std::vector<OutlinePoint> points =
            matching::edgesOfOutline(matching::findEdges(pyramid, k, options.sigma, least), outline, k);
        const bool enough = options.levels > 0 ? points.size() >= matching::kLeastPoints
                                               : matching::tellsThePart(points, outline, k);
        if (!enough) break;
        levels.push_back(points);
    }
    return levels;
}

TPartModel teach(const cv::Mat& img, const TeachRegion& region, const TTeachOptions& options) {
    if (region.box.empty()) {
        refuse(rcOutside, "teachPart", "the region holds no pixel, or is not inside the picture of %d x %d",
               img.cols, img.rows);
        return matching::refusedModel(msBadRegion);
    }
    if (!isAcceptable(options)) return matching::refusedModel(msBadOptions);
    const int levels = options.levels > 0
                           ? options.levels
                           : matching::levelsFor(std::max(region.box.width, region.box.height));
    const TeachPyramid pyramid(img, region, levels, matching::marginFor(options.sigma));
    auto data = std::make_shared<ModelData>();
    data->outline = matching::findOutline(pyramid, region, options.sigma, options.minContrast);
    const TMatchStatus status = matching::checkCount(data->outline.size());
    if (status != msOk) return matching::refusedModel(status);

    const cv::Point2d reference =
        options.hasReference ? options.reference : matching::boundsOf(data->outline).middle();
    data->taught = {reference.x, reference.y, options.direction, 1};
    data->sigma = options.sigma;
    data->contrast = matching::contrastQuantile(data->outline, 0.5);
    for (std::vector<OutlinePoint>& points : levelsOf(pyramid, data->outline, options)) {
        moveIntoPlane(points, data->taught);
        data->levels.push_back(matching::levelOf(points));
    }
    moveIntoPlane(data->outline, data->taught);
    matching::completeReport(*data);
    return TPartModel(data);
}

}  // namespace

TPartModel teachPart(const cv::Mat& img, const cv::Rect& region, const TTeachOptions& options) {
    if (!takesPicture(img, "teachPart")) return refuseImage();
    return teach(img, matching::regionOf(region, img.size()), options);
}

TPartModel teachPart(const cv::Mat& img, const std::vector<cv::Point2d>& polygon,
                     const TTeachOptions& options) {
    if (!takesPicture(img, "teachPart")) return refuseImage();
    return teach(img, matching::regionOf(polygon, img.size()), options);
}

TPartModel teachPart(const cv::Mat& img, const cv::Mat& mask, const TTeachOptions& options) {
    if (!takesPicture(img, "teachPart")) return refuseImage();
    if (mask.dims > 2 || mask.type() != CV_8UC1 || mask.size() != img.size()) {
        refuse(rcSizesDiffer, "teachPart",
               "the mask is not of one channel of 8 bits and %d x %d as the picture", img.cols, img.rows);
        return matching::refusedModel(msBadRegion);
    }
    return teach(img, matching::regionOf(mask, img.size()), options);
}

}  // namespace orx
