// Ellipses through sub-pixel points: TEllipse (foundation/records.h).
//
// Both functions fit by least squares of the algebraic distance with the constraint that makes every conic an
// ellipse (A. Fitzgibbon, M. Pilu, R. Fisher, "Direct least square fitting of ellipses", IEEE Trans. PAMI 21,
// 1999). Noise on a short arc pulls that fit towards smaller ellipses; docs/accuracy-ellipse.md shows by how
// much. Prefer fitEllipseNorm for clean contours, fitEllipseRansac where some points belong to something
// else.
//
// The record: `width` is the axis along `angle`, which is the shorter one, `height` the axis across it;
// `angle` lies in (-90, 180] degrees from the x axis towards the y axis, and means nothing for a circle. A to
// F are the conic in image coordinates with F = 1, in single precision: far from the origin (distance much
// greater than the axes) they are too coarse to recompute the ellipse from; the other fields are not.
// `meanError` and `inlierRatio` compare each point with the ellipse along the ray from the centre.
//
// The axis bands: the shorter axis must lie in [minAxisLow, minAxisHigh], the longer one in [maxAxisLow,
// maxAxisHigh], all in pixels.
//
// Invalid records (`valid` 0): all zero when the points determine no ellipse: fewer than 6 (rcTooFew),
// coordinates that are not finite (rcNotFinite), all in one place, on one line (closer than single precision
// tells at their distance from the origin) or in fewer than five places (rcDegenerate). A conic without real
// points gets not-a-number axes, which no band accepts. No ellipse in the bands and near enough points:
// rcNoResult.
#ifndef ORXFUNCTIONS_FITTING_ELLIPSE_FIT_H
#define ORXFUNCTIONS_FITTING_ELLIPSE_FIT_H

#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/records.h"

namespace orxFit {

// The ellipse of all points. Outside the axis bands the geometry and conic are returned ungraded (ratio and
// mean error 0) and `valid` is 0. `valid` is 1 when more than `minInlierRatio` of the points lie closer than
// `errorThreshold` pixels (strictly, single precision). Reentrant.
ORX_API orx::TEllipse fitEllipseNorm(std::vector<cv::Point2f> points, double errorThreshold,
                                     double minInlierRatio, double minAxisLow, double minAxisHigh,
                                     double maxAxisLow, double maxAxisHigh);

// The best of many ellipses, each through six points spread evenly by polar angle about the centroid: of
// those with axes in the bands and more than `minInlierRatio` of all points closer than `errorThreshold`, the
// one with the smallest mean error (the earliest among equals). Ends early when a trial reaches a ratio above
// 0.9 with a mean error below 0.2 pixels.
//
// The mean error counts the outliers too: with wide bands an ellipse far larger than the true one can come
// nearer to them and win, above all when the points cover only a part of the ellipse. Give the bands that the
// part allows.
//
// `iterations` trials are drawn, each what rand() gives after srand() with the number of trials left, so the
// same points give the same record; at most 2^31 - 1, and none when it is 0, negative or not a number
// (rcOption). There are only N / 6 + 1 different samples: one drawn again is not fitted again, and when all
// have been seen the search ends.
//
// The numbers come from a generator of the search's own: equal points give equal records on any number of
// threads and beside any use of rand(). Then the runtime's generator is left as the last trial would leave
// it, so other users of rand() are disturbed; refused input does not touch it. Reentrant.
ORX_API orx::TEllipse fitEllipseRansac(std::vector<cv::Point2f> points, double errorThreshold,
                                       double iterations, double minInlierRatio, double minAxisLow,
                                       double minAxisHigh, double maxAxisLow, double maxAxisHigh);

}  // namespace orxFit

#endif
