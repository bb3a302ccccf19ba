// What form freed from noise, relations and edges across outlines are worth, over scenes whose truth is
// known. The program accuracy_form prints the tables; tests hold them to bounds.
#ifndef DOCS_TOOLS_FORM_ACCURACY_H
#define DOCS_TOOLS_FORM_ACCURACY_H

#include <algorithm>
#include <cmath>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "tests/measuring/form_scenes.h"
#include "tests/measuring/relation_scenes.h"
#include "tests/support/edge_scene.h"

namespace form_accuracy {

// Errors of many scenes, and what was stated of them.
class Errors {
  public:
    void add(double error, double deviation) {
        ++count_;
        sum_ += error;
        squares_ += error * error;
        stated_ += deviation * deviation;
    }

    int count() const { return count_; }
    double bias() const { return sum_ / count_; }
    double rms() const { return std::sqrt(squares_ / count_); }
    double spread() const { return std::sqrt(std::max(0.0, squares_ / count_ - bias() * bias())); }
    double stated() const { return std::sqrt(stated_ / count_); }

  private:
    int count_ = 0;
    double sum_ = 0;
    double squares_ = 0;
    double stated_ = 0;
};

enum class Zone { kRing, kAround, kWithin, kStrip };

// A circle of radius 40 with three lobes, or a line of 300 pixels that is bent: a point a pixel.
struct FormTask {
    Zone zone;
    double height;  // of the lobes or the bend, pixels
    double noise;
    bool chain;  // as of an edge chain, or independent
};

constexpr double kSmoothing = 1.2;

struct FormResult {
    int refused = 0;
    double shown = 0;  // mean error of what the points show
    Errors freed;      // of what is left without the noise
};

inline orx::TFormOptions optionsOf(const FormTask& task) {
    orx::TFormOptions options;
    options.noise = task.noise;
    options.pointNoise = task.chain ? orx::pnEdgeChain : orx::pnNormal;
    options.smoothing = kSmoothing;
    return options;
}

// What is measured: the zone's width, or the radius of the circle around or within.
inline orx::TFormError formOf(Zone zone, const form_scenes::Points& points,
                              const orx::TFormOptions& options) {
    if (zone == Zone::kRing) return orx::minimumZoneCircle(points, options);
    if (zone == Zone::kStrip) return orx::minimumZoneLine(points, options);
    const bool around = zone == Zone::kAround;
    const orx::TRoundness circle = around ? orx::minimumCircumscribedCircle(points, options)
                                          : orx::maximumInscribedCircle(points, options);
    orx::TFormError radius = circle;
    radius.value = around ? circle.outerRadius : circle.innerRadius;
    radius.freed = around ? circle.freedOuter : circle.freedInner;
    radius.deviation = around ? circle.outerDeviation : circle.innerDeviation;
    return radius;
}

inline FormResult measureForm(const FormTask& task, int scenes, unsigned seed = 17) {
    const bool strip = task.zone == Zone::kStrip;
    form_scenes::Lobed part;
    part.radius = 40;
    part.count = strip ? 301 : 251;
    part.height = task.height;
    const double truth = task.zone == Zone::kAround   ? part.radius + task.height / 2
                         : task.zone == Zone::kWithin ? part.radius - task.height / 2
                                                      : task.height;
    form_scenes::Random random(seed);
    FormResult result;
    for (int i = 0; i < scenes; ++i) {
        const auto noise = task.chain ? form_scenes::chainNoise(part.count, task.noise, kSmoothing, random)
                                      : form_scenes::whiteNoise(part.count, task.noise, random);
        const auto points = strip ? form_scenes::bent(task.height, noise) : form_scenes::lobed(part, noise);
        const orx::TFormError form = formOf(task.zone, points, optionsOf(task));
        if (!form.valid()) {
            ++result.refused;
            continue;
        }
        result.shown += (form.value - truth) / scenes;
        result.freed.add(form.freed - truth, form.deviation);
    }
    return result;
}

// Relations that are refused, or folded at the end of their range, don't count.
inline Errors measureRelation(const relation_scenes::ValueRelation& relation,
                              const std::vector<relation_scenes::Scene>& scenes) {
    Errors errors;
    for (const relation_scenes::Scene& scene : scenes) {
        const orx::TMeasuredValue value = relation.of(scene);
        if (value.valid() && !value.folded) errors.add(value.value - relation.truth, value.deviation);
    }
    return errors;
}

// Of a point the distance from the truth: both its coordinates.
inline Errors measureRelation(const relation_scenes::PointRelation& relation,
                              const std::vector<relation_scenes::Scene>& scenes) {
    Errors errors;
    for (const relation_scenes::Scene& scene : scenes) {
        const orx::TMeasuredPoint point = relation.of(scene);
        if (!point.valid()) continue;
        errors.add(cv::norm(point.position - relation.truth), std::sqrt(cv::trace(point.covariance)));
    }
    return errors;
}

// Edges across a disk of that radius, or across a line where it is 0; asked for half a pixel beside them.
struct AcrossTask {
    double radius;
    double blur;
    double noise;
};

struct AcrossResult {
    int asked = 0;
    Errors found;  // of the places across the edge
};

inline AcrossResult measureAcross(const AcrossTask& task, int scenes) {
    AcrossResult result;
    form_scenes::Random random(29);
    const int size = task.radius > 0 ? 2 * static_cast<int>(task.radius) + 40 : 90;
    for (int i = 0; i < scenes; ++i) {
        const edge_scene::Look look{40, 200, task.blur, task.noise, i + 1};
        const cv::Point2d middle(size / 2 + random.uniform(-.5, .5), size / 2 + random.uniform(-.5, .5));
        const double turn = random.uniform(0, 2 * form_scenes::kPi);
        const cv::Point2d across(std::cos(turn), std::sin(turn));
        const cv::Point2d along(-across.y, across.x);
        const bool isDisk = task.radius > 0;
        const cv::Mat image = isDisk ? edge_scene::disk({size, size}, middle, task.radius, look)
                                     : edge_scene::halfPlane({size, size}, middle, turn, look);
        const cv::Point2d beside = middle + 0.4 * across;
        const auto probes = isDisk ? orx::probesAlongCircle(beside, task.radius + 0.2)
                                   : orx::probesAlongLine(beside - 25 * along, beside + 25 * along);
        orx::TContourEdgeOptions options;
        options.reach = std::max(3.0, 4 * task.blur);
        result.asked += static_cast<int>(probes.size());
        for (const orx::TContourEdge& edge : orx::edgesAcross(image, probes, options)) {
            const cv::Point2d arm = edge.position - middle;
            if (edge.found)
                result.found.add(isDisk ? cv::norm(arm) - task.radius : arm.dot(across), edge.deviation);
        }
    }
    return result;
}

}  // namespace form_accuracy

#endif
