// How often parts are found in rendered scenes, how well, and how far the stated deviations can be believed.
// Used by accuracy_matching and by the test that holds the finder to it.
#ifndef DOCS_TOOLS_MATCHING_ACCURACY_H
#define DOCS_TOOLS_MATCHING_ACCURACY_H

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "support/part_scene.h"

namespace matching_accuracy {

// A kind of scenes, and how parts are looked for in them.
struct Row {
    std::string label;
    scenes::PartSceneSettings scene;  // kind and seed are set for each scene
    orx::TFindOptions find;
    double teachNoise = 0;
    double teachContrast = 100;  // of the picture that teaches the part; its sign is its polarity
    bool absent = false;         // parts of other kinds at the most: every find is false
    std::vector<scenes::PartKind> kinds{scenes::kFiveParts.begin(), scenes::kFiveParts.end()};
    int share = 1;  // of the scenes asked for, only so many: 1 is all, 10 a tenth
};

// Sums over finds of what a deviation claims and of what it was.
struct Spread {
    double squares = 0;  // of the errors
    double stated = 0;   // squares of the stated deviations
    int count = 0;

    void add(double error, double deviation) {
        squares += error * error;
        stated += deviation * deviation;
        ++count;
    }
    void add(const Spread& other) {
        squares += other.squares;
        stated += other.stated;
        count += other.count;
    }
    double rms() const { return count > 0 ? std::sqrt(squares / count) : 0; }
    double statedOverTrue() const { return squares > 0 ? std::sqrt(stated / squares) : 0; }
};

struct Result {
    int pictures = 0;
    int parts = 0;
    int found = 0;
    int falseFinds = 0;
    int undetermined = 0;  // found, with a direction that is stated to be free
    int wrongPolarity = 0;
    Spread place;  // both coordinates
    Spread angle;  // degrees
    Spread scale;
    double leastScore = 1;  // of those found

