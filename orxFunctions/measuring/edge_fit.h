// Geometric fits of edges as the edge finders give them: an edge chain or the points of calipers goes in, the
// shape with its uncertainty comes out.
//
// Prefer these to the fits of points (fitting/geometric_fit.h, ellipse_geometric.h) wherever the points are
// edges of a picture: they pass on what the finder knows, the deviation of each point, and how neighbours
// along the edge share pixels. Taken for independent, the points of a chain promise 1.8 times the accuracy
// that they have. What a fit tells and refuses is as there; all functions are reentrant.
//
// Of `options` here the noise model is the function's own: `noise` and `smoothing` have no say. Deviations
// given in the options go before the edge's own. `absoluteDeviations` may be set without giving any: the
// uncertainty then follows from the edge's deviations alone, as the image's noise has them, where else the
// distances that remain tell how large they are. The edge's deviations are left aside where the finder saw no
// noise (one of them is 0) or where there are none; absoluteDeviations is then refused with fsBadOptions.
// They are smoothed along the edge, so that they weigh its stretches and not its points.
//
// Over rendered disks and half planes of blur 0.5 to 1.5 and noise 1 to 8, the stated uncertainties are 0.97
// to 1.03 of the true ones; with absoluteDeviations 0.9 to 1.05, lowest for blurred edges in strong noise.
#ifndef ORXFUNCTIONS_MEASURING_EDGE_FIT_H
#define ORXFUNCTIONS_MEASURING_EDGE_FIT_H

#include <vector>

#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/api.h"
#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/geometric_fit.h"

namespace orx {

// The smoothing that TFitOptions and TFormOptions want for points that edgesSubPixMetric found with `sigma`
// (TMetricOptions::sigma): a little more than sigma, since the 3 x 3 places of its facet smooth too.
ORX_API double chainSmoothing(double sigma);

// The options with which these functions fit an edge found with `sigma`, for fits of part of its points or of
// points derived from it.
ORX_API TFitOptions edgeFitOptions(const ORXEdge::TMetricContour& edge, double sigma,
                                   const TFitOptions& options = {});

// Of a whole edge that edgesSubPixMetric found with `sigma`. fsBadOptions for a sigma out of [0.5, 20].
ORX_API TMeasuredLine fitLineGeometric(const ORXEdge::TMetricContour& edge, double sigma,
                                       const TFitOptions& options = {});
ORX_API TMeasuredCircle fitCircleGeometric(const ORXEdge::TMetricContour& edge, double sigma,
                                           const TFitOptions& options = {});
ORX_API TMeasuredArc fitArcGeometric(const ORXEdge::TMetricContour& edge, double sigma,
                                     const TFitOptions& options = {});
ORX_API TMeasuredEllipse fitEllipseGeometric(const ORXEdge::TMetricContour& edge, double sigma,
                                             const TFitOptions& options = {});

// Of caliper points, whose noise is across the edge: independent, as long as the calipers do not overlap.
ORX_API TMeasuredLine fitLineGeometric(const std::vector<TContrastEdge>& edges,
                                       const TFitOptions& options = {});
ORX_API TMeasuredCircle fitCircleGeometric(const std::vector<TContrastEdge>& edges,
                                           const TFitOptions& options = {});
ORX_API TMeasuredArc fitArcGeometric(const std::vector<TContrastEdge>& edges,
                                     const TFitOptions& options = {});
ORX_API TMeasuredEllipse fitEllipseGeometric(const std::vector<TContrastEdge>& edges,
                                             const TFitOptions& options = {});

}  // namespace orx

#endif
