#include "orxFunctions/matching/model/outline_samples.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/matching/model/model_limits.h"

namespace orx::matching {
namespace {

constexpr std::size_t kMostPieces = 100000;
// Ends nearer to one another than this meet, pixels.
constexpr double kMeeting = 0.01;
// Sides of an arc's polygon are as long, pixels: they leave a circle of 10 pixels by 0.01.
constexpr double kPolygonStep = 1.0;

// Within so many sigma of a point nothing may lie off its tangent by more than this share of it.
constexpr double kReach = 2.5;
constexpr double kOffTangent = 0.3;
// The other side of a slit is nearer than that, and looks the other way. A line drawn twice is not: it lies
// on itself, within so many pixels.
constexpr double kOnItself = 0.1;

double lengthOf(const TOutlinePiece& piece) {
    return piece.isArc ? piece.radius * radians(std::abs(piece.sweep))
                       : std::hypot(piece.to.x - piece.from.x, piece.to.y - piece.from.y);
}

// A place along a piece, as a share of its length, and the walking direction there.
struct Place {
    cv::Point2d position;
    cv::Point2d direction;  // unit
};

Place placeOn(const TOutlinePiece& piece, double share) {
    if (!piece.isArc) {
        const cv::Point2d way = piece.to - piece.from;
        return {piece.from + share * way, way * (1 / lengthOf(piece))};
    }
    const double angle = radians(piece.startAngle + share * piece.sweep);
    const cv::Point2d outwards(std::cos(angle), std::sin(angle));
    const double sense = piece.sweep < 0 ? -1 : 1;
    return {piece.centre + piece.radius * outwards, {-sense * outwards.y, sense * outwards.x}};
}

bool isNear(cv::Point2d p) {
    return isBetween(p.x, -kFarthest, kFarthest) && isBetween(p.y, -kFarthest, kFarthest);
}

bool isFinite(const TOutlinePiece& piece) {
    const double values[] = {piece.from.x,   piece.from.y, piece.to.x,       piece.to.y, piece.centre.x,
                             piece.centre.y, piece.radius, piece.startAngle, piece.sweep};
    return std::all_of(std::begin(values), std::end(values), [](double v) { return std::isfinite(v); });
}

bool hasLength(const TOutlinePiece& piece) {
    if (piece.isArc && !(piece.radius > 0 && std::abs(piece.sweep) <= 360)) return false;
    return lengthOf(piece) > 1e-6;
}

bool isInReach(const TOutlinePiece& piece) {
    if (!piece.isArc) return isNear(piece.from) && isNear(piece.to);
    return isNear(piece.centre) && piece.radius <= kFarthest && std::abs(piece.startAngle) <= 1e6;
}

// Points of an outline by the square of a grid in which they lie.
class PointGrid {
  public:
    PointGrid(const std::vector<OutlinePoint>& points, double cell) : points_(points), cell_(cell) {
        for (std::size_t i = 0; i < points.size(); ++i)
            squares_[squareOf(points[i].position, 0, 0)].push_back(i);
    }

    // Whether any point within a cell's size of this one fulfils the condition.
    template <typename Condition>
    bool anyNear(cv::Point2d place, const Condition& condition) const {
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                const auto square = squares_.find(squareOf(place, dx, dy));
                if (square == squares_.end()) continue;
                for (const std::size_t i : square->second) {
                    const cv::Point2d d = points_[i].position - place;
                    if (d.dot(d) <= cell_ * cell_ && condition(d, points_[i].normal)) return true;
                }
            }
        }
        return false;
    }

  private:
    std::int64_t squareOf(cv::Point2d place, int dx, int dy) const {
        constexpr std::int64_t kRow = std::int64_t{1} << 32U;
        const auto x = static_cast<std::int64_t>(std::floor(place.x / cell_)) + dx;
        const auto y = static_cast<std::int64_t>(std::floor(place.y / cell_)) + dy;
        return y * kRow + x;
    }

    const std::vector<OutlinePoint>& points_;
    double cell_;
    std::unordered_map<std::int64_t, std::vector<std::size_t>> squares_;
};

}  // namespace

