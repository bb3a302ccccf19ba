#include "orxFunctions/measuring/recipe/measure_feature.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/measuring/recipe/edge_pair.h"

namespace orx::recipes {
namespace {

constexpr double kDrawingSteps = 3.0;  // pixels
constexpr int kScouts = 60;            // calipers that find the outline before every pixel of it is probed

std::string percent(double share) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%.0f %%", 100.0 * share);
    return buffer;
}

// Why the feature can't be looked for in the picture; empty where it can.
std::string outsideProblem(const Picture& picture, const std::vector<cv::Point2d>& nominal, double minShare) {
    if (nominal.empty()) return "has no place in the picture";
    const auto inside =
        std::count_if(nominal.begin(), nominal.end(), [&](cv::Point2d p) { return picture.holds(p); });
    const double share = static_cast<double>(inside) / static_cast<double>(nominal.size());
    if (inside == 0) return "lies outside of the picture";
    if (share >= minShare) return "";
    return "reaches out of the picture: " + percent(share) + " of it lies inside, " + percent(minShare) +
           " is asked for";
}

// The part of a measured outline that the recipe asks for, whatever part of it was found.
Curve wantedCurve(const Shape& shape, const std::vector<cv::Point2d>& nominal, double sweep) {
    if (shape.kind == fkLine) {
        const TMeasuredLine& line = shape.line;
        const auto foot = [&](cv::Point2d p) {
            return line.point + (p - line.point).dot(line.direction) * line.direction;
        };
        return lineCurve(foot(nominal.front()), foot(nominal.back()));
    }
    if (shape.kind == fkEllipse) return curveOf(shape);
    const TMeasuredCircle& circle = shape.circle;
    if (std::abs(sweep) >= 360.0) return circleCurve(circle.center, circle.radius, 0.0, 360.0);
    const cv::Point2d first = nominal.front() - circle.center;
    const cv::Point2d next = nominal[1] - circle.center;
    const double sense = first.cross(next) > 0.0 ? 1.0 : -1.0;
    return circleCurve(circle.center, circle.radius, degrees(std::atan2(first.y, first.x)),
                       sense * std::abs(sweep));
}

class Measurement {
  public:
    Measurement(const Picture& picture, const FeatureSpec& asked, const Frame& frame, const Spaces& spaces)
        : picture_(picture), spec_(asked), frame_(frame), spaces_(spaces) {}

    MeasuredFeature run() {
        const ToImage toImage = [&](cv::Point2d p) { return frame_.toImage(p); };
        result_.nominal = polylineOf(recipes::curveOf(spec_), toImage, kDrawingSteps);
        result_.problem = outsideProblem(picture_, result_.nominal, spec_.minShare);
        if (!result_.problem.empty()) return std::move(result_);
        findEdges();
        if (result_.problem.empty()) fit();
        if (result_.problem.empty()) checkShare();
        result_.measured = result_.problem.empty();
        if (result_.measured) drawOutline();
        return std::move(result_);
    }

  private:
    void findEdges() {
        if (spec_.kind == fkEdgePair) {
            result_.edges = pairPoints(picture_, spec_, frame_);
        } else if (spec_.method == Method::kChain) {
            result_.edges = chainPoints(picture_, spec_, frame_, spec_.kind == fkChain);
        } else if (spec_.method == Method::kCalipers) {
            result_.edges = caliperPoints(picture_, spec_, frame_);
        } else {
            probe();
        }
        if (result_.problem.empty() && result_.edges.points.empty())
            result_.problem = "no edge within the search band";
    }

    // Calipers find the outline, probes across it then every pixel of it.
    void probe() {
        result_.edges = caliperPoints(picture_, spec_, frame_, kScouts);
        if (result_.edges.points.empty()) return;
        FeatureSpec scouts = spec_;
        scouts.loss = flTukey;
        const SpaceShape rough = fitShape(result_.edges, scouts, spaces_.plane);
        if (!rough.valid) {
            result_.problem = rough.problem;
            return;
        }
        const Curve curve = wantedCurve(rough.shape, onSpace(result_.nominal), spec_.sweep);
        result_.edges = probedPoints(picture_, spec_, curve, fromSpace(), result_.edges.blur);
    }

    ToImage fromSpace() const {
        const Plane* plane = spaces_.plane;
        return [plane](cv::Point2d p) { return plane != nullptr ? plane->toImage(p) : p; };
    }
    // The first points and the last one, which tell where a curve begins and ends.
    std::vector<cv::Point2d> onSpace(const std::vector<cv::Point2d>& pixels) const {
        std::vector<cv::Point2d> ends{pixels[0], pixels[1], pixels.back()};
        if (spaces_.plane == nullptr) return ends;
        for (cv::Point2d& p : ends) p = spaces_.plane->toPlane(p);
        return ends;
    }

    SpaceShape fitIn(const Plane* plane) const {
        return spec_.kind == fkEdgePair ? widthOf(result_.edges, plane)
                                        : fitShape(result_.edges, spec_, plane);
    }

    void fit() {
        if (spaces_.plane != nullptr) result_.millimetres = fitIn(spaces_.plane);
        if (spaces_.pixels) result_.pixels = fitIn(nullptr);
        if (!primary().valid) result_.problem = primary().problem;
    }

    const SpaceShape& primary() const {
        return spaces_.plane != nullptr ? result_.millimetres : result_.pixels;
    }

    void checkShare() {
        const auto& used = primary().used;
        auto count = static_cast<double>(result_.edges.points.size());
        if (!used.empty()) count = static_cast<double>(std::count(used.begin(), used.end(), 1));
        if (spec_.kind == fkEdgePair) count /= 2.0;
        const double share = count / std::max(1, result_.edges.searched);
        if (share >= spec_.minShare) return;
        result_.problem =
            "seen at " + percent(share) + " of its places, " + percent(spec_.minShare) + " is asked for";
    }

    void drawOutline() {
        if (spec_.kind == fkEdgePair) {
            result_.outline = {result_.edges.points[0], result_.edges.points[1]};
        } else if (spec_.kind == fkChain) {
            result_.outline = result_.edges.points;
            if (result_.edges.closed) result_.outline.push_back(result_.outline.front());
        } else {
            const Curve curve = wantedCurve(primary().shape, onSpace(result_.nominal), spec_.sweep);
            result_.outline = polylineOf(curve, fromSpace(), kDrawingSteps);
            if (curve.closed && !result_.outline.empty()) result_.outline.push_back(result_.outline.front());
        }
    }

    const Picture& picture_;
    const FeatureSpec& spec_;
    const Frame& frame_;
    const Spaces& spaces_;
    MeasuredFeature result_;
};

}  // namespace

MeasuredFeature measureFeature(const Picture& picture, const FeatureSpec& asked, const Frame& frame,
                               const Spaces& spaces) {
    return Measurement(picture, asked, frame, spaces).run();
}

}  // namespace orx::recipes
