// A recipe as it was read and checked: what running it needs to know.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_RECIPE_DATA_H
#define ORXFUNCTIONS_MEASURING_RECIPE_RECIPE_DATA_H

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/matching/part_finder.h"
#include "orxFunctions/matching/part_model.h"
#include "orxFunctions/measuring/recipe.h"
#include "orxFunctions/measuring/recipe/plane.h"

namespace orx::recipes {

enum class Method { kEdges, kCalipers, kChain };
enum class Construction { kNone, kIntersection, kMidpoint, kConnection };

struct FeatureSpec {
    std::string name;
    TFeatureKind kind = fkLine;
    // Places and sizes are in the frame of the recipe, in its unit of coordinates.
    cv::Point2d from;  // line, edge pair
    cv::Point2d to;
    cv::Point2d center;  // circle, arc, ellipse
    double radius = 0.0;
    double startAngle = 0.0;
    double sweep = 360.0;
    double semiMajor = 0.0;
    double semiMinor = 0.0;
    double angle = 0.0;
    std::vector<cv::Point2d> path;  // chain
    bool closed = false;
    double search = 0.0;  // to either side of the nominal place

    Method method = Method::kEdges;
    TEdgePolarity polarity = epAny;
    double minContrast = 10.0;
    double sigma = 1.0;  // pixels
    int count = 0;       // calipers; 0 chooses
    double width = 0.0;  // of a caliper, pixels; 0 chooses
    double minShare = 0.5;
    TFitLoss loss = flTukey;

    Construction construction = Construction::kNone;
    std::vector<int> of;  // indices of features
    int which = 0;        // of two intersections
    // Its coordinates are those of the picture: it tells where the part is.
    bool places = false;
};

enum class ValueKind {
    kDiameter,
    kRadius,
    kMajorDiameter,
    kMinorDiameter,
    kX,
    kY,
    kLength,
    kWidth,
    kDistance,
    kGap,
    kAngle,
    kParallelism,
    kPerpendicularity,
    kConcentricity,
    kRoundness,
    kStraightness,
    kPartX,
    kPartY,
    kPartAngle,
    kPartScale,
    kScore
};

enum class Section { kMiddle, kLeast, kLargest };

struct ValueSpec {
    TRecipeTarget target;
    ValueKind kind = ValueKind::kDiameter;
    std::vector<int> of;
    Section section = Section::kMiddle;
    bool inPart =
        true;  // places and directions are told in the part's frame, else in the picture's or plane's
    bool inMillimetres = false;
    double addedDeviation = 0.0;
};

enum class PlaceKind { kPicture, kFixed, kModel, kFeatures };

struct PlaceSpec {
    PlaceKind kind = PlaceKind::kPicture;
    TPartPose fixed;
    TPartModel model;
    TFindOptions find;
    int origin = -1;  // indices of features
    int direction = -1;
    double angle = 0.0;  // of the direction in the part's frame, degrees
};

struct DrawSpec {
    bool features = true;
    bool points = false;
    bool values = true;
    bool pose = true;
};

struct RecipeData {
    std::string text;
    std::string name;
    std::vector<TRecipeProblem> problems;
    double confidence = 0.95;
    bool millimetres = false;            // coordinates of features are millimetres of the part's frame
    std::shared_ptr<const Plane> plane;  // null without a calibration
    PlaceSpec place;
    DrawSpec draw;
    std::vector<FeatureSpec> features;
    std::vector<int> order;  // of the features, each after those that it is made of
    std::vector<ValueSpec> values;
    std::vector<TRecipeTarget> targets;  // those of the values
};

// Reads the text into `data`; problems come with it.
void readRecipeText(const std::string& text, const std::string& folder, RecipeData& data);

TRecipeResult runRecipe(const RecipeData& recipe, const cv::Mat& img);

}  // namespace orx::recipes

#endif
