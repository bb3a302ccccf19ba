#include "orxFunctions/measuring/recipe_proposal.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/measuring/recipe/json_text.h"
#include "orxFunctions/measuring/recipe/outline_shapes.h"
#include "orxFunctions/measuring/recipe/proposal_text.h"
#include "orxFunctions/measuring/recipe/recipe_data.h"

namespace orx {
namespace {

using namespace recipes;

constexpr std::size_t kMostValues = 300;
constexpr double kLeastSearch = 2.0;  // pixels
constexpr double kMostSearch = 8.0;
constexpr double kParallel = 3.0;        // degrees between lines whose distance is told
constexpr double kLeastDistance = 4.0;   // pixels between lines that are two
constexpr std::size_t kMostCircles = 8;  // whose distances are told

bool isUsable(const TProposalOptions& options) {
    const auto isText = [](const std::string& text, bool mayBeEmpty) {
        return (mayBeEmpty || !text.empty()) && text.size() <= 200 && isPlainText(text);
    };
    return isText(options.name, false) && isText(options.model, true) && isText(options.calibration, true) &&
           options.maxFeatures >= 1 && options.maxFeatures <= 500 && isBetween(options.minLength, 8.0, 1e6) &&
           isBetween(options.share, 0.0, 10.0) && isBetween(options.leastPixels, 0.0, 1e6) &&
           options.share + options.leastPixels > 0.0;
}

// From the picture into the recipe's coordinates.
OutlineShape placed(OutlineShape shape, const TPartPose& back) {
    shape.from = applyPose(back, shape.from);
    shape.to = applyPose(back, shape.to);
    shape.center = applyPose(back, shape.center);
    shape.radius *= back.scale;
    shape.semiMinor *= back.scale;
    shape.startAngle = applyPoseToAngle(back, shape.startAngle);
    shape.angle = std::remainder(shape.angle + back.angle, 180.0);
    return shape;
}

double searchFor(const OutlineShape& shape) {
    const double most = shape.kind == fkLine      ? shape.length / 4.0
                        : shape.kind == fkEllipse ? shape.semiMinor / 3.0
                                                  : shape.radius / 3.0;
    return std::clamp(most, std::min(kLeastSearch, most), kMostSearch);
}

std::vector<ProposedFeature> featuresOf(const std::vector<OutlineShape>& shapes, const TPartPose& back,
                                        int most) {
    std::vector<ProposedFeature> features;
    for (const OutlineShape& shape : shapes) {
        if (features.size() >= static_cast<std::size_t>(most)) break;
        ProposedFeature feature;
        feature.name = std::string(featureKindText(shape.kind)) + " " + std::to_string(features.size() + 1);
        feature.search = searchFor(shape) * back.scale;
        feature.shape = placed(shape, back);
        features.push_back(feature);
    }
    return features;
}

double angleOf(const OutlineShape& line) {
    return degrees(std::atan2(line.to.y - line.from.y, line.to.x - line.from.x));
}

bool areParallel(const OutlineShape& a, const OutlineShape& b) {
    if (std::abs(std::remainder(angleOf(a) - angleOf(b), 180.0)) > kParallel) return false;
    const cv::Point2d way = (a.to - a.from) / cv::norm(a.to - a.from);
    return std::abs(way.cross((b.from + b.to) / 2.0 - a.from)) > kLeastDistance;
}

void addOwnValues(const ProposedFeature& feature, std::vector<ProposedValue>& values) {
    const auto add = [&](const char* type) {
        values.push_back({std::string(type) + " of " + feature.name, type, {feature.name}, false, 0.0, 0.0});
    };
    if (feature.shape.kind == fkCircle) add("diameter");
    if (feature.shape.kind == fkArc) add("radius");
    if (feature.shape.kind != fkEllipse) return;
    add("majorDiameter");
    add("minorDiameter");
}

std::vector<ProposedValue> valuesOf(const std::vector<ProposedFeature>& features) {
    std::vector<ProposedValue> values;
    for (const ProposedFeature& feature : features) addOwnValues(feature, values);
    std::size_t circles = 0;
    for (std::size_t i = 0; i < features.size(); ++i) {
        const OutlineShape& a = features[i].shape;
        if (a.kind == fkCircle && ++circles > kMostCircles) continue;
        for (std::size_t j = i + 1; j < features.size() && values.size() < kMostValues; ++j) {
            const OutlineShape& b = features[j].shape;
            const bool circlesApart = a.kind == fkCircle && b.kind == fkCircle &&
                                      cv::norm(a.center - b.center) > kLeastDistance &&
                                      circles < kMostCircles;
            if (!circlesApart && !(a.kind == fkLine && b.kind == fkLine && areParallel(a, b))) continue;
            values.push_back({features[i].name + " to " + features[j].name,
                              "distance",
                              {features[i].name, features[j].name},
                              false,
                              0.0,
                              0.0});
        }
    }
    return values;
}

// Millimetres of a pixel in the middle of the picture; 1 in pixels.
double unitOf(const RecipeData& recipe, cv::Size size) {
    if (recipe.plane == nullptr) return 1.0;
    return recipe.plane->pixelSize({size.width / 2.0, size.height / 2.0});
}

class Proposer {
  public:
    Proposer(const cv::Mat& img, const TProposalOptions& options) : img_(img), options_(options) {}

