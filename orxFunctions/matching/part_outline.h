// Teaching a part from its drawing: outlines of lines and arcs.
#ifndef ORXFUNCTIONS_MATCHING_PART_OUTLINE_H
#define ORXFUNCTIONS_MATCHING_PART_OUTLINE_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/matching/part_model.h"

namespace orx {

// A line or an arc of a drawing, in the drawing's units; walked from its start to its end.
struct TOutlinePiece {
    bool isArc = false;
    cv::Point2d from;  // of a line
    cv::Point2d to;
    cv::Point2d centre;  // of an arc
    double radius = 0.0;
    double startAngle = 0.0;  // degrees from the x axis towards the y axis
    double sweep = 0.0;       // degrees in the same sense, -360 to 360, not 0; 360 is a circle
};

ORX_API TOutlinePiece outlineLine(cv::Point2d from, cv::Point2d to);
ORX_API TOutlinePiece outlineArc(cv::Point2d centre, double radius, double startAngle, double sweep);

// Pieces that follow one another; closed where the last one ends at the start of the first.
using TOutline = std::vector<TOutlinePiece>;

// The side of the outlines on which pictures are brighter.
enum TBrightSide : int {
    bsUnknown = 0,  // either, and at each place another
    bsLeft = 1,     // of the walking direction, as the drawing is looked at
    bsRight = 2
};

struct TDrawingOptions {
    double pixelsPerUnit = 1.0;  // in the pictures, above 0: the model's scale 1
    // [false] The drawing's y axis runs up, as in CAD, and not down as in pictures.
    bool yIsUp = false;
    TBrightSide brightSide = bsUnknown;
    // [middle of the outline] The point whose place is told when the part is found, units of the drawing.
    bool hasReference = false;
    cv::Point2d reference;
    // [0] The direction whose angle is told, degrees in the drawing.
    double direction = 0.0;
    // [0] Pyramid levels, 1 to 8; 0 chooses as many as the outline bears.
    int levels = 0;
    // [1] Smoothing of the edge finder in the pictures, pixels, 0.5 to 5.
    double sigma = 1.0;
};

// Teaches the part from the edges that a picture shows of it: the outline's points lie on the drawing to the
// last digit. The model's plane counts pixels, pixelsPerUnit of them a unit, y down; taughtPose() is (0, 0,
// 0, 1). Prefer a picture where there is one: it shows which edges are seen, and how bright.
//
// Smoothing rounds what is small. Points nearer than two and a half times sigma to a corner, to another edge
// or on arcs as small as that are left out; of coarser levels as much at their own pixels. Where all
// outlines are closed and of one sense (holes are walked so that the bright side is that of the material,
// or of what surrounds it, everywhere) or of unknown sides, coarser levels hold what the filled drawing looks
// like instead: teeth too fine for a level become the circle that they stand on.
//
// msBadOutline (rcDegenerate): a number that is not finite, a piece of no length, a sweep beyond a full turn,
// no piece or more than 100,000. msTooLarge: more than 200,000 pixels of outline, or farther than 1e6 pixels
// from the drawing's origin (rcTooMany), or a reference that is (rcOption). msBadOptions (rcOption),
// msTooFewEdges (rcTooFew) as for pictures. Reentrant.
ORX_API TPartModel teachPart(const std::vector<TOutline>& drawing, const TDrawingOptions& options = {});

}  // namespace orx

#endif
