// How right values and verdicts of recipes are, on rendered plates whose measures are known: what
// accuracy_verdict prints, and a test holds it to.
#ifndef ORX_DOCS_TOOLS_VERDICT_ACCURACY_H
#define ORX_DOCS_TOOLS_VERDICT_ACCURACY_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <opencv2/core.hpp>
#include <random>
#include <string>
#include <vector>

#include "docs/tools/calibration_accuracy.h"
#include "orxFunctions/orxfunctions.h"
#include "support/plane_scene.h"

namespace verdict_accuracy {

class Random {
  public:
    explicit Random(std::uint64_t seed) : generator_(seed * 0x9E3779B97F4A7C15U + 1) {}
    double uniform(double low, double high) {
        return low + (high - low) * static_cast<double>(generator_() >> 11U) * 0x1p-53;
    }

  private:
    std::mt19937_64 generator_;
};

struct Hole {
    cv::Point2d center;
    double radius;
};

// Millimetres, about the middle of the slot; y leads down.
struct Plate {
    std::array<Hole, 4> holes{{{{-18, -11}, 2}, {{18, -11}, 2.4}, {{-18, 11}, 3}, {{18, 11}, 4}}};
    double oval = 0;         // of the last hole: its radius varies by so much to either side, twice a turn
    double slotLength = 12;  // between the centres of its ends
    double slotWidth = 5;
    double width = 48;
    double height = 34;
    double leftTurn = 0;  // of the left edge about its middle, degrees

    double fromLeft(cv::Point2d p) const {
        const double turn = leftTurn * CV_PI / 180;
        return (p.x + width / 2) * std::cos(turn) + p.y * std::sin(turn);
    }
};

// How far a place lies within the metal; below 0 outside of it.
class Metal {
  public:
    explicit Metal(const Plate& plate)
        : plate_(plate),
          across_(std::cos(plate.leftTurn * CV_PI / 180)),
          along_(std::sin(plate.leftTurn * CV_PI / 180)) {}

    double operator()(cv::Point2d p) const {
        const double fromLeft = (p.x + plate_.width / 2) * across_ + p.y * along_;
        double inside =
            std::min({fromLeft, plate_.width / 2 - p.x, plate_.height / 2 - std::abs(p.y), slotAt(p)});
        for (const Hole& hole : plate_.holes) {
            const cv::Point2d way = p - hole.center;
            const double square = way.dot(way);
            double radius = hole.radius;
            const bool isLast = &hole == &plate_.holes.back();
            if (isLast && square > 0) radius += plate_.oval * (way.x * way.x - way.y * way.y) / square;
            inside = std::min(inside, std::sqrt(square) - radius);
        }
        return inside;
    }

  private:
    double slotAt(cv::Point2d p) const {
        const double beside = std::max(0.0, std::abs(p.x) - plate_.slotLength / 2);
        return std::sqrt(beside * beside + p.y * p.y) - plate_.slotWidth / 2;
    }

    Plate plate_;
    double across_;
    double along_;
};

// No two parts are alike: places and sizes differ by up to a fifth of a pixel either way.
inline Plate randomPlate(Random& random) {
    constexpr double kMost = 0.04;
    const auto off = [&] { return random.uniform(-kMost, kMost); };
    Plate plate;
    for (Hole& hole : plate.holes) hole = {hole.center + cv::Point2d(off(), off()), hole.radius + off()};
    plate.oval = random.uniform(0, 0.015);
    plate.slotLength += off();
    plate.slotWidth += off();
    plate.width += off();
    plate.height += off();
    plate.leftTurn = random.uniform(-0.1, 0.1);
    return plate;
}

// A value that is asked for, in which row of the table it counts, and what it should be.
struct Asked {
    std::string row;
    std::string json;  // of the recipe, its name left out
    std::function<double(const Plate&)> truth;
};

inline std::string featureText(const std::string& name, const std::string& what, const std::string& by) {
    return R"({"name": ")" + name + " " + by + R"(", )" + what + R"(, "search": 1.2, "by": ")" + by + "\"}";
}

// An end of the slot.
inline std::string arcText(double x, double middle, double sweep) {
    char text[120];
    std::snprintf(text, sizeof text,
                  R"("type": "arc", "center": [%g, 0], "radius": 2.5, "start": %g, "sweep": %g)", x,
                  middle - sweep / 2, sweep);
    return text;
}

