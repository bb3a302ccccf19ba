// Models of parts: what a part's outline looks like, taught from a picture or from a drawing, for the part
// finder (part_finder.h).
//
// A model holds edge points with their normals on several levels of a pyramid, finest first, and what makes
// the part ambiguous. It is a value: copies share what never changes, so it is cheap to pass on and may be
// used on several threads at once. All functions are reentrant.
#ifndef ORXFUNCTIONS_MATCHING_PART_MODEL_H
#define ORXFUNCTIONS_MATCHING_PART_MODEL_H

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/matching/part_pose.h"

namespace orx {

namespace matching {
struct ModelData;
}

// Why there is no model, or no search; msOk where there is one.
enum TMatchStatus : int {
    msOk = 0,
    msBadImage = 1,     // no picture: no pixels, another depth, more channels
    msBadRegion = 2,    // a region outside the picture, or of another size than it, or not finite
    msBadOptions = 3,   // an option outside its range
    msTooFewEdges = 4,  // no outline, or too little of it to find a part by
    msBadOutline = 5,   // pieces of a drawing that are not finite, of no length, or too many
    msBadModel = 6,     // a model that was not taught
    msTooLarge = 7,     // more work or memory than a picture can be worth
    msUnreadable = 8,   // a file that can't be opened, or is no model
    msUnwritable = 9    // a file that can't be written
};

// The status as a short English text, "ok" for msOk; "unknown status" for other values. Never null.
ORX_API const char* matchStatusText(TMatchStatus status);

struct TTeachOptions {
    // [1] Smoothing of the edge finder, pixels, 0.5 to 5 (ORXEdge::TMetricOptions).
    double sigma = 1.0;
    // [0] Least contrast of an edge that belongs to the part, grey levels of a sharp step, 0 to 255; 0 takes
    // it from the picture: a share of its strongest edges, above the noise.
    double minContrast = 0.0;
    // [middle of the outline] The point whose place is told when the part is found, pixels of the picture;
    // it may lie outside, up to 1e6 pixels from the origin.
    bool hasReference = false;
    cv::Point2d reference;
    // [0] The direction whose angle is told, degrees.
    double direction = 0.0;
    // [0] Pyramid levels, 1 to 8; 0 chooses as many as the outline bears.
    int levels = 0;
};

// What teaching found.
struct TTeachReport {
    TMatchStatus status = msBadModel;
    std::vector<int> pointsPerLevel;  // finest first
    double leastContrast = 0.0;       // grey levels: of the weakest twentieth of the outline; 0 for drawings
    double radius = 0.0;              // of the outline about the reference point, pixels
    // The part looks the same after 1/symmetry of a turn about symmetryCentre: 1 for none, 2 for a rectangle,
    // 6 for a hexagon, up to 64; 0 for every angle (a ring).
    int symmetry = 1;
    // After 1/nearSymmetry of a turn most of the outline (nearShare of it) looks the same, and the rest tells
    // the turns from each other: a gear with a tooth missing. 0 for every angle: a ring with a notch. 1 where
    // there is no such turn beyond those of `symmetry`.
    int nearSymmetry = 1;
    double nearShare = 0.0;      // 0.85 to 1; 0 where nearSymmetry is 1
    cv::Point2d symmetryCentre;  // of both, in the model's plane; of a free turn else; else (0, 0)
    // What the outline can't tell, as far as it goes: a turn about symmetryCentre (a ring, an arc), a shift
    // along a line (parallel edges), the scale (a corner, a straight edge).
    bool anglesAreFree = false;
    bool aShiftIsFree = false;
    double freeDirection = 0.0;  // of that shift, degrees in the model's plane, 0 to 180
    bool scaleIsFree = false;
    std::vector<std::string> warnings;  // in English, for a person
};

class ORX_API TPartModel {
  public:
    TPartModel();  // of nothing: valid() is false
    explicit TPartModel(std::shared_ptr<const matching::ModelData> data);
    TPartModel(const TPartModel&);
    TPartModel(TPartModel&&) noexcept;
    TPartModel& operator=(const TPartModel&);
    TPartModel& operator=(TPartModel&&) noexcept;
    ~TPartModel();

    bool valid() const;
    const TTeachReport& report() const;
    // Where the part lay when it was taught: what finding it in that picture gives. (0, 0, 0, 1) for
    // drawings.
    TPartPose taughtPose() const;
    // The outline of the finest level in the model's plane, and its normals from dark to bright.
    std::vector<cv::Point2d> outline() const;
    std::vector<cv::Point2d> normals() const;

    // For the finder and the file.
    const std::shared_ptr<const matching::ModelData>& data() const { return data_; }

  private:
    std::shared_ptr<const matching::ModelData> data_;
};

// Teaches the part whose outline lies in a region of a picture: 8- or 16-bit unsigned, 1 to 4 channels. The
// rectangle or the polygon (pixels, three corners or more) lies in the picture; the mask is CV_8UC1 of the
// picture's size, not 0 where edges count. What crosses the region's border counts up to there.
//
// The outline is what edgesSubPixMetric finds of at least 0.3 of the strong edges' contrast, above the noise;
// short stray edges and, where there is texture, weak short ones are left out. Teach from a clean picture all
// the same, or with a polygon or a mask close to the part: what is taught from dirt is looked for, too.
// Coarser levels are added as long as they show most of the outline and are 12 pixels large. Symmetry is
// found by turning the outline about its middle and laying it over itself; what differs over six pixels of
// the outline, or over a fiftieth of it in all, tells one turn from another. Takes about as long as four runs
// of the edge finder on the region.
//
// A model that is not valid() tells in its report why: msBadImage (rcEmptyImage, rcImageType,
// rcImageDimensions), msBadRegion (rcOutside, for an empty mask, too; rcSizesDiffer for one of another kind
// or size), msBadOptions (rcOption), msTooFewEdges (fewer than 16 points; rcTooFew), msTooLarge (more than
// 200,000; rcTooMany).
ORX_API TPartModel teachPart(const cv::Mat& img, const cv::Rect& region, const TTeachOptions& options = {});
ORX_API TPartModel teachPart(const cv::Mat& img, const std::vector<cv::Point2d>& polygon,
                             const TTeachOptions& options = {});
ORX_API TPartModel teachPart(const cv::Mat& img, const cv::Mat& mask, const TTeachOptions& options = {});

}  // namespace orx

#endif
