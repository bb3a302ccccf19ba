#include "orxFunctions/matching/part_outline.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/option_range_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/matching/model/bounds.h"
#include "orxFunctions/matching/model/filled_outline.h"
#include "orxFunctions/matching/model/model_data.h"
#include "orxFunctions/matching/model/outline_samples.h"
#include "orxFunctions/matching/model/teach_edges.h"
#include "orxFunctions/matching/model/teach_levels.h"
#include "orxFunctions/matching/model/teach_region.h"
#include "orxFunctions/matching/model/teach_report.h"

namespace orx {
namespace {

using matching::ModelData;
using matching::OutlinePoint;

// Larger drawings are not painted: coarse levels keep what is drawn.
constexpr double kLargestPainting = 4000;
constexpr int kBright = 200;

bool isAcceptable(const TDrawingOptions& options) {
    constexpr double kFar = 1e12;
    const cv::Point2d reference = options.hasReference ? options.reference : cv::Point2d();
    return takesOptions("teachPart",
                        {{"pixelsPerUnit", options.pixelsPerUnit, 1e-9, 1e9},
                         {"brightSide", static_cast<double>(options.brightSide), bsUnknown, bsRight},
                         {"sigma", options.sigma, 0.5, 5},
                         {"levels", static_cast<double>(options.levels), 0, matching::kMostLevels},
                         {"direction", options.direction, -1e6, 1e6},
                         {"reference.x", reference.x, -kFar, kFar},
                         {"reference.y", reference.y, -kFar, kFar}});
}

// msOk, msBadOutline or msTooLarge, refused in the name of teachPart.
TMatchStatus checkDrawing(const std::vector<TOutline>& outlines) {
    const TMatchStatus status = matching::checkOutlines(outlines);
    if (status == msBadOutline)
        refuse(rcDegenerate, "teachPart",
               "there is no piece or more than 100000, or one is not finite, of no length or beyond a full "
               "turn");
    if (status == msTooLarge)
        refuse(rcTooMany, "teachPart",
               "the outline is longer than 200000 pixels, or more than 1e6 pixels from the origin");
    return status;
}

// Everything that is drawn, a chain for each outline.
std::vector<OutlinePoint> samplesOf(const std::vector<TOutline>& outlines, bool normalsToTheLeft) {
    std::vector<OutlinePoint> all;
    for (std::size_t i = 0; i < outlines.size(); ++i) {
        for (OutlinePoint& point : matching::samplesOf(outlines[i], normalsToTheLeft)) {
            point.chain = static_cast<int>(i);
            all.push_back(point);
        }
    }
    return all;
}

// The drawing as a picture in which the material is bright, with a margin.
struct Painting {
    cv::Mat picture;
    cv::Point2d origin;  // of the picture's pixels in the drawing's
};

Painting paint(const std::vector<TOutline>& outlines, const matching::Bounds& bounds) {
    constexpr int kMargin = 4;
    Painting painting;
    painting.origin = bounds.low - cv::Point2d(kMargin, kMargin);
    std::vector<std::vector<cv::Point2d>> polygons;
    for (const TOutline& outline : outlines) {
        polygons.push_back(matching::polygonOf(outline));
        for (cv::Point2d& corner : polygons.back()) corner -= painting.origin;
    }
    const cv::Size size(static_cast<int>(std::ceil(bounds.high.x - bounds.low.x)) + 2 * kMargin,
                        static_cast<int>(std::ceil(bounds.high.y - bounds.low.y)) + 2 * kMargin);
    painting.picture = matching::fillPolygons(polygons, size, kBright);
    return painting;
}

// 1 where the normals of all outlines point into the painted material, -1 where all point out of it, 0 else.
int senseOf(const std::vector<OutlinePoint>& samples, const Painting& painting) {
    const cv::Rect all(cv::Point(), painting.picture.size());
    const auto levelAt = [&](cv::Point2d p) {
        const cv::Point pixel(cvRound(p.x), cvRound(p.y));
        return all.contains(pixel) ? painting.picture.at<unsigned char>(pixel) : 0;
    };
    int sense = 0;
    int sum = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const cv::Point2d place = samples[i].position - painting.origin;
        sum += levelAt(place + samples[i].normal) - levelAt(place - samples[i].normal);
        if (i + 1 < samples.size() && samples[i + 1].chain == samples[i].chain) continue;
        const int own = sum > 0 ? 1 : -1;
        if (sense != 0 && own != sense) return 0;
        sense = own;
        sum = 0;
    }
    return sense;
}

struct DrawnLevels {
    std::vector<OutlinePoint> outline;
    double sigma;
    int chosen;  // 0: as many as tell the part

