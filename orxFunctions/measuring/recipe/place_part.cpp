#include "orxFunctions/measuring/recipe/place_part.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::recipes {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

void placeFixed(const RecipeData& recipe, Place& place) {
    place.told.found = true;
    place.pixels.degreesOfFreedom = kInfinite;
    place.millimetres.degreesOfFreedom = kInfinite;
    const TPartPose fixed = recipe.place.kind == PlaceKind::kFixed ? recipe.place.fixed : TPartPose();
    if (!recipe.millimetres) {
        place.pixels.pose = fixed;
        place.hasMillimetres =
            recipe.plane != nullptr && poseOnPlane(*recipe.plane, place.pixels, place.millimetres);
        return;
    }
    // Fixed on the plane: what is exact there needs no way through the picture.
    place.millimetres.pose = {fixed.x, fixed.y, fixed.angle, 1.0};
    place.millimetres.shifted.assign(static_cast<std::size_t>(recipe.plane->shifts()),
                                     place.millimetres.pose);
    place.hasMillimetres = true;
    if (!poseInPicture(*recipe.plane, place.millimetres.pose, place.pixels.pose)) {
        place.told.found = false;
        place.told.problem = "the part's place is not seen in the picture";
    }
}

void placeByModel(const RecipeData& recipe, const Picture& picture, Place& place) {
    TFindOptions find = recipe.place.find;
    // That of the picture, which findParts would measure again.
    if (find.noise == 0.0) find.noise = picture.noise;
    const TFindResult found = findParts(picture.bytes, recipe.place.model, find);
    if (!found.valid() || found.parts.empty()) {
        place.told.problem = found.valid() ? "the part was not found" : matchStatusText(found.status);
        return;
    }
    const TFoundPart& part = found.parts.front();
    place.told.found = true;
    place.told.score = part.score;
    place.told.deviationX = part.deviationX;
    place.told.deviationY = part.deviationY;
    place.told.deviationAngle = part.deviationAngle;
    place.deviationScale = part.deviationScale;
    place.pixels.pose = part.pose;
    place.pixels.covariance = part.covariance;
    place.pixels.degreesOfFreedom = kInfinite;
    if (recipe.plane == nullptr) return;
    place.hasMillimetres = poseOnPlane(*recipe.plane, place.pixels, place.millimetres);
    if (!place.hasMillimetres) {
        place.told.found = false;
        place.told.problem = "the part lies off the calibrated plane";
    }
}

// The pose whose origin is a point and whose direction leads to another, or along a line.
TPartPose poseFrom(const Shape& origin, const Shape& direction, double angle, double& leverVariance) {
    const TMeasuredPoint at = placeOf(origin);
    TPartPose pose{at.position.x, at.position.y, 0.0, 1.0};
    if (direction.kind == fkLine) {
        pose.angle = direction.line.angle;
        leverVariance = direction.line.angleDeviation * direction.line.angleDeviation;
    } else {
        const TMeasuredPoint ahead = placeOf(direction);
        const cv::Point2d way = ahead.position - at.position;
        const double length = std::max(1e-300, cv::norm(way));
        pose.angle = degrees(std::atan2(way.y, way.x));
        const cv::Vec2d across(-way.y / length, way.x / length);
        const double variance = across.dot((at.covariance + ahead.covariance) * across);
        leverVariance = variance * degrees(1.0 / length) * degrees(1.0 / length);
    }
    pose.angle = std::remainder(pose.angle - angle, 360.0);
    return pose;
}

UncertainPose poseFrom(const SpaceShape& origin, const SpaceShape& direction, double angle) {
    UncertainPose pose;
    double leverVariance = 0.0;
    pose.pose = poseFrom(origin.shape, direction.shape, angle, leverVariance);
    const TMeasuredPoint at = placeOf(origin.shape);
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) pose.covariance(i, j) = at.covariance(i, j);
    }
    pose.covariance(2, 2) = leverVariance;
    pose.degreesOfFreedom = at.degreesOfFreedom;
    double ignored = 0.0;
    for (std::size_t k = 0; k < std::min(origin.shifted.size(), direction.shifted.size()); ++k) {
        pose.shifted.push_back(poseFrom(origin.shifted[k], direction.shifted[k], angle, ignored));
    }
    return pose;
}

void placeByFeatures(const RecipeData& recipe, const std::vector<MeasuredFeature>& features, Place& place) {
    const MeasuredFeature& origin = features[static_cast<std::size_t>(recipe.place.origin)];
    const MeasuredFeature& direction = features[static_cast<std::size_t>(recipe.place.direction)];
    for (const int i : {recipe.place.origin, recipe.place.direction}) {
        const MeasuredFeature& feature = features[static_cast<std::size_t>(i)];
        if (feature.measured && feature.pixels.valid) continue;
        place.told.problem = "its feature \"" + recipe.features[static_cast<std::size_t>(i)].name + "\" " +
                             (feature.problem.empty() ? feature.pixels.problem : feature.problem);
        return;
    }
    place.told.found = true;
    place.pixels = poseFrom(origin.pixels, direction.pixels, recipe.place.angle);
    place.told.deviationX = std::sqrt(place.pixels.covariance(0, 0));
    place.told.deviationY = std::sqrt(place.pixels.covariance(1, 1));
    place.told.deviationAngle = std::sqrt(place.pixels.covariance(2, 2));
    if (recipe.plane == nullptr) return;
    place.millimetres = poseFrom(origin.millimetres, direction.millimetres, recipe.place.angle);
    place.hasMillimetres = true;
}

}  // namespace

Place placePart(const RecipeData& recipe, const Picture& picture,
                const std::vector<MeasuredFeature>& features) {
    Place place;
    if (recipe.place.kind == PlaceKind::kModel) {
        placeByModel(recipe, picture, place);
    } else if (recipe.place.kind == PlaceKind::kFeatures) {
        placeByFeatures(recipe, features, place);
    } else {
        placeFixed(recipe, place);
    }
    place.told.pose = place.pixels.pose;
    place.frame.pose = recipe.millimetres ? place.millimetres.pose : place.pixels.pose;
    place.frame.plane = recipe.millimetres ? recipe.plane.get() : nullptr;
    return place;
}

}  // namespace orx::recipes