    TProposal run() {
        if (!isPicture(img_)) return refused("no picture, or of a kind that is not supported");
        const cv::Rect whole(cv::Point(), img_.size());
        const cv::Rect region = options_.region.area() > 0 ? options_.region : whole;
        if (!isUsable(options_) || (region & whole) != region)
            return refused("an option is outside of its range");
        // Without features yet: that reads the files and finds the part.
        if (!measure()) return refused(recipe_.problems().front().sentence());
        if (!result_.pose.found)
            return refused(result_.problem.empty() ? "the part was not found" : result_.problem);
        const Picture picture = ready();
        const auto shapes = findOutlineShapes(picture, region, options_.minLength);
        features_ = featuresOf(shapes, invertPose(result_.pose.pose), options_.maxFeatures);
        values_ = valuesOf(features_);
        if (features_.empty()) return refused("no lines, circles or arcs were found");
        if (!measure()) return refused(recipe_.problems().front().sentence());
        keepMeasured();
        if (features_.empty()) return refused("none of the shapes that were found can be measured");
        if (!measure()) return refused(recipe_.problems().front().sentence());
        return told();
    }

  private:
    TProposal refused(const std::string& problem) const {
        TProposal proposal;
        proposal.problem = problem;
        return proposal;
    }

    Picture ready() const {
        Picture picture;
        picture.grey = greyOf(img_);
        picture.grey.convertTo(picture.bytes, CV_8U, 1.0 / levelUnit(picture.grey));
        picture.noise = getImageNoise(picture.grey);
        return picture;
    }

    bool measure() {
        recipe_ = parseRecipe(proposalText(options_, features_, values_), options_.folder);
        if (!recipe_.valid()) return false;
        result_ = recipe_.run(img_);
        return true;
    }

    void keepMeasured() {
        std::set<std::string> measured;
        for (const TRecipeFeature& feature : result_.features) {
            if (feature.measured) measured.insert(feature.name);
        }
        const auto isLost = [&](const ProposedFeature& feature) { return measured.count(feature.name) == 0; };
        features_.erase(std::remove_if(features_.begin(), features_.end(), isLost), features_.end());
        const double least = options_.leastPixels * unitOf(*recipe_.data(), img_.size());
        std::vector<ProposedValue> kept;
        for (std::size_t i = 0; i < values_.size(); ++i) {
            if (!result_.values[i].measured) continue;
            ProposedValue value = values_[i];
            value.hasNominal = true;
            value.nominal = result_.values[i].value;
            value.tolerance = std::max(least, options_.share * std::abs(value.nominal));
            kept.push_back(value);
        }
        values_ = kept;
    }

    TProposal told() const {
        TProposal proposal;
        proposal.valid = true;
        proposal.text = recipe_.text();
        proposal.features = static_cast<int>(features_.size());
        proposal.values = static_cast<int>(values_.size());
        auto drawn = std::make_shared<RecipeData>(*recipe_.data());
        drawn->draw.values = false;
        proposal.picture = drawRecipeResult(img_, TRecipe(std::move(drawn)), result_);
        return proposal;
    }

    const cv::Mat& img_;
    const TProposalOptions& options_;
    std::vector<ProposedFeature> features_;
    std::vector<ProposedValue> values_;
    TRecipe recipe_;
    TRecipeResult result_;
};

}  // namespace

TProposal proposeRecipe(const cv::Mat& img, const TProposalOptions& options) {
    return Proposer(img, options).run();
}

}  // namespace orx