// All features, found in one way. Chains tell the bend of an outline over six pixels to either side: they end
// that far from where the slot's ends become straight.
inline std::vector<std::string> featuresFoundBy(const std::string& by) {
    const auto one = [&](const char* name, const char* what) { return featureText(name, what, by); };
    const double sweep = by == "chain" ? 120 : 150;
    return {one("h0", R"("type": "circle", "center": [-18, -11], "radius": 2)"),
            one("h1", R"("type": "circle", "center": [18, -11], "radius": 2.4)"),
            one("h2", R"("type": "circle", "center": [-18, 11], "radius": 3)"),
            one("h3", R"("type": "circle", "center": [18, 11], "radius": 4)"),
            one("s0", arcText(-6, 180, sweep).c_str()),
            one("s1", arcText(6, 0, sweep).c_str()),
            one("upper", R"("type": "line", "from": [-5, -2.5], "to": [5, -2.5])"),
            one("lower", R"("type": "line", "from": [-5, 2.5], "to": [5, 2.5])"),
            one("top", R"("type": "line", "from": [-20, -17], "to": [20, -17])"),
            one("bottom", R"("type": "line", "from": [-20, 17], "to": [20, 17])"),
            one("left", R"("type": "line", "from": [-24, -13], "to": [-24, 13])"),
            one("right", R"("type": "line", "from": [24, -13], "to": [24, 13])")};
}

inline std::string valueText(const char* type, const std::string& a, const std::string& b,
                             const std::string& by) {
    std::string text = R"("type": ")" + std::string(type) + R"(", "of": [")" + a + " " + by + "\"";
    if (!b.empty()) text += ", \"" + b + " " + by + "\"";
    return text + "]";
}

// The values of those features.
inline std::vector<Asked> valuesFoundBy(const std::string& by) {
    std::vector<Asked> values;
    const auto add = [&](const std::string& row, const char* type, const std::string& a, const std::string& b,
                         std::function<double(const Plate&)> truth) {
        values.push_back({row, valueText(type, a, b, by), std::move(truth)});
    };
    for (std::size_t i = 0; i < 4; ++i) {
        const Plate nominal;
        const std::string oval = i == 3 ? "oval " : "";
        char row[40];
        std::snprintf(row, sizeof row, "%sdiameter of %g mm", oval.c_str(), 2 * nominal.holes[i].radius);
        const std::string name = "h" + std::to_string(i);
        add(row, "diameter", name, "", [i](const Plate& p) { return 2 * p.holes[i].radius; });
        add(oval + "hole to edge", "distance", name, "left",
            [i](const Plate& p) { return p.fromLeft(p.holes[i].center); });
        add(oval + "hole to edge", "distance", name, "top",
            [i](const Plate& p) { return p.height / 2 + p.holes[i].center.y; });
        for (std::size_t j = 0; j < i; ++j) {
            add(oval + "hole to hole", "distance", name, "h" + std::to_string(j),
                [i, j](const Plate& p) { return cv::norm(p.holes[i].center - p.holes[j].center); });
        }
    }
    add("edge to edge", "distance", "top", "bottom", [](const Plate& p) { return p.height; });
    add("edge to edge", "distance", "left", "right", [](const Plate& p) { return p.width; });
    add("slot: width", "distance", "upper", "lower", [](const Plate& p) { return p.slotWidth; });
    add("slot: length", "distance", "s0", "s1", [](const Plate& p) { return p.slotLength; });
    for (const char* end : {"s0", "s1"}) {
        add("slot: radius", "radius", end, "", [](const Plate& p) { return p.slotWidth / 2; });
    }
    add("angle of edges", "angle", "top", "left", [](const Plate& p) { return 90 - std::abs(p.leftTurn); });
    add("oval roundness", "roundness", "h3", "", [](const Plate& p) { return 2 * p.oval; });
    for (const char* edge : {"top", "bottom", "left", "right"}) {
        add("straightness", "straightness", edge, "", [](const Plate&) { return 0.0; });
    }
    return values;
}

inline const std::vector<std::string>& methods() {
    static const std::vector<std::string> kMethods{"calipers", "edges", "chain"};
    return kMethods;
}

// All values of a picture: every method's, and the slot's width by pairs of edges.
inline std::vector<Asked> allValues() {
    std::vector<Asked> values;
    for (const std::string& by : methods()) {
        for (Asked& value : valuesFoundBy(by)) {
            value.row = by + ": " + value.row;
            values.push_back(std::move(value));
        }
    }
    values.push_back({"edge pair: slot's width", R"("type": "width", "of": ["pair"])",
                      [](const Plate& p) { return p.slotWidth; }});
    return values;
}

