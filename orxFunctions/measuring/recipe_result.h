// What a recipe measured in a picture, as values, as a line of JSON and as a picture.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_RESULT_H
#define ORXFUNCTIONS_MEASURING_RECIPE_RESULT_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/matching/part_pose.h"
#include "orxFunctions/measuring/verdict.h"

namespace orx {

class TRecipe;

enum TFeatureKind : int {
    fkLine = 0,
    fkCircle = 1,
    fkArc = 2,
    fkEllipse = 3,
    fkEdgePair = 4,
    fkChain = 5,
    fkPoint = 6  // of other features: an intersection, a middle
};

// "line", "circle", "arc", "ellipse", "edgePair", "chain" or "point"; "unknown feature" else. Never null.
ORX_API const char* featureKindText(TFeatureKind kind);

// Where the part was found.
struct TRecipePose {
    bool found = false;
    TPartPose pose;      // pixels; the identity for recipes whose coordinates are those of the picture
    double score = 1.0;  // of the part finder; 1 for parts that are not found by a model
    // Standard uncertainties, pixels and degrees; infinite where the outline can't tell, 0 where the place is
    // fixed.
    double deviationX = 0.0;
    double deviationY = 0.0;
    double deviationAngle = 0.0;
    std::string problem;  // in English; empty where it was found
};

// A feature as it lies in the picture, pixels.
struct TRecipeFeature {
    std::string name;
    TFeatureKind kind = fkLine;
    bool measured = false;
    std::string problem;  // in English, why it was not measured; else empty
    // Where it was looked for, and what was found: a polyline each (a point is one), for drawing.
    std::vector<cv::Point2d> nominal;
    std::vector<cv::Point2d> outline;
    std::vector<cv::Point2d> points;  // edge points that had a say
    int searched = 0;                 // places or calipers that were looked at
    int found = 0;                    // edge points, those left out as outliers included
    double rms = 0.0;                 // root mean square distance of `points` from the shape, pixels
};

struct TRecipeValue {
    std::string name;
    std::string type;
    std::string unit;  // "px", "mm", "deg" or "" for a share
    bool measured = false;
    std::string problem;  // in English, why it was not measured; else empty
    double value = 0.0;
    double deviation = 0.0;             // standard uncertainty, that of the calibration included
    double calibrationDeviation = 0.0;  // the calibration's share of it; 0 without one
    double degreesOfFreedom = 0.0;
    bool hasNominal = false;
    double nominal = 0.0;
    TTolerance tolerance;  // absolute limits
    TVerdict verdict = vdNotMeasured;
    double conformity = 0.0;  // probability, not-a-number where it is not measured
    double guard = 0.0;       // of the verdict, in the unit
};

struct TRecipeResult {
    std::string recipe;  // its name
    // Of the whole: the worst of the values' verdicts (worseVerdict). vdNotMeasured where the part was not
    // found, and for no picture.
    TVerdict verdict = vdNotMeasured;
    std::string problem;  // of the whole: no picture, another size than the calibration's, no part
    double confidence = 0.95;
    cv::Size size;  // of the picture
    TRecipePose pose;
    std::vector<TRecipeFeature> features;  // in the recipe's order
    std::vector<TRecipeValue> values;      // in the recipe's order
    double milliseconds = 0.0;             // that it took
};

// "56.1631 +- 0.0014 mm": the value to the second digit of its standard uncertainty (JCGM 100:2008, 7.2.6),
// six digits of a value without one; the reason for a value that was not measured. UTF-8, for people.
ORX_API std::string measuredText(const TRecipeValue& value);

struct TJsonResultOptions {
    bool features = true;      // [true] How the features fared; else values and pose alone
    bool milliseconds = true;  // [true] false: equal pictures give equal bytes
    // Put before everything else: the name of the picture, where it is not empty.
    std::string picture;
};

// One line of JSON (UTF-8, no line break at its end); numbers to 10 digits, null for what is not finite or
// not there. docs/recipes.md lists the fields. Reentrant.
ORX_API std::string toJson(const TRecipeResult& result, const TJsonResultOptions& options = {});

// The picture in colour (8-bit BGR) with what the recipe asks to be drawn: the part's axes, features as found
// (green where all their values pass, red where one fails, yellow where one is undecided or not measured,
// blue without verdicts), where those not measured were looked for, and a list of values with their verdicts.
// Empty for what is no picture (rcEmptyImage, rcImageType, rcImageDimensions). Reentrant.
ORX_API cv::Mat drawRecipeResult(const cv::Mat& img, const TRecipe& recipe, const TRecipeResult& result);

// The same with the list beside the picture, for people and reports: pictures of less than 900 pixels are
// enlarged by a whole factor, 4 at the most, and to their right stands a table of the values, those that did
// not pass first: name, value and uncertainty, a bar that shows where the value lies in its tolerance,
// verdict. As many rows as there is room for; no table where the recipe asks for no values. Empty for what is
// no picture, as above. Reentrant.
ORX_API cv::Mat drawRecipeSheet(const cv::Mat& img, const TRecipe& recipe, const TRecipeResult& result);

// The same sheet of a picture of one channel as indices (8 bits) into `palette` (256 colours, BGR), for
// encodeIndexedPng: drawn and encoded together in a third of the time of a sheet in colour. The picture's
// levels are rounded to 151 ones (by 1 of 255 at the most), soft edges of lines and letters to a few
// mixtures. Empty, with an empty palette, for what is no picture, as above, and for one of several channels
// (rcImageType). Reentrant.
ORX_API cv::Mat drawIndexedRecipeSheet(const cv::Mat& img, const TRecipe& recipe, const TRecipeResult& result,
                                       std::vector<cv::Vec3b>& palette);

}  // namespace orx

#endif
