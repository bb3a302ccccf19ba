// Chords grow into arcs, arcs join, arcs swallow chords. Lists only grow here: what is absorbed keeps its
// place with its flag changed (`usedByCircle`, `isCircle`), and the arc that stands for it is appended.
#ifndef ORXFUNCTIONS_SEGMENTATION_SPLITTING_ARCS_H
#define ORXFUNCTIONS_SEGMENTATION_SPLITTING_ARCS_H

#include <vector>

#include "orxFunctions/segmentation/segment_contour.h"
#include "orxFunctions/segmentation/splitting/work.h"

namespace orx::splitting {

// What becomes of the arcs that larger ones have absorbed: they keep their points, for drawing, or give them
// up, so that memory does not grow with the number of steps.
enum class Absorbed { kKept, kEmptied };

// What the steps may cost, and what they leave behind. No arc comes about any more where it is too much.
struct ArcSteps {
    Work work;
    Absorbed absorbed = Absorbed::kKept;
};

// Walks the chords of a pass in order: two that bend alike become an arc, which then grows by the next ones.
// Where the contour is closed, the seam between the last chord and the first is tried once, too. Reentrant.
void generateCircles(std::vector<TSegemetLine>& lines, std::vector<TSegemetCircle>& circles, bool closed,
                     const TSegemetParams& params, ArcSteps& steps);

// Joins arcs of which one runs into the other (ends nearer than 8 pixels) about nearly the same centre.
// Reentrant.
void mergeCircles2(std::vector<TSegemetCircle>& circles, const TSegemetParams& params, ArcSteps& steps);

// Lets each arc grow by the free chords that touch one of its ends (up to sqrt(2) pixels). Reentrant.
void mergeCirclesAndLines(std::vector<TSegemetCircle>& circles, std::vector<TSegemetLine>& lines,
                          const TSegemetParams& params, ArcSteps& steps);

}  // namespace orx::splitting

#endif
