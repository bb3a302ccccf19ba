// Finds taught parts in pictures: anywhere, at any angle and scale, partly hidden, in any light.
//
// Method: the directions of the picture's edges, on coarse levels of a pyramid as maps of a few directions,
// are compared with the outline's (S. Hinterstoisser et al., "Gradient response maps for real-time detection
// of textureless objects", IEEE Trans. PAMI 34 (2012); C. Steger, "Similarity measures for occlusion,
// clutter, and illumination invariant object recognition", DAGM 2001); what scores well is followed down.
// Around each candidate edges are found between the pixels (analysis/subpixel_edges_metric.h), and the
// outline is laid over them by least squares of the distances along the mean of both normals (Y. Chen and G.
// Medioni, "Object modelling by registration of multiple range images", Image and Vision Computing 10 (1992);
// S. Rusinkiewicz, "A symmetric objective function for ICP", ACM Trans. Graphics 38 (2019)), weighted by the
// deviations of outline and edges, outliers left out, and freed of edges that merely run along by a least
// median of squares over stretches of the outline (P. J. Rousseeuw, J. Am. Stat. Assoc. 79 (1984)).
//
// Accuracy, over five rendered parts 120 pixels wide, of contrast 100 and blur 0.8, taught without noise:
// 0.0035 pixels and 0.01 degrees at noise 2, 0.012 pixels and 0.025 degrees at noise 8, 0.011 pixels with 40
// % hidden (root mean squares; a ring whose notch alone tells the angle has 0.016 degrees, a gear 0.004);
// scales to 0.0001. The deviations told are 0.85 to 1.15 of the true ones, as long as nothing but noise is
// wrong. What is not in them: a plane that is tilted against the one taught (0.07 pixels and 0.08 degrees at
// 5 degrees), ground that is rough next to the part (0.7 of the true ones), and edges of something else that
// run along the part's within a pixel (0.6 where covers hide 40 %). docs/accuracy-matching.md has the table.
#ifndef ORXFUNCTIONS_MATCHING_PART_FINDER_H
#define ORXFUNCTIONS_MATCHING_PART_FINDER_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/matching/part_model.h"
#include "orxFunctions/matching/part_pose.h"

namespace orx {

// Whether bright and dark may be exchanged, against the picture that taught the model.
enum TPartPolarity : int {
    ppSame = 0,
    ppReversed = 1,  // all of the part
    ppEither = 2     // same or reversed, all of the part alike
};

struct TFindOptions {
    // [0, 360] Angles of the reference direction, degrees: from startAngle over angleRange, 0 to 360.
    double startAngle = 0.0;
    double angleRange = 360.0;
    // [1, 1] Scales against the model, 0.2 to 5.
    double minScale = 1.0;
    double maxScale = 1.0;
    TPartPolarity polarity = ppSame;
    // [0.6] Least share of the outline that must be seen, 0.1 to 1.
    double minScore = 0.6;
    // [1] Parts at the most, the best first, 1 to 10,000.
    int maxParts = 1;
    // [0.5] Of two parts whose outlines' boxes cover each other by more than this share of the smaller one,
    // only the better is told; 0 to 1.
    double maxOverlap = 0.5;
    // [whole picture] Where reference points may lie, pixels.
    cv::Rect region;
    // [0.7] 0 follows every candidate that could still reach minScore; 1 gives up early on those that look
    // bad on the coarse levels: faster, and may miss parts that are hidden in large part. 0 to 1.
    double greediness = 0.7;
    // [0] Least contrast of an edge, grey levels; 0 takes a share of the model's, above the picture's noise.
    double minContrast = 0.0;
    // [0] Standard deviation of the picture's noise, grey levels; 0 measures it.
    double noise = 0.0;
};

struct TFoundPart {
    TPartPose pose;
    // Share of the outline's length that is seen, 0 to 1: where an edge of its direction, to 15 degrees, lies
    // within 1.2 pixels (times the scale where it is above 1), along several neighbours without a jump.
    // Texture reaches a tenth by chance.
    double score = 0.0;
    bool reversed = false;  // bright and dark are exchanged against the model
    // Of x, y (pixels), angle (degrees) and scale, in that order, from the noise of the picture and of the
    // one that taught the model, and larger where the distances that remain are. What the visible outline
    // can't tell (the angle of a ring, the place along a straight edge; the scale where no range of scales
    // was asked for) has no share in it: see `free`.
    cv::Matx44d covariance = cv::Matx44d::zeros();
    // Directions of (x, y, angle, scale) of length 1 (angles and scales counted as pixels at the outline's
    // radius, TTeachReport::radius times the scale) that the visible outline can't tell; in these the pose is
    // as the search had it. Empty where it tells all.
    std::vector<cv::Vec4d> free;
    // Standard deviations, roots of the covariance's diagonal; infinite where a free direction has a share in
    // the parameter.
    double deviationX = 0.0;
    double deviationY = 0.0;
    double deviationAngle = 0.0;
    double deviationScale = 0.0;
    double rms = 0.0;                 // of the seen points' distances from the picture's edges, pixels
    std::vector<unsigned char> seen;  // for each point of TPartModel::outline() 1 where it is seen
};

// A plain value: its const members are reentrant.
struct TFindResult {
    TMatchStatus status = msBadModel;
    std::vector<TFoundPart> parts;  // best first; empty where the part is not there

    bool valid() const { return status == msOk; }
};

// Finds a part in a picture: 8- or 16-bit unsigned, 1 to 4 channels; colour is weighted to grey, and 16-bit
// levels are rounded to 8 bits. Parts may lie outside of the picture in part, as far as the rest reaches
// minScore; in a picture that is too small for as much of the outline there are none.
//
// Angles are told in [startAngle, startAngle + 360), or the 360/symmetry of it that a symmetric part
// (TTeachReport::symmetry) looks different in; where angleRange is less, as near to the middle of the range
// as the symmetry allows. A part that looks the same at every angle has startAngle. Parts may be up to a
// degree and a hundredth of the scale beyond the limits asked for, so that one just at a limit is not lost.
//
// No parts, and a status: msBadImage for what is no picture (rcEmptyImage, rcImageType, rcImageDimensions),
// msBadModel for a model that is not valid() (rcNotReady), msBadOptions for an option out of its range or not
// finite (rcOption), msBadRegion for a region that is not empty and not inside the picture (rcOutside);
// looked for in this order. A part that is not there is no refusal. Reentrant; the result does not depend on
// the number of threads. Nothing throws.
ORX_API TFindResult findParts(const cv::Mat& img, const TPartModel& model, const TFindOptions& options = {});

}  // namespace orx

#endif