// The recipe for a part that lies about at `pose` (millimetres and degrees on the plane).
inline std::string recipeText(const std::string& calibration, const orx::TPartPose& pose) {
    char place[120];
    std::snprintf(place, sizeof place, R"({"by": "fixed", "x": %.6f, "y": %.6f, "angle": %.6f})", pose.x,
                  pose.y, pose.angle);
    std::string text = R"({"recipe": 1, "unit": "mm", "coordinates": "mm", "calibration": ")" + calibration +
                       R"(", "part": )" + place + ", \"features\": [\n";
    for (const std::string& by : methods()) {
        for (const std::string& feature : featuresFoundBy(by)) text += feature + ",\n";
    }
    text += R"({"name": "pair", "type": "edgePair", "from": [0, -2.5], "to": [0, 2.5], "search": 1,
        "count": 7}], "values": [)";
    int number = 0;
    for (const Asked& value : allValues()) {
        text += (number > 0 ? ",\n" : "\n") + std::string(R"({"name": "v)") + std::to_string(number) +
                "\", " + value.json + "}";
        ++number;
    }
    return text + "]}\n";
}

// How far a value is off, and what is stated of it.
struct Sample {
    bool measured = false;
    double error = 0;
    double deviation = 0;
    double degreesOfFreedom = 0;
    double calibration = 0;  // its share of the deviation
};

// A part that lies somewhere on the plane within the field that the calibration's target covered.
struct Part {
    explicit Part(std::uint64_t seed) {
        Random random(seed);
        plate = randomPlate(random);
        pose = {50 + random.uniform(-15, 15), 35 + random.uniform(-5, 5), random.uniform(-180, 180), 1};
        // As well as one who looked for it roughly knows.
        expected = {pose.x + random.uniform(-0.3, 0.3), pose.y + random.uniform(-0.3, 0.3),
                    pose.angle + random.uniform(-0.5, 0.5), 1};
    }

    scenes::PlaneShape shape() const {
        const double turn = pose.angle * CV_PI / 180;
        const cv::Point2d x(std::cos(turn), std::sin(turn));
        return [metal = Metal(plate), middle = cv::Point2d(pose.x, pose.y), x](cv::Point2d p) {
            const cv::Point2d way = p - middle;
            return metal({way.dot(x), x.cross(way)});
        };
    }

    Plate plate;
    orx::TPartPose pose;
    orx::TPartPose expected;
};

struct Light {
    double blur = 0.7;
    double noise = 2;
};

inline cv::Mat pictureOf(const scenes::PlaneRenderer& view, const Part& part, const Light& light,
                         std::uint64_t seed) {
    scenes::PlaneExposure exposure;
    exposure.blurSigma = light.blur;
    return scenes::withNoise(view.levelsOfFewEdges(part.shape(), exposure), light.noise, seed ^ 0x5DEECE66DU);
}

// The samples of all values, in their order.
inline std::vector<Sample> measurePart(const cv::Mat& picture, const Part& part,
                                       const std::vector<Asked>& asked, const std::string& calibration,
                                       const std::string& folder) {
    const orx::TRecipeResult result =
        orx::parseRecipe(recipeText(calibration, part.expected), folder).run(picture);
    std::vector<Sample> samples(asked.size());
    for (std::size_t i = 0; i < std::min(samples.size(), result.values.size()); ++i) {
        const orx::TRecipeValue& value = result.values[i];
        if (!value.measured) continue;
        samples[i] = {true, value.value - asked[i].truth(part.plate), value.deviation, value.degreesOfFreedom,
                      value.calibrationDeviation};
    }
    return samples;
}

// The plane of the parts, with its camera known exactly.
inline orx::TPlaneCalibration truePlane(const scenes::PlaneCamera& camera) {
    orx::TPlaneCalibration plane;
    plane.status = orx::plOk;
    plane.imageSize = camera.size;
    plane.camera = {camera.fx, 0, camera.cx, 0, camera.fy, camera.cy, 0, 0, 1};
    plane.distortion = {camera.k1, camera.k2, camera.p1, camera.p2, camera.k3};
    const cv::Matx33d& r = camera.rotation;
    const cv::Vec3d axis(r(2, 1) - r(1, 2), r(0, 2) - r(2, 0), r(1, 0) - r(0, 1));
    const double angle = std::atan2(cv::norm(axis), r(0, 0) + r(1, 1) + r(2, 2) - 1);
    plane.rotation = axis * (angle / std::max(1e-300, cv::norm(axis)));
    plane.translation = camera.translation;
    plane.degreesOfFreedom = 1e6;
    return plane;
}

