#include "orxFunctions/measuring/recipe_proposal.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>

#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/analysis/image_noise.h"
#include "orxFunctions/foundation/angles_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/measuring/recipe/draw_proposal.h"
#include "orxFunctions/measuring/recipe/frame.h"
#include "orxFunctions/measuring/recipe/json_text.h"
#include "orxFunctions/measuring/recipe/outline_shapes.h"
#include "orxFunctions/measuring/recipe/part_edges.h"
#include "orxFunctions/measuring/recipe/proposal_text.h"
#include "orxFunctions/measuring/recipe/recipe_data.h"

namespace orx {
namespace {

using namespace recipes;

constexpr std::size_t kMostValues = 300;
constexpr double kLeastSearch = 2.0;  // pixels
constexpr double kMostSearch = 8.0;
constexpr double kRoomShare = 0.6;  // of the way to the next edge that is searched
constexpr double kBearable = 6.0;   // standard uncertainties of a tolerance that noise seldom breaks
constexpr double kMostWidened = 5.0;
constexpr double kSeen = 0.75;           // of a feature's places: half of them are asked for later
constexpr int kLeastPoints = 15;         // of an edge that tells where the part lies
constexpr double kParallel = 3.0;        // degrees between lines whose distance is told
constexpr double kLeastShared = 0.3;     // of the shorter one's length that lies beside the other
constexpr double kLeastDistance = 4.0;   // pixels between lines that are two
constexpr std::size_t kMostCircles = 8;  // whose distances are told

bool isUsable(const TProposalOptions& options) {
    const auto isText = [](const std::string& text, bool mayBeEmpty) {
        return (mayBeEmpty || !text.empty()) && text.size() <= 200 && isPlainText(text);
    };
    return isText(options.name, false) && isText(options.model, !options.teach) &&
           isText(options.calibration, true) && options.maxFeatures >= 1 && options.maxFeatures <= 500 &&
           isBetween(options.minLength, 8.0, 1e6) && isBetween(options.share, 0.0, 10.0) &&
           isBetween(options.leastPixels, 0.0, 1e6) && options.share + options.leastPixels > 0.0;
}

// From the picture, or the plane, into the part's coordinates.
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

// Pixels to either side: as wide as the shape bears, but not to the next edge. `unit`: of its sizes.
double searchFor(const OutlineShape& shape, double unit) {
    const double most = shape.kind == fkLine      ? shape.length / 4.0
                        : shape.kind == fkEllipse ? shape.semiMinor / unit / 3.0
                                                  : shape.radius / unit / 3.0;
    const double free = std::min(most, kRoomShare * shape.room);
    return std::clamp(free, std::min(kLeastSearch, most), kMostSearch);
}

void numberFeatures(std::vector<ProposedFeature>& features) {
    for (std::size_t i = 0; i < features.size(); ++i)
        features[i].name = std::string(featureKindText(features[i].shape.kind)) + " " + std::to_string(i + 1);
}

double angleOf(const OutlineShape& line) {
    return degrees(std::atan2(line.to.y - line.from.y, line.to.x - line.from.x));
}

// And side by side: where they are not, there is no distance across.
bool areParallel(const OutlineShape& a, const OutlineShape& b) {
    if (std::abs(std::remainder(angleOf(a) - angleOf(b), 180.0)) > kParallel) return false;
    const double length = cv::norm(a.to - a.from);
    const cv::Point2d way = (a.to - a.from) / length;
    const double first = way.dot(b.from - a.from);
    const double last = way.dot(b.to - a.from);
    const double shared = std::min(length, std::max(first, last)) - std::max(0.0, std::min(first, last));
    if (shared < kLeastShared * std::min(length, std::abs(last - first))) return false;
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

Picture pictureOf(const cv::Mat& img) {
    Picture picture;
    picture.grey = greyOf(img);
    picture.grey.convertTo(picture.bytes, CV_8U, 1.0 / levelUnit(picture.grey));
    picture.noise = getImageNoise(picture.grey);
    return picture;
}

TPartRegion regionOf(const cv::Rect& box) {
    TPartRegion region;
    region.found = true;
    region.box = box;
    const cv::Point2d last(box.x + box.width - 1.0, box.y + box.height - 1.0);
    region.polygon = {cv::Point2d(box.tl()), {last.x, 1.0 * box.y}, last, {1.0 * box.x, last.y}};
    return region;
}

class Proposer {
  public:
    Proposer(const cv::Mat& img, const TProposalOptions& options) : img_(img), options_(options) {}

    TProposal run() {
        if (!takesPicture(img_, kFunction)) {
            proposal_.problem = "no picture, or of a kind that is not supported";
            return std::move(proposal_);
        }
        const cv::Rect whole(cv::Point(), img_.size());
        const cv::Rect wanted = options_.region.area() > 0 ? options_.region : whole;
        if (!isUsable(options_) || (wanted & whole) != wanted)
            return refused(rcOption, "an option is outside of its range");
        findEdges(wanted);
        if (!teach()) return refused(rcTooFew, proposal_.problem);
        // Without features yet: that reads the files and finds the part.
        reach_ = proposal_.region.box;
        if (!measure()) return refusedRecipe();
        if (!result_.pose.found) {
            reach_ = {};  // a model's reference point may lie anywhere
            measure();
        }
        if (!result_.pose.found)
            return refused(rcNoResult, result_.problem.empty() ? "the part was not found" : result_.problem);
        if (!findFeatures()) return refused(rcNoResult, "no lines, circles or arcs were found");
        // Those that can be measured are numbered and measured again, for their nominal values.
        if (!measure()) return refusedRecipe();
        keepMeasured();
        if (features_.empty())
            return refused(rcNoResult, "none of the shapes that were found can be measured");
        if (!measure()) return refusedRecipe();
        setNominals();
        if (!measure()) return refusedRecipe();
        return told();
    }

  private:
    static constexpr const char* kFunction = "proposeRecipe";

    static TProposal refused(TRefusalCode code, const std::string& problem) {
        TProposal proposal;
        proposal.problem = problem;
        refuse(code, kFunction, "%s", problem.c_str());
        return proposal;
    }

    TProposal refusedRecipe() const { return refused(rcFileFormat, recipe_.problems().front().sentence()); }

    void findEdges(const cv::Rect& wanted) {
        const Picture picture = pictureOf(img_);
        edges_ = findPartEdges(picture, wanted, kLeastPoints);
        if (options_.region.area() > 0) {
            dropCutEdges(edges_, wanted);
            proposal_.region = regionOf(wanted);
            return;
        }
        proposal_.region = mainPart(edges_, img_.size());
        if (!proposal_.region.found) proposal_.region = regionOf(wanted);
    }

    bool teach() {
        if (!options_.teach) return true;
        TTeachOptions options;
        options.sigma = edges_.sigma;
        proposal_.partModel = teachPart(img_, proposal_.region.polygon, options);
        const TMatchStatus status = proposal_.partModel.report().status;
        if (status != msOk)
            proposal_.problem = std::string("the part can't be taught: ") + matchStatusText(status);
        return status == msOk;
    }

    bool measure() {
        TProposalOptions options = options_;
        if (options.teach) options.model.clear();  // the host has not written it yet
        recipe_ = parseRecipe(proposalText(options, features_, values_), options.folder);
        if (!recipe_.valid()) return false;
        auto data = std::make_shared<RecipeData>(*recipe_.data());
        if (options_.teach) {
            data->place.kind = PlaceKind::kModel;
            data->place.model = proposal_.partModel;
        }
        // Of several parts, the one that is looked at.
        if (data->place.find.region.empty()) data->place.find.region = reach_;
        recipe_ = TRecipe(std::move(data));
        result_ = recipe_.run(img_);
        return true;
    }

    bool findFeatures() {
        const RecipeData& data = *recipe_.data();
        const Plane* plane = data.plane.get();
        TPartPose pose = result_.pose.pose;
        if (plane != nullptr) {
            UncertainPose onPlane;
            const bool isPlaced = data.place.kind != PlaceKind::kPicture;
            if (isPlaced && !poseOnPlane(*plane, UncertainPose{pose, {}, {}, 0.0}, onPlane)) return false;
            pose = onPlane.pose;
            unit_ = unitOf(data, img_.size());
        }
        const TPartPose back = invertPose(pose);
        const auto shapes =
            findOutlineShapes(edges_, proposal_.region.polygon, plane, img_.size(), options_.minLength);
        for (const OutlineShape& shape : shapes) {
            if (features_.size() >= static_cast<std::size_t>(options_.maxFeatures)) break;
            features_.push_back({"", placed(shape, back), searchFor(shape, unit_) * unit_ * back.scale});
        }
        numberFeatures(features_);
        values_ = valuesOf(features_);
        return !features_.empty();
    }

    double askedTolerance(double value) const {
        return std::max(options_.leastPixels * unit_, options_.share * std::abs(value));
    }

    // The tolerance that a part as good as this one seldom breaks: noise moves its value and the nominal one
    // alike, and of few points it is known but roughly how much.
    static double bearable(const TRecipeValue& value) {
        const double freedom = std::max(1.0, value.degreesOfFreedom);
        return kBearable * (1.0 + 1.5 / std::sqrt(freedom)) * value.deviation;
    }

    bool isTold(const TRecipeValue& value) const {
        return value.measured && bearable(value) <= kMostWidened * askedTolerance(value.value);
    }

    // Features whose own size can be told, or that have none.
    void keepMeasured() {
        std::set<std::string> kept;
        for (const TRecipeFeature& feature : result_.features) {
            const auto seen = static_cast<double>(feature.points.size());
            if (feature.measured && seen >= kSeen * feature.searched) kept.insert(feature.name);
        }
        for (std::size_t i = 0; i < values_.size(); ++i) {
            if (values_[i].of.size() == 1 && !isTold(result_.values[i])) kept.erase(values_[i].of[0]);
        }
        const auto isLost = [&](const ProposedFeature& feature) { return kept.count(feature.name) == 0; };
        features_.erase(std::remove_if(features_.begin(), features_.end(), isLost), features_.end());
        numberFeatures(features_);
        values_ = valuesOf(features_);
    }

    void setNominals() {
        std::vector<ProposedValue> kept;
        for (std::size_t i = 0; i < values_.size(); ++i) {
            const TRecipeValue& measured = result_.values[i];
            if (!isTold(measured)) continue;
            ProposedValue value = values_[i];
            value.hasNominal = true;
            value.nominal = measured.value;
            const double asked = askedTolerance(measured.value);
            value.tolerance = std::max(asked, bearable(measured));
            value.widened = value.tolerance > asked;
            kept.push_back(value);
        }
        values_ = kept;
    }

    TProposal told() {
        proposal_.valid = true;
        proposal_.text = proposalText(options_, features_, values_);
        proposal_.features = static_cast<int>(features_.size());
        proposal_.values = static_cast<int>(values_.size());
        proposal_.picture = drawNumbered(img_, result_.features);
        return std::move(proposal_);
    }

    const cv::Mat& img_;
    const TProposalOptions& options_;
    TProposal proposal_;
    PartEdges edges_;
    cv::Rect reach_;     // of the part's reference point
    double unit_ = 1.0;  // millimetres of a pixel in the middle of the picture; 1 for pixels
    std::vector<ProposedFeature> features_;
    std::vector<ProposedValue> values_;
    TRecipe recipe_;
    TRecipeResult result_;
};

}  // namespace

TPartRegion findPartRegion(const cv::Mat& img) {
    if (!takesPicture(img, "findPartRegion")) return {};
    const TPartRegion region =
        mainPart(findPartEdges(pictureOf(img), {{}, img.size()}, kLeastPoints), img.size());
    if (!region.found) refuse(rcNoResult, "findPartRegion", "no edges of a part are seen");
    return region;
}

TProposal proposeRecipe(const cv::Mat& img, const TProposalOptions& options) {
    return Proposer(img, options).run();
}

}  // namespace orx