    void add(const Result& other) {
        pictures += other.pictures;
        parts += other.parts;
        found += other.found;
        falseFinds += other.falseFinds;
        undetermined += other.undetermined;
        wrongPolarity += other.wrongPolarity;
        place.add(other.place);
        angle.add(other.angle);
        scale.add(other.scale);
        leastScore = std::min(leastScore, other.leastScore);
    }
    double foundShare() const { return parts > 0 ? static_cast<double>(found) / parts : 1; }
    double falseEach() const { return pictures > 0 ? static_cast<double>(falseFinds) / pictures : 0; }
};

// x, y, angle and scale, the latter two as pixels at the part's circle: what the error of a pose does to the
// outline. Angles that look the same are the same.
inline cv::Vec4d errorOf(const orx::TPartPose& found, const scenes::PlacedPart& truth) {
    const double turn = 360.0 / scenes::partShape(truth.kind).symmetry;
    const double angle = std::remainder(found.angle - truth.pose.angle, turn);
    const double radius = scenes::kPartRadius * truth.pose.scale;
    return {found.x - truth.pose.x, found.y - truth.pose.y, angle * CV_PI / 180 * radius,
            (found.scale / truth.pose.scale - 1) * radius};
}

// A find is the part where no point of the outline is off by more than about so much, pixels. What the finder
// states to be free does not count, where a part is hidden: in full view each of them tells everything.
constexpr double kNear = 4;
constexpr double kHidden = 0.05;

inline bool isThere(const orx::TFoundPart& found, const scenes::PlacedPart& truth) {
    cv::Vec4d error = errorOf(found.pose, truth);
    if (truth.hidden > kHidden)
        for (const cv::Vec4d& free : found.free) error -= free * error.dot(free);
    return cv::norm(error) <= kNear;
}

// What the model's pose is to the part's in the picture that teaches it: none.
inline orx::TPartModel teachAlone(scenes::PartKind kind, double noise, double contrast) {
    const scenes::PartPicture picture = scenes::renderPartAlone(kind, noise, contrast);
    orx::TTeachOptions options;
    options.hasReference = true;
    options.reference = {picture.pose.x, picture.pose.y};
    options.direction = picture.pose.angle;
    return orx::teachPart(picture.image, cv::Rect(4, 4, picture.image.cols - 8, picture.image.rows - 8),
                          options);
}

inline void addFound(Result& result, const orx::TFoundPart& found, const scenes::PlacedPart& truth,
                     bool reversed) {
    ++result.found;
    result.leastScore = std::min(result.leastScore, found.score);
    result.wrongPolarity += found.reversed != reversed ? 1 : 0;
    if (!found.free.empty()) {
        ++result.undetermined;
        return;
    }
    const cv::Vec4d error = errorOf(found.pose, truth);
    const double radius = scenes::kPartRadius * truth.pose.scale;
    result.place.add(error[0], found.deviationX);
    result.place.add(error[1], found.deviationY);
    result.angle.add(error[2] / radius * 180 / CV_PI, found.deviationAngle);
    if (std::isfinite(found.deviationScale) && found.deviationScale > 0)
        result.scale.add(error[3] / radius * truth.pose.scale, found.deviationScale);
}

// Told of each scene: its settings, truth and finds.
using Watch = std::function<void(const scenes::PartSceneSettings& settings, const scenes::PartScene& scene,
                                 const orx::TFindResult& finds, const Result& result)>;

inline Result judge(const Row& row, const scenes::PartScene& scene, const orx::TFindResult& finds) {
    Result result;
    result.pictures = 1;
    std::vector<bool> taken(finds.parts.size());
    const bool reversed = row.scene.contrast * row.teachContrast < 0;
    for (const scenes::PlacedPart& truth : scene.parts) {
        ++result.parts;
        for (std::size_t i = 0; i < finds.parts.size(); ++i) {
            if (taken[i] || !isThere(finds.parts[i], truth)) continue;
            taken[i] = true;
            addFound(result, finds.parts[i], truth, reversed);
            break;
        }
    }
    result.falseFinds = static_cast<int>(std::count(taken.begin(), taken.end(), false));
    return result;
}

// The row's results for each part. So many scenes over all of them.
inline std::map<scenes::PartKind, Result> measure(const Row& row, int scenesInAll, const Watch& watch = {}) {
    std::map<scenes::PartKind, Result> results;
    const int each = std::max(1, scenesInAll / row.share / static_cast<int>(row.kinds.size()));
    for (const scenes::PartKind kind : row.kinds) {
        const orx::TPartModel model = teachAlone(kind, row.teachNoise, row.teachContrast);
        for (int i = 0; i < each; ++i) {
            scenes::PartSceneSettings settings = row.scene;
            settings.kind = kind;
            settings.seed = static_cast<std::uint64_t>(1000 * static_cast<int>(kind) + i + 1);
            const scenes::PartScene scene = scenes::renderParts(settings);
            const orx::TFindResult finds = orx::findParts(scene.image, model, row.find);
            const Result result = judge(row, scene, finds);
            results[kind].add(result);
            if (watch) watch(settings, scene, finds, result);
        }
    }
    return results;
}

inline Result sumOf(const std::map<scenes::PartKind, Result>& results) {
    Result sum;
    for (const auto& [kind, result] : results) sum.add(result);
    return sum;
}

// ---- The rows
// -----------------------------------------------------------------------------------------------

// What a row is held to: good, excellent. Negative where it is held to nothing.
struct Goals {
    double found[2] = {-1, -1};
    double falseFinds[2] = {-1, -1};
    double place[2] = {-1, -1};
    double angle[2] = {-1, -1};
    double scale[2] = {-1, -1};
    bool stated = false;
};

struct GoalRow {
    Row row;
    Goals goals;
};

inline Row plainRow(const std::string& label, double minScore = 0.6) {
    Row row;
    row.label = label;
    row.find.minScore = minScore;
    // More than there are: what is found beyond them is false.
    row.find.maxParts = 4;
    return row;
}

// The scenes that the library's goals are about.
inline std::vector<GoalRow> goalRows() {
    const Goals anyScene{{0.99, 1}, {0.05, 0}};
    std::vector<GoalRow> rows;
    const auto add = [&](const Row& row, const Goals& goals) { rows.push_back({row, goals}); };

    Goals goals = anyScene;
    goals.place[0] = 0.01, goals.place[1] = 0.005;
    goals.angle[0] = 0.02, goals.angle[1] = 0.01;
    goals.stated = true;
    add(plainRow("clean, noise 2"), goals);

    Row row = plainRow("clean, noise 8");
    row.scene.noiseSigma = 8;
    goals = anyScene;
    goals.place[0] = 0.02, goals.place[1] = 0.013;
    goals.angle[0] = 0.04, goals.angle[1] = 0.02;
    goals.stated = true;
    add(row, goals);

    row = plainRow("clutter");
    row.scene.clutter = 40;
    add(row, anyScene);

    row = plainRow("uneven light, half in the corner");
    row.scene.lightFall = 0.5;
    add(row, anyScene);

    row = plainRow("inverted, polarity either");
    row.scene.ground = 180;
    row.scene.contrast = -100;
    row.find.polarity = orx::ppEither;
    add(row, anyScene);

    row = plainRow("five in a picture");
    row.scene.count = 5;
    row.find.maxParts = 8;
    add(row, anyScene);

    row = plainRow("40 % hidden", 0.45);
    row.scene.hidden = 0.4;
    goals = {{0.95, 1}};
    goals.place[0] = 0.02, goals.place[1] = 0.01;
    goals.stated = true;
    add(row, goals);

    row = plainRow("60 % hidden", 0.3);
    row.scene.hidden = 0.6;
    add(row, {{0.5, 0.8}});

    row = plainRow("scale 0.9 to 1.1");
    row.scene.minScale = row.find.minScale = 0.9;
    row.scene.maxScale = row.find.maxScale = 1.1;
    goals = anyScene;
    goals.scale[0] = 3e-4, goals.scale[1] = 1e-4;
    goals.stated = true;
    add(row, goals);

    row = plainRow("clutter, part absent");
    row.scene.clutter = 40;
    row.scene.count = 0;
    row.absent = true;
    add(row, {{-1, -1}, {0.05, 0}});
    return rows;
}

// Where it gets hard.
inline std::vector<Row> furtherRows() {
    std::vector<Row> rows;
    const auto absent = [](Row row) {
        row.scene.count = 0;
        row.absent = true;
        return row;
    };
    Row row = plainRow("clutter, part absent, score 0.45", 0.45);
    row.scene.clutter = 40;
    rows.push_back(absent(row));
    row.label = "clutter, part absent, score 0.3";
    row.find.minScore = 0.3;
    rows.push_back(absent(row));
    row = plainRow("four parts of other kinds, part absent");
    row.scene.otherParts = 4;
    rows.push_back(absent(row));
    row = plainRow("rough ground, deviation 12, part absent");
    row.scene.texture = 12;
    rows.push_back(absent(row));

    row = plainRow("rough ground, deviation 12");
    row.scene.texture = 12;
    rows.push_back(row);
    row.label = "rough ground, deviation 25";
    row.scene.texture = 25;
    rows.push_back(row);
    row = plainRow("five touching");
    row.scene.count = 5;
    row.scene.touching = true;
    row.find.maxParts = 8;
    rows.push_back(row);
    row = plainRow("threads");
    row.scene.threads = 15;
    rows.push_back(row);
    row = plainRow("blur 2");
    row.scene.blurSigma = 2;
    rows.push_back(row);
    row = plainRow("plane tilted by 5°");
    row.scene.tilt = 5;
    rows.push_back(row);
    row = plainRow("contrast 20, noise 2");
    row.scene.contrast = 20;
    rows.push_back(row);
    row = plainRow("contrast 20, noise 5");
    row.scene.contrast = 20;
    row.scene.noiseSigma = 5;
    rows.push_back(row);
    row = plainRow("noise 20");
    row.scene.noiseSigma = 20;
    rows.push_back(row);
    row = plainRow("30 % beyond the border", 0.55);
    row.scene.cut = 0.3;
    rows.push_back(row);
    row = plainRow("clutter, 25 % hidden, uneven light, noise 5", 0.5);
    row.scene.clutter = 40;
    row.scene.hidden = 0.25;
    row.scene.lightFall = 0.5;
    row.scene.noiseSigma = 5;
    rows.push_back(row);
    row = plainRow("40 % hidden, followed all (greediness 0)", 0.45);
    row.scene.hidden = 0.4;
    row.find.greediness = 0;
    rows.push_back(row);
    row = plainRow("40 % hidden by covers that follow the outline", 0.45);
    row.scene.hidden = 0.4;
    row.scene.coverReach = 2;
    rows.push_back(row);
    row = plainRow("scale 0.5 to 2");
    row.scene.minScale = row.find.minScale = 0.5;
    row.scene.maxScale = row.find.maxScale = 2;
    row.share = 2;
    rows.push_back(row);
    row = plainRow("gear with a keyway");
    row.kinds = {scenes::PartKind::keyedGear};
    rows.push_back(row);
    row = plainRow("taught at noise 8");
    row.teachNoise = 8;
    rows.push_back(row);
    row = plainRow("5 MP, twenty in it");
    row.scene.size = {2592, 1944};
    row.scene.count = 20;
    row.find.maxParts = 25;
    row.share = 10;
    rows.push_back(row);
    row = plainRow("20 MP");
    row.scene.size = {5472, 3648};
    row.share = 20;
    rows.push_back(row);
    return rows;
}

}  // namespace matching_accuracy

#endif
