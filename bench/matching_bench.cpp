// Finding parts beside one unturned template (cv::matchTemplate of 120 x 120 pixels) on the same pictures, on
// one thread. A pass is over five pictures, one for each of five parts; of the largest it is one picture.
// Beside the times: how many parts a pass holds, how many of them it found, false finds, and the root mean
// square of the errors.
#include <benchmark/benchmark.h>

#include <map>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "docs/tools/matching_accuracy.h"

namespace {

struct Picture {
    orx::TPartModel model;
    scenes::PartScene scene;
    cv::Mat pattern;
};

enum Scene { kVga, kVgaScales, kVgaClutter, kFiveMegapixels, kTwentyParts, kTwentyMegapixels };

matching_accuracy::Row rowOf(Scene scene) {
    matching_accuracy::Row row;
    row.find.maxParts = 1;
    switch (scene) {
        case kVga:
            break;
        case kVgaScales:
            row.scene.minScale = row.find.minScale = 0.9;
            row.scene.maxScale = row.find.maxScale = 1.1;
            break;
        case kVgaClutter:
            row.scene.clutter = 40;
            break;
        case kFiveMegapixels:
            row.scene.size = {2592, 1944};
            break;
        case kTwentyParts:
            row.scene.size = {2592, 1944};
            row.scene.count = row.find.maxParts = 20;
            break;
        case kTwentyMegapixels:
            row.scene.size = {5472, 3648};
            row.kinds = {scenes::PartKind::plate};
            break;
    }
    return row;
}

// Rendered once; the largest are big.
const std::vector<Picture>& picturesOf(Scene scene) {
    static std::map<Scene, std::vector<Picture>> kept;
    std::vector<Picture>& pictures = kept[scene];
    if (!pictures.empty()) return pictures;
    const matching_accuracy::Row row = rowOf(scene);
    for (const scenes::PartKind kind : row.kinds) {
        scenes::PartSceneSettings settings = row.scene;
        settings.kind = kind;
        settings.seed = 17;
        const cv::Mat alone = scenes::renderPartAlone(kind).image;
        pictures.push_back({matching_accuracy::teachAlone(kind, 0, 100), scenes::renderParts(settings),
                            alone(cv::Rect(20, 20, 120, 120)).clone()});
    }
    return pictures;
}

void find(benchmark::State& state, Scene scene) {
    const std::vector<Picture>& pictures = picturesOf(scene);
    const matching_accuracy::Row row = rowOf(scene);
    matching_accuracy::Result result;
    for (const Picture& picture : pictures) {
        result.add(matching_accuracy::judge(row, picture.scene,
                                            orx::findParts(picture.scene.image, picture.model, row.find)));
    }
    for (auto _ : state) {
        for (const Picture& picture : pictures)
            benchmark::DoNotOptimize(orx::findParts(picture.scene.image, picture.model, row.find));
    }
    state.counters["parts"] = result.parts;
    state.counters["found"] = result.found;
    state.counters["false"] = result.falseFinds;
    state.counters["rms_px"] = result.place.rms();
    state.counters["rms_degrees"] = result.angle.rms();
}

void matchTemplate(benchmark::State& state, Scene scene) {
    const std::vector<Picture>& pictures = picturesOf(scene);
    for (auto _ : state) {
        for (const Picture& picture : pictures) {
            cv::Mat scores;
            cv::matchTemplate(picture.scene.image, picture.pattern, scores, cv::TM_CCOEFF_NORMED);
            benchmark::DoNotOptimize(scores.data);
        }
    }
}

// A region of a large picture; what lies outside must not cost.
struct Lesson {
    cv::Mat picture;
    cv::Rect region;
};

std::vector<Lesson> lessons() {
    std::vector<Lesson> lessons;
    for (const Picture& picture : picturesOf(kVga)) {
        const scenes::ScenePose& pose = picture.scene.parts[0].pose;
        const cv::Rect region(cvRound(pose.x) - 64, cvRound(pose.y) - 64, 129, 129);
        lessons.push_back({picture.scene.image, region & cv::Rect(cv::Point(), picture.scene.image.size())});
    }
    return lessons;
}

void teach(benchmark::State& state) {
    const std::vector<Lesson> all = lessons();
    int valid = 0;
    for (auto _ : state) {
        valid = 0;
        for (const Lesson& lesson : all)
            valid += orx::teachPart(lesson.picture, lesson.region).valid() ? 1 : 0;
    }
    state.counters["taught"] = valid;
}

void edgesTwice(benchmark::State& state) {
    const std::vector<Lesson> all = lessons();
    std::vector<ORXEdge::TMetricContour> contours;
    for (auto _ : state) {
        for (const Lesson& lesson : all) {
            for (int run = 0; run < 2; ++run)
                ORXEdge::edgesSubPixMetric(lesson.picture(lesson.region), contours, {});
            benchmark::DoNotOptimize(contours.data());
        }
    }
}

BENCHMARK_CAPTURE(find, vga, kVga)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(find, vga_scales, kVgaScales)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(find, vga_clutter, kVgaClutter)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(find, 5MP, kFiveMegapixels)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(find, 5MP_20_parts, kTwentyParts)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(find, 20MP, kTwentyMegapixels)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchTemplate, vga, kVga)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchTemplate, 5MP, kFiveMegapixels)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(matchTemplate, 20MP, kTwentyMegapixels)->Unit(benchmark::kMillisecond);
BENCHMARK(teach)->Unit(benchmark::kMillisecond);
BENCHMARK(edgesTwice)->Unit(benchmark::kMillisecond);

}  // namespace
