// A lot of plates on a tilted plane (support/plate_scene.h) and the recipe of examples/plates that measures
// them.
#ifndef BENCH_RECIPE_SCENE_H
#define BENCH_RECIPE_SCENE_H

#include <algorithm>
#include <fstream>
#include <iterator>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <regex>
#include <stdexcept>
#include <string>
#include <vector>

#include "orxFunctions/orxfunctions.h"
#include "support/plate_scene.h"
#include "tests/support/temporary_folder.h"

namespace recipe_scene {

struct Size {
    double zoom;  // of the camera, against VGA
    int pictures;
};
constexpr Size kVga{1.0, 5};
constexpr Size kFiveMegapixels{4.05, 2};

inline scenes::PlaneCamera zoomed(scenes::PlaneCamera camera, double zoom) {
    camera.size = {cvRound(camera.size.width * zoom), cvRound(camera.size.height * zoom)};
    for (double* value : {&camera.fx, &camera.fy, &camera.cx, &camera.cy}) *value *= zoom;
    return camera;
}

// Pictures as files and in memory, the calibration from pictures of the target, the part's model.
class Plates {
  public:
    explicit Plates(const Size& size) {
        std::filesystem::create_directories(path("model"));
        std::filesystem::create_directories(path("calibration"));
        std::filesystem::create_directories(path("pictures"));
        const scenes::PlaneRenderer renderer(zoomed(scenes::plateCamera(), size.zoom));
        teach(renderer, size.zoom);
        calibrate(size.zoom);
        scenes::PlateLotSettings settings;
        settings.count = size.pictures;
        for (const scenes::PlatePart& part : scenes::plateLot(settings))
            add(render(renderer, scenes::plateShape(part.plate, part.pose), kNoise, pictures_.size() + 1));
        writeBad(renderer);
        writeRecipe("calipers");
    }

    const std::vector<cv::Mat>& pictures() const { return pictures_; }
    std::string fileOf(std::size_t i) const { return path("pictures/" + std::to_string(i) + ".png"); }
    std::string badFile() const { return path("bad.png"); }  // of a part that fails
    std::string path(const std::string& name) const { return folder_ / name; }

    // The recipe with all features found one way; `form` adds values of form.
    std::string writeRecipe(const std::string& by, bool form = false) const {
        std::ifstream file(std::string(ORX_SOURCE_FOLDER) + "/examples/plates/plate.json");
        std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        text = std::regex_replace(text, std::regex(R"(, "by": "edges")"), "");
        text =
            std::regex_replace(text, std::regex(R"("search": 1)"), "\"search\": 1, \"by\": \"" + by + "\"");
        if (form)
            text = std::regex_replace(text, std::regex(R"("values": \[)"),
                                      R"("values": [
                {"name": "round", "type": "roundness", "of": ["hole 4"], "upper": 0.5},
                {"name": "straight", "type": "straightness", "of": ["top"], "upper": 0.5},)");
        const std::string name = path(by + (form ? "-form" : "") + ".json");
        std::ofstream(name) << text;
        return name;
    }

    // Throws where a plate is not measured: that would be quick.
    orx::TRecipe recipe(const std::string& by, bool form) const {
        const orx::TRecipe recipe = orx::readRecipe(writeRecipe(by, form));
        if (!recipe.valid()) throw std::runtime_error(recipe.problems().front().sentence());
        for (const cv::Mat& picture : pictures_) {
            for (const orx::TRecipeValue& value : recipe.run(picture).values)
                if (!value.measured) throw std::runtime_error(value.name + ": " + value.problem);
        }
        return recipe;
    }

  private:
    static constexpr double kNoise = 2;

    static cv::Mat render(const scenes::PlaneRenderer& renderer, const scenes::PlaneShape& shape,
                          double noise, std::size_t seed) {
        scenes::PlaneExposure exposure;
        exposure.seed = seed;
        return scenes::withNoise(renderer.levels(shape, exposure), noise, seed);
    }

    // The first bad part of a lot, where the first good one lies.
    void writeBad(const scenes::PlaneRenderer& renderer) const {
        const std::vector<scenes::PlatePart> lot = scenes::plateLot({});
        const auto bad =
            std::find_if(lot.begin(), lot.end(), [](const auto& part) { return !part.fault.empty(); });
        if (bad == lot.end()) throw std::runtime_error("there is no bad plate");
        const scenes::PlaneShape shape = scenes::plateShape(bad->plate, lot.front().pose);
        cv::imwrite(badFile(), render(renderer, shape, kNoise, 98), {cv::IMWRITE_PNG_COMPRESSION, 1});
    }

    void add(const cv::Mat& picture) {
        cv::imwrite(fileOf(pictures_.size()), picture, {cv::IMWRITE_PNG_COMPRESSION, 1});
        pictures_.push_back(picture);
    }

    void teach(const scenes::PlaneRenderer& renderer, double zoom) {
        const cv::Mat good = render(renderer, scenes::plateShape({}, scenes::plateToTeach()), kNoise, 99);
        const cv::Rect2d region = scenes::kPlateRegion;
        const orx::TPartModel model =
            orx::teachPart(good, cv::Rect(cvRound(region.x * zoom), cvRound(region.y * zoom),
                                          cvRound(region.width * zoom), cvRound(region.height * zoom)));
        if (orx::writePartModel(path("model/good.part"), model) != orx::msOk)
            throw std::runtime_error("the plate can't be taught");
    }

    void calibrate(double zoom) {
        const scenes::PlaneShape shape =
            scenes::dotGridShape(scenes::kPlateTargetColumns, scenes::kPlateTargetRows,
                                 scenes::kPlateTargetPitch, scenes::kPlateTargetPitch / 2);
        orx::TTarget target;
        target.kind = orx::tkDotGrid;
        target.columns = scenes::kPlateTargetColumns;
        target.rows = scenes::kPlateTargetRows;
        target.pitch = scenes::kPlateTargetPitch;
        target.diameter = scenes::kPlateTargetPitch / 2;
        std::vector<orx::TTargetView> views;
        for (const scenes::PlaneCamera& camera : scenes::plateTargetCameras()) {
            const scenes::PlaneRenderer renderer(zoomed(camera, zoom));
            views.push_back(orx::findTarget(render(renderer, shape, kNoise, views.size()), target));
        }
        if (orx::writePlaneCalibration(path("calibration/camera.yml"), orx::calibratePlane(views)) !=
            orx::plOk)
            throw std::runtime_error("the plane can't be calibrated");
    }

    test::TemporaryFolder folder_;
    std::vector<cv::Mat> pictures_;
};

// Rendered once; those of 5 megapixels take their time.
inline const Plates& vgaPlates() {
    static const Plates kPlates(kVga);
    return kPlates;
}
inline const Plates& largePlates() {
    static const Plates kPlates(kFiveMegapixels);
    return kPlates;
}

}  // namespace recipe_scene

#endif
