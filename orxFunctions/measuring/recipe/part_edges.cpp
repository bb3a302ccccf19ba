#include "orxFunctions/measuring/recipe/part_edges.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <opencv2/imgproc.hpp>

namespace orx::recipes {
namespace {

using ORXEdge::TMetricContour;

constexpr std::size_t kLong = 60;     // points of an edge that noise does not make
constexpr double kBorder = 2.5;       // pixels from the picture's border that are cut by it
constexpr double kLeastShare = 0.2;   // of the largest thing's area, for one that goes before it
constexpr double kOtherShare = 0.05;  // of the part's area, for what is told as another thing
constexpr int kCircleSteps = 12;      // corners of the margin about a corner

std::size_t longPoints(const PartEdges& found) {
    std::size_t count = 0;
    for (const TMetricContour& edge : found.edges) {
        if (edge.points.size() >= kLong) count += edge.points.size();
    }
    return count;
}

PartEdges edgesAt(double sigma, const Picture& picture, const cv::Rect& region, int minPoints) {
    ORXEdge::TMetricOptions options;
    options.sigma = sigma;
    options.automaticThresholds = true;
    options.noise = picture.noise;
    options.minPoints = minPoints;
    PartEdges found;
    found.sigma = sigma;
    ORXEdge::edgesSubPixMetric(picture.bytes(region), found.edges, options);
    for (TMetricContour& edge : found.edges) {
        for (cv::Point2f& p : edge.points) p += cv::Point2f(region.tl());
    }
    return found;
}

bool isAt(const cv::Rect& region, const cv::Point2f& p) {
    return p.x < region.x + kBorder || p.y < region.y + kBorder ||
           p.x > region.x + region.width - 1.0 - kBorder || p.y > region.y + region.height - 1.0 - kBorder;
}

struct Thing {
    std::vector<cv::Point2f> hull;
    double area = 0.0;
    bool isCut = false;  // by the border
};

std::vector<cv::Point2f> hullOf(const std::vector<cv::Point2f>& points) {
    std::vector<cv::Point2f> hull;
    cv::convexHull(points, hull);
    return hull;
}

// Edges that lie nearer to one another than `gap` are of one thing, and those within its hull.
class Things {
  public:
    Things(const std::vector<TMetricContour>& edges, const cv::Rect& region, int gap) : region_(region) {
        cv::Mat mask(region.size(), CV_8UC1, cv::Scalar(0));
        for (const TMetricContour& edge : edges) {
            for (const cv::Point2f& p : edge.points) mask.at<uchar>(pixel(p)) = 255;
        }
        const cv::Mat disk = cv::getStructuringElement(cv::MORPH_ELLIPSE, {gap | 1, gap | 1});
        cv::dilate(mask, mask, disk);
        cv::Mat labels;
        const int count = cv::connectedComponents(mask, labels);
        std::vector<std::vector<cv::Point2f>> points(static_cast<std::size_t>(count));
        for (const TMetricContour& edge : edges) {
            for (const cv::Point2f& p : edge.points)
                points[static_cast<std::size_t>(labels.at<int>(pixel(p)))].push_back(p);
        }
        for (const std::vector<cv::Point2f>& own : points) {
            if (own.size() >= 3) add(own);
        }
        std::sort(things_.begin(), things_.end(),
                  [](const Thing& a, const Thing& b) { return a.area > b.area; });
        dropInner();
    }

    const std::vector<Thing>& all() const { return things_; }  // the largest first

  private:
    cv::Point pixel(const cv::Point2f& p) const {
        return {std::clamp(cvRound(p.x) - region_.x, 0, region_.width - 1),
                std::clamp(cvRound(p.y) - region_.y, 0, region_.height - 1)};
    }

    void add(const std::vector<cv::Point2f>& points) {
        Thing thing;
        thing.hull = hullOf(points);
        thing.area = cv::contourArea(thing.hull);
        thing.isCut = std::any_of(thing.hull.begin(), thing.hull.end(),
                                  [&](const cv::Point2f& p) { return isAt(region_, p); });
        things_.push_back(std::move(thing));
    }

