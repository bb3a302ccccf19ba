// Recipes and what they measure: measuring/recipe.h, measuring/recipe_result.h. Results cross as tuples of
// plain values, and come back as such where they were pickled.
#include <pybind11/pybind11.h>

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "bindings.h"
#include "orxFunctions/measuring/recipe.h"
#include "orxFunctions/measuring/recipe_result.h"
#include "refusals.h"
#include "texts.h"

#include <pybind11/stl.h>

namespace orxpy {

namespace {

using orx::TRecipe;
using orx::TRecipeFeature;
using orx::TRecipePose;
using orx::TRecipeResult;
using orx::TRecipeValue;

using Problem = std::tuple<int, py::str, py::str>;  // line, field, text

std::vector<Problem> problemsOf(const TRecipe& recipe) {
    std::vector<Problem> problems;
    for (const orx::TRecipeProblem& problem : recipe.problems())
        problems.emplace_back(problem.line, textFrom(problem.field), textFrom(problem.text));
    return problems;
}

std::string sentenceOf(int line, const std::string& field, const std::string& text) {
    return orx::TRecipeProblem{line, field, text}.sentence();
}

TRecipe parseRecipe(const py::bytes& text, const py::bytes& folder) {
    const std::string plainText = text, plainFolder = folder;
    return unlocked([&] { return orx::parseRecipe(plainText, plainFolder); });
}

// What is no file to be read is an OSError; what is wrong in it is told as problems.
TRecipe readRecipe(const py::bytes& path) {
    const std::string plain = path;
    TRecipe recipe = unlocked([&] { return orx::readRecipe(plain); });
    if (!recipe.valid() && orx::lastRefusal().code != orx::rcFileFormat) raiseRefusal();
    return recipe;
}

// name, type, unit, nominal, lower, upper
using Target = std::tuple<py::str, py::str, py::str, std::optional<double>, double, double>;

std::vector<Target> targetsOf(const TRecipe& recipe) {
    std::vector<Target> targets;
    for (const orx::TRecipeTarget& target : recipe.targets()) {
        targets.emplace_back(textFrom(target.name), textFrom(target.type), textFrom(target.unit),
                             target.hasNominal ? std::optional<double>(target.nominal) : std::nullopt,
                             target.tolerance.lower, target.tolerance.upper);
    }
    return targets;
}

std::vector<py::str> featureNamesOf(const TRecipe& recipe) {
    std::vector<py::str> names;
    for (const std::string& name : recipe.featureNames()) names.push_back(textFrom(name));
    return names;
}

std::pair<int, int> pictureSizeOf(const TRecipe& recipe) {
    const cv::Size size = recipe.pictureSize();
    return {size.width, size.height};
}

// A part that is not there is a result; everything else that keeps a recipe from being run is refused.
TRecipeResult run(const TRecipe& recipe, const Argument& image) {
    const Image picture = imageOf(image, "image", ikAny);
    TRecipeResult result = unlocked([&] { return recipe.run(picture.mat); });
    if (!result.problem.empty()) raiseUnlessNothingFound();
    return result;
}

using Drawing = cv::Mat(const cv::Mat&, const TRecipe&, const TRecipeResult&);

ArrayOf<unsigned char> drawnBy(Drawing* drawing, const Argument& image, const TRecipe& recipe,
                               const TRecipeResult& result) {
    const Image picture = imageOf(image, "image", ikAny);
    cv::Mat drawn = unlocked([&] { return drawing(picture.mat, recipe, result); });
    if (drawn.empty()) raiseRefusal();
    return bytesFrom(std::move(drawn));
}

ArrayOf<unsigned char> draw(const TRecipe& recipe, const Argument& image, const TRecipeResult& result) {
    return drawnBy(&orx::drawRecipeResult, image, recipe, result);
}

ArrayOf<unsigned char> drawSheet(const TRecipe& recipe, const Argument& image, const TRecipeResult& result) {
    return drawnBy(&orx::drawRecipeSheet, image, recipe, result);
}

// recipe, verdict, problem, confidence, width, height, milliseconds
using Head = std::tuple<py::str, int, py::str, double, int, int, double>;
// found, x, y, angle, scale, score, their deviations, problem
using Pose = std::tuple<bool, double, double, double, double, double, double, double, double, py::str>;
// name, type, unit, measured, problem; value, deviation, that of the calibration, degrees of freedom;
// nominal, lower, upper; verdict, conformity, guard
using Value = std::tuple<py::str, py::str, py::str, bool, py::str, double, double, double, double,
                         std::optional<double>, double, double, int, double, double>;
// name, kind, measured, problem; nominal, outline, points; searched, found, rms
using Feature = std::tuple<py::str, int, bool, py::str, ArrayOf<double>, ArrayOf<double>, ArrayOf<double>,
                           int, int, double>;
using State = std::tuple<Head, Pose, std::vector<Value>, std::vector<Feature>>;
// The same, handed in.
using GivenFeature =
    std::tuple<py::str, int, bool, py::str, py::object, py::object, py::object, int, int, double>;
using GivenState = std::tuple<Head, Pose, std::vector<Value>, std::vector<GivenFeature>>;

Head headOf(const TRecipeResult& result) {
    return {textFrom(result.recipe), result.verdict,     textFrom(result.problem), result.confidence,
            result.size.width,       result.size.height, result.milliseconds};
}

Pose poseOf(const TRecipeResult& result) {
    const TRecipePose& told = result.pose;
    return {told.found, told.pose.x,     told.pose.y,     told.pose.angle,     told.pose.scale,
            told.score, told.deviationX, told.deviationY, told.deviationAngle, textFrom(told.problem)};
}

Value valueOf(const TRecipeValue& value) {
    return {textFrom(value.name),
            textFrom(value.type),
            textFrom(value.unit),
            value.measured,
            textFrom(value.problem),
            value.value,
            value.deviation,
            value.calibrationDeviation,
            value.degreesOfFreedom,
            value.hasNominal ? std::optional<double>(value.nominal) : std::nullopt,
            value.tolerance.lower,
            value.tolerance.upper,
            value.verdict,
            value.conformity,
            value.guard};
}

ArrayOf<double> copyOf(std::vector<cv::Point2d> points) { return arrayFrom(std::move(points)); }

Feature featureOf(const TRecipeFeature& feature) {
    return {textFrom(feature.name),  feature.kind,
            feature.measured,        textFrom(feature.problem),
            copyOf(feature.nominal), copyOf(feature.outline),
            copyOf(feature.points),  feature.searched,
            feature.found,           feature.rms};
}

std::vector<Value> valuesOf(const TRecipeResult& result) {
    std::vector<Value> values;
    for (const TRecipeValue& value : result.values) values.push_back(valueOf(value));
    return values;
}

std::vector<Feature> featuresOf(const TRecipeResult& result) {
    std::vector<Feature> features;
    for (const TRecipeFeature& feature : result.features) features.push_back(featureOf(feature));
    return features;
}

State stateOf(const TRecipeResult& result) {
    return {headOf(result), poseOf(result), valuesOf(result), featuresOf(result)};
}

void setHead(TRecipeResult& result, const Head& head) {
    int verdict = 0;
    std::tie(result.recipe, verdict, result.problem, result.confidence, result.size.width, result.size.height,
             result.milliseconds) = head;
    result.verdict = static_cast<orx::TVerdict>(verdict);
}

void setPose(TRecipePose& told, const Pose& pose) {
    std::tie(told.found, told.pose.x, told.pose.y, told.pose.angle, told.pose.scale, told.score,
             told.deviationX, told.deviationY, told.deviationAngle, told.problem) = pose;
}

TRecipeValue valueFrom(const Value& told) {
    TRecipeValue value;
    int verdict = 0;
    std::optional<double> nominal;
    std::tie(value.name, value.type, value.unit, value.measured, value.problem, value.value, value.deviation,
             value.calibrationDeviation, value.degreesOfFreedom, nominal, value.tolerance.lower,
             value.tolerance.upper, verdict, value.conformity, value.guard) = told;
    value.verdict = static_cast<orx::TVerdict>(verdict);
    value.hasNominal = nominal.has_value();
    value.nominal = nominal.value_or(0.0);
    return value;
}

TRecipeFeature featureFrom(const GivenFeature& told) {
    TRecipeFeature feature;
    feature.name = std::get<0>(told);
    feature.kind = static_cast<orx::TFeatureKind>(std::get<1>(told));
    feature.measured = std::get<2>(told);
    feature.problem = std::get<3>(told);
    feature.nominal = precisePointsOf(std::get<4>(told), "nominal");
    feature.outline = precisePointsOf(std::get<5>(told), "outline");
    feature.points = precisePointsOf(std::get<6>(told), "points");
    std::tie(feature.searched, feature.found, feature.rms) =
        std::make_tuple(std::get<7>(told), std::get<8>(told), std::get<9>(told));
    return feature;
}

TRecipeResult resultFrom(const GivenState& state) {
    TRecipeResult result;
    setHead(result, std::get<0>(state));
    setPose(result.pose, std::get<1>(state));
    for (const Value& value : std::get<2>(state)) result.values.push_back(valueFrom(value));
    for (const GivenFeature& feature : std::get<3>(state)) result.features.push_back(featureFrom(feature));
    return result;
}

py::str jsonOf(const TRecipeResult& result, bool features, bool milliseconds, const std::string& picture) {
    orx::TJsonResultOptions options;
    options.features = features;
    options.milliseconds = milliseconds;
    options.picture = picture;
    return textFrom(unlocked([&] { return orx::toJson(result, options); }));
}

py::str measuredText(double value, double deviation, const std::string& unit) {
    TRecipeValue told;
    told.measured = true;
    told.value = value;
    told.deviation = deviation;
    told.unit = unit;
    return textFrom(orx::measuredText(told));
}

}  // namespace

void bindRecipes(py::module_& core) {
    py::class_<TRecipeResult>(core, "RecipeResult")
        .def("head", &headOf)
        .def("pose", &poseOf)
        .def("values", &valuesOf)
        .def("features", &featuresOf)
        .def("json", &jsonOf, py::arg("features"), py::arg("milliseconds"), py::arg("picture"))
        .def("state", &stateOf);
    py::class_<TRecipe>(core, "Recipe")
        .def("valid", &TRecipe::valid)
        .def("problems", &problemsOf)
        .def("name", [](const TRecipe& recipe) { return textFrom(recipe.name()); })
        .def("text", [](const TRecipe& recipe) { return textFrom(recipe.text()); })
        .def("confidence", &TRecipe::confidence)
        .def("picture_size", &pictureSizeOf)
        .def("targets", &targetsOf)
        .def("feature_names", &featureNamesOf)
        .def("run", &run, py::arg("image"))
        .def("draw", &draw, py::arg("image"), py::arg("result"))
        .def("draw_sheet", &drawSheet, py::arg("image"), py::arg("result"));
    core.def("parse_recipe", &parseRecipe, py::arg("text"), py::arg("folder"));
    core.def("read_recipe", &readRecipe, py::arg("path"));
    core.def("recipe_problem_sentence", &sentenceOf, py::arg("line"), py::arg("field"), py::arg("text"));
    core.def("recipe_result", &resultFrom, py::arg("state"));
    core.def("measured_text", &measuredText, py::arg("value"), py::arg("deviation"), py::arg("unit"));
}

}  // namespace orxpy
