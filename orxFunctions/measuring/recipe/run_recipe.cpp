#include "orxFunctions/measuring/recipe/recipe_data.h"

#include <chrono>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/measuring/recipe/place_part.h"
#include "orxFunctions/measuring/recipe/tell_value.h"

namespace orx::recipes {
namespace {

Picture pictureOf(const cv::Mat& img) {
    Picture picture;
    picture.grey = greyOf(img);
    if (picture.grey.depth() == CV_8U) {
        picture.bytes = picture.grey;
    } else {
        picture.grey.convertTo(picture.bytes, CV_8U, 1.0 / levelUnit(picture.grey));
    }
    picture.noise = getImageNoise(picture.grey);
    return picture;
}

// Pixels are measured beside millimetres only where something is told in them.
bool wantsPixels(const RecipeData& recipe) {
    if (recipe.plane == nullptr || recipe.place.kind == PlaceKind::kFeatures) return true;
    for (const ValueSpec& value : recipe.values) {
        if (!value.inMillimetres && !value.of.empty()) return true;
    }
    return false;
}

class Run {
  public:
    Run(const RecipeData& recipe, const Picture& picture)
        : recipe_(recipe),
          picture_(picture),
          spaces_{recipe.plane.get(), wantsPixels(recipe)},
          features_(recipe.features.size()) {}

    void measure(TRecipeResult& result) {
        // Those that tell where the part is lie where the recipe says, in the frame of the picture.
        const Frame all{TPartPose(), recipe_.millimetres ? recipe_.plane.get() : nullptr};
        measureFeatures(all, true);
        place_ = placePart(recipe_, picture_, features_);
        result.pose = place_.told;
        if (place_.told.found) {
            measureFeatures(place_.frame, false);
        } else {
            result.problem = place_.told.problem;
        }
        result.verdict = vdNoLimits;
        tellFeatures(result);
        tellValues(result);
        if (!place_.told.found) result.verdict = vdNotMeasured;
    }

  private:
    void measureFeatures(const Frame& frame, bool placing) {
        for (const int i : recipe_.order) {
            const FeatureSpec& asked = recipe_.features[static_cast<std::size_t>(i)];
            if (asked.places != placing) continue;
            MeasuredFeature& feature = features_[static_cast<std::size_t>(i)];
            if (asked.construction == Construction::kNone) {
                feature = measureFeature(picture_, asked, frame, spaces_);
            } else {
                feature = constructFeature(asked, features_[static_cast<std::size_t>(asked.of[0])],
                                           features_[static_cast<std::size_t>(asked.of[1])], spaces_);
            }
        }
    }

    void tellFeatures(TRecipeResult& result) const {
        for (std::size_t i = 0; i < features_.size(); ++i) {
            const MeasuredFeature& from = features_[i];
            TRecipeFeature& to = result.features[i];
            to.measured = from.measured;
            to.problem = from.problem;
            if (!from.measured && to.problem.empty()) to.problem = "the part was not found";
            to.nominal = from.nominal;
            to.outline = from.outline;
            to.searched = from.edges.searched;
            to.found = static_cast<int>(from.edges.points.size());
            const SpaceShape& told = from.in(spaces_.plane != nullptr);
            for (std::size_t k = 0; k < from.edges.points.size(); ++k) {
                if (told.used.empty() || told.used[k] != 0) to.points.push_back(from.edges.points[k]);
            }
            to.rms = pixelRms(from, told);
        }
    }

    double pixelRms(const MeasuredFeature& feature, const SpaceShape& told) const {
        if (spaces_.plane == nullptr || feature.edges.points.empty()) return told.rms;
        const double size = spaces_.plane->pixelSize(feature.edges.points.front());
        return size > 0.0 ? told.rms / size : 0.0;
    }

    void tellValues(TRecipeResult& result) const {
        for (std::size_t i = 0; i < recipe_.values.size(); ++i) {
            TRecipeValue& value = result.values[i];
            if (place_.told.found) {
                value = tellValue(recipe_, recipe_.values[i], place_, features_);
            } else {
                value.problem = place_.told.problem;
            }
            result.verdict = worseVerdict(result.verdict, value.verdict);
        }
    }

    const RecipeData& recipe_;
    const Picture& picture_;
    Spaces spaces_;
    std::vector<MeasuredFeature> features_;
    Place place_;
};

TRecipeResult emptyResult(const RecipeData& recipe) {
    TRecipeResult result;
    result.recipe = recipe.name;
    result.confidence = recipe.confidence;
    for (const FeatureSpec& asked : recipe.features) {
        TRecipeFeature feature;
        feature.name = asked.name;
        feature.kind = asked.kind;
        result.features.push_back(feature);
    }
    for (const ValueSpec& asked : recipe.values) result.values.push_back(emptyValue(asked));
    return result;
}

void refuse(TRecipeResult& result, const std::string& problem) {
    result.problem = problem;
    result.pose.problem = problem;
    for (TRecipeFeature& feature : result.features) feature.problem = problem;
    for (TRecipeValue& value : result.values) value.problem = problem;
}

std::string sizeText(cv::Size size) {
    return std::to_string(size.width) + " x " + std::to_string(size.height);
}

}  // namespace

TRecipeResult runRecipe(const RecipeData& recipe, const cv::Mat& img) {
    const auto start = std::chrono::steady_clock::now();
    if (!recipe.problems.empty()) {
        TRecipeResult result;
        result.problem = "the recipe is not valid: " + recipe.problems.front().sentence();
        orx::refuse(rcNotReady, "run", "%s", result.problem.c_str());
        return result;
    }
    TRecipeResult result = emptyResult(recipe);
    if (!takesPicture(img, "run")) {
        refuse(result, "no picture, or of a kind that is not supported");
        return result;
    }
    result.size = img.size();
    if (recipe.plane != nullptr && recipe.plane->size() != img.size()) {
        refuse(result, "the picture has " + sizeText(img.size()) + " pixels, the calibration's " +
                           sizeText(recipe.plane->size()));
        orx::refuse(rcSizesDiffer, "run", "%s", result.problem.c_str());
        return result;
    }
    const Picture picture = pictureOf(img);
    Run(recipe, picture).measure(result);
    if (!result.problem.empty()) orx::refuse(rcNoResult, "run", "%s", result.problem.c_str());
    result.milliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return result;
}

}  // namespace orx::recipes