    int most() const {
        return chosen > 0 ? chosen : matching::levelsFor(matching::boundsOf(outline).extent());
    }
    bool isEnough(const std::vector<OutlinePoint>& points, int level) const {
        return chosen > 0 ? points.size() >= matching::kLeastPoints
                          : matching::tellsThePart(points, outline, level);
    }
};

// Coarser levels of what is painted.
void addPaintedLevels(const Painting& painting, int sense, const DrawnLevels& drawn,
                      std::vector<std::vector<OutlinePoint>>& levels) {
    const matching::TeachRegion region =
        matching::regionOf(cv::Rect(cv::Point(), painting.picture.size()), painting.picture.size());
    // Coarse pixels must see the ground around it.
    const int unit = 1 << (drawn.most() - 1);
    const int border = (matching::marginFor(drawn.sigma) + 1) * unit;
    cv::Mat wide;
    cv::copyMakeBorder(painting.picture, wide, border, border, border, border, cv::BORDER_CONSTANT,
                       cv::Scalar(0));
    matching::TeachRegion inside = region;
    inside.box += cv::Point(border, border);
    const matching::TeachPyramid pyramid(wide, inside, drawn.most(), matching::marginFor(drawn.sigma));
    const cv::Point2d origin = painting.origin - cv::Point2d(border, border);
    for (int k = 1; k < pyramid.levels(); ++k) {
        std::vector<OutlinePoint> edges = matching::findEdges(pyramid, k, drawn.sigma, 0.3 * kBright);
        for (OutlinePoint& edge : edges) {
            edge.position += origin;
            edge.normal *= sense;
        }
        edges = matching::edgesOfOutline(edges, drawn.outline, k);
        if (!drawn.isEnough(edges, k)) return;
        levels.push_back(std::move(edges));
    }
}

// Coarser levels of what is drawn, where smoothing leaves it: every so many samples.
void addDrawnLevels(const std::vector<OutlinePoint>& samples, const DrawnLevels& drawn,
                    std::vector<std::vector<OutlinePoint>>& levels) {
    for (int k = 1; k < drawn.most(); ++k) {
        const std::vector<OutlinePoint> all = matching::undisturbed(samples, drawn.sigma * (1 << k));
        std::vector<OutlinePoint> points;
        for (std::size_t i = 0; i < all.size(); i += std::size_t{1} << k) points.push_back(all[i]);
        if (!drawn.isEnough(points, k)) return;
        levels.push_back(std::move(points));
    }
}

void moveTo(std::vector<OutlinePoint>& points, const TPartPose& plane) {
    const TPartPose turn{0, 0, plane.angle, 1};
    for (OutlinePoint& point : points) {
        point.position = applyPose(plane, point.position);
        point.normal = applyPose(turn, point.normal);
    }
}

}  // namespace

TOutlinePiece outlineLine(cv::Point2d from, cv::Point2d to) {
    TOutlinePiece piece;
    piece.from = from;
    piece.to = to;
    return piece;
}

TOutlinePiece outlineArc(cv::Point2d centre, double radius, double startAngle, double sweep) {
    TOutlinePiece piece;
    piece.isArc = true;
    piece.centre = centre;
    piece.radius = radius;
    piece.startAngle = startAngle;
    piece.sweep = sweep;
    return piece;
}

TPartModel teachPart(const std::vector<TOutline>& drawing, const TDrawingOptions& options) {
    if (!isAcceptable(options)) return matching::refusedModel(msBadOptions);
    const std::vector<TOutline> outlines = matching::inPixels(drawing, options.pixelsPerUnit, options.yIsUp);
    const TMatchStatus status = checkDrawing(outlines);
    if (status != msOk) return matching::refusedModel(status);

    auto data = std::make_shared<ModelData>();
    const std::vector<OutlinePoint> samples = samplesOf(outlines, options.brightSide != bsRight);
    data->outline = matching::undisturbed(samples, options.sigma);
    const TMatchStatus count = matching::checkCount(data->outline.size());
    if (count != msOk) return matching::refusedModel(count);
    data->sigma = options.sigma;
    data->signsAreKnown = options.brightSide != bsUnknown;

    const matching::Bounds bounds = matching::boundsOf(samples);
    const DrawnLevels drawn{data->outline, options.sigma, options.levels};
    std::vector<std::vector<OutlinePoint>> levels = {data->outline};
    int sense = 0;
    if (bounds.extent() <= kLargestPainting &&
        std::all_of(outlines.begin(), outlines.end(), matching::isClosed)) {
        const Painting painting = paint(outlines, bounds);
        sense = data->signsAreKnown ? senseOf(samples, painting) : 1;
        if (sense != 0) addPaintedLevels(painting, sense, drawn, levels);
    }
    if (sense == 0) addDrawnLevels(samples, drawn, levels);

    cv::Point2d reference = bounds.middle();
    const double up = options.yIsUp ? -1 : 1;
    if (options.hasReference) {
        reference = cv::Point2d(options.reference.x, up * options.reference.y) * options.pixelsPerUnit;
    }
    if (std::hypot(reference.x, reference.y) > matching::kFarthest) {
        refuse(rcOption, "teachPart", "the reference lies %g, %g pixels from the origin; 1e6 is taken",
               reference.x, reference.y);
        return matching::refusedModel(msTooLarge);
    }
    const TPartPose plane = invertPose({reference.x, reference.y, up * options.direction, 1});
    for (std::vector<OutlinePoint>& points : levels) {
        moveTo(points, plane);
        data->levels.push_back(matching::levelOf(points));
    }
    data->outline = std::move(levels.front());
    matching::completeReport(*data);
    return TPartModel(data);
}

}  // namespace orx
