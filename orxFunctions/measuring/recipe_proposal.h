// A first recipe from a picture of a good part: the shapes that stand out in it, numbered, each with its
// values as they are.
#ifndef ORXFUNCTIONS_MEASURING_RECIPE_PROPOSAL_H
#define ORXFUNCTIONS_MEASURING_RECIPE_PROPOSAL_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/matching/part_model.h"

namespace orx {

struct TProposalOptions {
    std::string name = "part";  // of the recipe
    // [none] File of a part model as the recipe will name it, relative to `folder` or absolute: the part is
    // found by it, and features are told in its frame. Without one they are told in the picture's.
    std::string model;
    // [false] Teach that model from this picture, too: the host writes TProposal::partModel there.
    bool teach = false;
    // [none] File of a plane calibration, named likewise: shapes are those on the plane, all in millimetres.
    std::string calibration;
    std::string folder = ".";  // of both files, and of the recipe to be
    // [what stands out: findPartRegion] Where the part lies, pixels; features outside are not proposed, nor
    // are those of edges that the region cuts, unless it cuts the part itself.
    cv::Rect region;
    int maxFeatures = 40;     // [40] The largest ones, 1 to 500.
    double minLength = 20.0;  // [20] Least length of an edge, pixels, 8 or more.
    // [0.01, 0.1] Tolerances to either side, to be edited: this share of the value, and at least so many
    // pixels' worth. Both 0 or more, not both 0. They are widened to six standard uncertainties, or more of
    // few points, where a part that is just as good would else be undecided; what would have to be widened to
    // more than five times is not proposed.
    double share = 0.01;
    double leastPixels = 0.1;
};

// Where a part lies in a picture.
struct TPartRegion {
    bool found = false;
    cv::Rect box;                      // around the polygon
    std::vector<cv::Point2d> polygon;  // around the part's outline with a little margin, pixels, convex
    int others = 0;                    // further things of a twentieth of its size or more
};

struct TProposal {
    bool valid = false;
    std::string problem;  // in English, why there is none; else empty
    std::string text;     // the recipe, which parseRecipe(text, options.folder) takes; edit it
    // 8-bit BGR: features drawn with the numbers that end their names. Small pictures are enlarged, up to 4
    // times.
    cv::Mat picture;
    int features = 0;
    int values = 0;
    TPartRegion region;    // that was used
    TPartModel partModel;  // that was taught
};

// The largest thing that edges show in a picture of a part on a plain ground; what the picture's border cuts
// is taken only where nothing else is as large as a fifth of it. Not found in a picture without edges
// (rcNoResult), or of a kind that is not supported (rcEmptyImage, rcImageType, rcImageDimensions). Takes
// about as long as two runs of the edge finder. Reentrant.
ORX_API TPartRegion findPartRegion(const cv::Mat& img);

// Measured by the recipe itself: nominal values are what it then gives for this picture. Features are
// numbered from the largest on. Pictures as TRecipe::run takes them. Refused with the reason: no picture,
// options out of range (rcOption), files that can't be read (rcFileFormat), a part that can't be taught
// (rcTooFew) or is not found, no features (rcNoResult).
// Reentrant.
ORX_API TProposal proposeRecipe(const cv::Mat& img, const TProposalOptions& options = {});

}  // namespace orx

#endif