// Calibrations from pictures of a chessboard, under fresh noise each time.
class Calibrator {
  public:
    explicit Calibrator(const Light& light) : light_(light) {
        scenes::PlaneExposure exposure;
        exposure.blurSigma = light.blur;
        for (const scenes::PlaneCamera& pose : calibration_accuracy::eightPoses())
            levels_.push_back(
                scenes::renderPlaneLevels(pose, calibration_accuracy::shapeOf(target_), exposure));
    }

    orx::TPlaneCalibration calibrate(std::uint64_t seed) const {
        std::vector<orx::TTargetView> views;
        for (const cv::Mat& levels : levels_) {
            const std::uint64_t own = seed * 100 + views.size() + 1;
            views.push_back(orx::findTarget(scenes::withNoise(levels, light_.noise, own), target_));
        }
        return orx::calibratePlane(views);
    }

  private:
    Light light_;
    orx::TTarget target_ = calibration_accuracy::targetOf(orx::tkChessboard);
    std::vector<cv::Mat> levels_;
};

// What a row of the table adds up.
struct Row {
    int count = 0;
    int lost = 0;
    double bias = 0;
    double rms = 0;
    double stated = 0;       // root mean square
    double calibration = 0;  // its share, likewise
    // Of parts whose true value is a limit, the share with a wrong verdict: over both limits, and at the
    // worse one. (Half of the parts that lie that near conform, and half do not: a verdict is wrong for one
    // half.)
    double wrong = 0;
    double worst = 0;
    // Of parts whose true values lie evenly around a limit, up to four deviations to either side.
    double wrongAccepts = 0;
    double wrongRejects = 0;
    double undecided = 0;
    double unavoidable = 0;  // undecided for whoever knows the deviation, and has no bias
};

constexpr double kConfidence = 0.95;

inline orx::TVerdict verdictAt(const Sample& sample, double offset, bool upper, double reach) {
    // Measured from the true value: the limit lies `offset` above it.
    orx::TTolerance tolerance;
    tolerance.lower = upper ? offset - reach : offset;
    tolerance.upper = upper ? offset : offset + reach;
    return orx::judge(sample.error, sample.deviation, sample.degreesOfFreedom, tolerance, kConfidence)
        .verdict;
}

inline Row rowOf(const std::vector<Sample>& samples, std::uint64_t seed) {
    Row row;
    for (const Sample& sample : samples) {
        if (!sample.measured) {
            ++row.lost;
            continue;
        }
        ++row.count;
        row.bias += sample.error;
        row.rms += sample.error * sample.error;
        row.stated += sample.deviation * sample.deviation;
        row.calibration += sample.calibration * sample.calibration;
    }
    if (row.count == 0) return row;
    const double n = row.count;
    row.bias /= n;
    for (double* value : {&row.rms, &row.stated, &row.calibration}) *value = std::sqrt(*value / n);
    Random random(seed);
    const double reach = 20 * row.rms;
    double low = 0;
    double high = 0;
    const auto sampleOfKnown = [&](const Sample& sample) {
        return Sample{true, sample.error - row.bias, row.rms, std::numeric_limits<double>::infinity(), 0};
    };
    for (const Sample& sample : samples) {
        if (!sample.measured) continue;
        // At an upper limit; a lower one is its mirror image.
        const orx::TVerdict there = verdictAt(sample, 0, true, reach);
        low += there == orx::vdPass ? 1 / n : 0;
        high += there == orx::vdFail ? 1 / n : 0;
        for (const bool upper : {false, true}) {
            const double offset = random.uniform(-4, 4) * row.rms;
            const bool conforms = upper == (offset > 0);
            const orx::TVerdict verdict = verdictAt(sample, offset, upper, reach);
            row.wrongAccepts += verdict == orx::vdPass && !conforms ? 0.5 / n : 0;
            row.wrongRejects += verdict == orx::vdFail && conforms ? 0.5 / n : 0;
            row.undecided += verdict == orx::vdUndecided ? 0.5 / n : 0;
            const bool open = verdictAt(sampleOfKnown(sample), offset, upper, reach) == orx::vdUndecided;
            row.unavoidable += open ? 0.5 / n : 0;
        }
    }
    row.wrong = (low + high) / 2;
    row.worst = std::max(low, high);
    return row;
}

}  // namespace verdict_accuracy

#endif