    // What lies inside of a larger one is of it.
    void dropInner() {
        std::vector<Thing> outer;
        for (const Thing& thing : things_) {
            const auto holds = [&](const Thing& larger) {
                return std::all_of(thing.hull.begin(), thing.hull.end(), [&](const cv::Point2f& p) {
                    return cv::pointPolygonTest(larger.hull, p, false) >= 0;
                });
            };
            if (std::none_of(outer.begin(), outer.end(), holds)) outer.push_back(thing);
        }
        things_ = outer;
    }

    cv::Rect region_;
    std::vector<Thing> things_;
};

std::vector<cv::Point2d> widened(const std::vector<cv::Point2f>& hull, double margin, cv::Size picture) {
    std::vector<cv::Point2f> points;
    for (const cv::Point2f& p : hull) {
        for (int k = 0; k < kCircleSteps; ++k) {
            const double turn = 2.0 * CV_PI * k / kCircleSteps;
            const double x = p.x + margin * std::cos(turn);
            const double y = p.y + margin * std::sin(turn);
            points.emplace_back(static_cast<float>(std::clamp(x, 0.0, picture.width - 1.0)),
                                static_cast<float>(std::clamp(y, 0.0, picture.height - 1.0)));
        }
    }
    const std::vector<cv::Point2f> outer = hullOf(points);
    return {outer.begin(), outer.end()};
}

double gapFor(cv::Size size) { return std::clamp(0.01 * std::hypot(size.width, size.height), 5.0, 25.0); }

// Null where there is none.
const Thing* mainOf(const std::vector<Thing>& things) {
    if (things.empty() || things.front().area <= 0.0) return nullptr;
    const auto isWhole = [&](const Thing& thing) {
        return !thing.isCut && thing.area >= kLeastShare * things.front().area;
    };
    const auto whole = std::find_if(things.begin(), things.end(), isWhole);
    return whole != things.end() ? &*whole : &things.front();
}

}  // namespace

PartEdges findPartEdges(const Picture& picture, const cv::Rect& region, int minPoints) {
    PartEdges fine = edgesAt(1.0, picture, region, minPoints);
    PartEdges smooth = edgesAt(2.0, picture, region, minPoints);
    const auto longFine = static_cast<double>(longPoints(fine));
    const auto longSmooth = static_cast<double>(longPoints(smooth));
    const bool isSame = longSmooth >= 0.75 * longFine;
    const bool isPieces =
        isSame && (fine.edges.size() > 2 * smooth.edges.size() + 2 || longSmooth > 1.2 * longFine);
    const bool isNoise = fine.edges.size() > 4 * smooth.edges.size() + 8;
    return !smooth.edges.empty() && (isPieces || isNoise) ? std::move(smooth) : std::move(fine);
}

TPartRegion mainPart(const PartEdges& found, cv::Size picture) {
    const cv::Rect whole({}, picture);
    const double gap = gapFor(picture);
    const std::vector<Thing> things = Things(found.edges, whole, cvRound(gap)).all();
    TPartRegion region;
    const Thing* const part = mainOf(things);
    if (part == nullptr) return region;
    region.found = true;
    region.polygon = widened(part->hull, gap / 2.0, picture);
    const std::vector<cv::Point2f> corners(region.polygon.begin(), region.polygon.end());
    region.box = cv::boundingRect(corners) & whole;
    const auto isOther = [&](const Thing& thing) {
        return &thing != part && thing.area >= kOtherShare * part->area;
    };
    region.others = static_cast<int>(std::count_if(things.begin(), things.end(), isOther));
    return region;
}

void dropCutEdges(PartEdges& found, const cv::Rect& region) {
    const std::vector<Thing> things = Things(found.edges, region, cvRound(gapFor(region.size()))).all();
    const Thing* const part = mainOf(things);
    if (part == nullptr || part->isCut) return;
    const auto isCut = [&](const TMetricContour& edge) {
        return std::any_of(edge.points.begin(), edge.points.end(),
                           [&](const cv::Point2f& p) { return isAt(region, p); });
    };
    found.edges.erase(std::remove_if(found.edges.begin(), found.edges.end(), isCut), found.edges.end());
}

bool liesWithin(const TMetricContour& edge, const std::vector<cv::Point2f>& polygon) {
    const auto inside = std::count_if(edge.points.begin(), edge.points.end(), [&](const cv::Point2f& p) {
        return cv::pointPolygonTest(polygon, p, false) >= 0;
    });
    return 2 * static_cast<std::size_t>(inside) > edge.points.size();
}

}  // namespace orx::recipes