std::vector<TOutline> inPixels(const std::vector<TOutline>& drawing, double pixelsPerUnit, bool yIsUp) {
    const double up = yIsUp ? -1 : 1;
    const auto pixels = [=](cv::Point2d p) { return cv::Point2d(p.x, up * p.y) * pixelsPerUnit; };
    std::vector<TOutline> outlines = drawing;
    for (TOutline& outline : outlines) {
        for (TOutlinePiece& piece : outline) {
            piece.from = pixels(piece.from);
            piece.to = pixels(piece.to);
            piece.centre = pixels(piece.centre);
            piece.radius *= pixelsPerUnit;
            piece.startAngle *= up;
            piece.sweep *= up;
        }
    }
    return outlines;
}

TMatchStatus checkOutlines(const std::vector<TOutline>& outlines) {
    std::size_t pieces = 0;
    double length = 0;
    TMatchStatus status = msOk;
    for (const TOutline& outline : outlines) {
        pieces += outline.size();
        for (const TOutlinePiece& piece : outline) {
            if (!isFinite(piece) || !hasLength(piece)) return msBadOutline;
            if (!isInReach(piece)) status = msTooLarge;
            length += lengthOf(piece);
        }
    }
    if (pieces == 0 || pieces > kMostPieces) return msBadOutline;
    return length > static_cast<double>(kMostPoints) - 1 ? msTooLarge : status;
}

std::vector<OutlinePoint> samplesOf(const TOutline& outline, bool normalsToTheLeft) {
    const double side = normalsToTheLeft ? 1 : -1;
    double length = 0;
    for (const TOutlinePiece& piece : outline) length += lengthOf(piece);
    const double step = length / std::max(1.0, std::round(length));
    std::vector<OutlinePoint> samples;
    double next = step / 2;  // from the start of the piece
    for (const TOutlinePiece& piece : outline) {
        const double own = lengthOf(piece);
        for (; next < own; next += step) {
            const Place place = placeOn(piece, next / own);
            OutlinePoint point;
            point.position = place.position;
            point.normal = side * cv::Point2d(place.direction.y, -place.direction.x);
            samples.push_back(point);
        }
        next -= own;
    }
    return samples;
}

std::vector<cv::Point2d> polygonOf(const TOutline& outline) {
    std::vector<cv::Point2d> corners;
    for (const TOutlinePiece& piece : outline) {
        const int count =
            piece.isArc ? std::max(4, static_cast<int>(std::ceil(lengthOf(piece) / kPolygonStep))) : 1;
        for (int i = 0; i < count; ++i) {
            corners.push_back(placeOn(piece, static_cast<double>(i) / count).position);
        }
    }
    return corners;
}

bool isClosed(const TOutline& outline) {
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const cv::Point2d end = placeOn(outline[i], 1).position;
        const cv::Point2d gap = placeOn(outline[(i + 1) % outline.size()], 0).position - end;
        if (std::hypot(gap.x, gap.y) > kMeeting) return false;
    }
    return !outline.empty();
}

std::vector<OutlinePoint> undisturbed(const std::vector<OutlinePoint>& samples, double sigma) {
    const PointGrid grid(samples, kReach * sigma);
    const double limit = kOffTangent * kReach * sigma;
    // Samples a pixel apart; farther ones do not follow each other.
    constexpr double kFollows = 2;
    std::vector<OutlinePoint> kept;
    int chain = -1;
    bool wasKept = false;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const cv::Point2d normal = samples[i].normal;
        const auto disturbs = [&](cv::Point2d d, cv::Point2d otherNormal) {
            const double off = std::abs(d.dot(normal));
            return off > limit || (off > kOnItself && otherNormal.dot(normal) < -0.5);
        };
        const bool disturbed = grid.anyNear(samples[i].position, disturbs);
        const cv::Point2d step = i > 0 ? samples[i].position - samples[i - 1].position : cv::Point2d();
        const bool follows =
            wasKept && samples[i].chain == samples[i - 1].chain && step.dot(step) <= kFollows * kFollows;
        wasKept = !disturbed;
        if (disturbed) continue;
        if (!follows) ++chain;
        kept.push_back(samples[i]);
        kept.back().chain = chain;
    }
    return kept;
}

}  // namespace orx::matching
