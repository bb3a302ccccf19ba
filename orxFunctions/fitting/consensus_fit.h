// Lines, circles and ellipses among many points that belong to none of them: a search by random samples, then
// the geometric fit (geometric_fit.h) of the points that support the winner.
//
// Prefer these to TRansacLine and TRansacCircle for measuring: sub-pixel points, a generator of their own
// (equal seeds give equal results, on any number of threads and beside any use of rand()), as many trials as
// the confidence needs, and the uncertainty of the result. Where more than half of the points follow one
// shape, a fit with a robust loss finds it as well.
//
// Method: random samples after M. A. Fischler and R. C. Bolles, Comm. ACM 24 (1981); a trial is judged by
// what its distances cost, cut at the tolerance, not by how many lie within (MSAC: P. H. S. Torr and A.
// Zisserman, CVIU 78 (2000)); a new best is polished at once (O. Chum, J. Matas and J. Kittler, "Locally
// optimized RANSAC", DAGM 2003). Of more than 10,000 points a random part is searched, large enough for the
// least support; all are fitted. What strewn points would support as well by chance is no shape (A.
// Desolneux, L. Moisan and J.-M. Morel, "Meaningful alignments", IJCV 40 (2000)), nor is a circle whose
// radius the points do not tell to a fifth.
//
// Refused like the fits, with the codes of lastRefusal() that fit_report.h names; fsCollinear (circles),
// fsNotThatShape (ellipses) or fsCoincident (lines) where no sample makes a shape, fsNoConsensus where none
// has the support asked for. `used` marks the supporting points, `iterations` counts those of the fit. All
// functions are reentrant.
#ifndef ORXFUNCTIONS_FITTING_CONSENSUS_FIT_H
#define ORXFUNCTIONS_FITTING_CONSENSUS_FIT_H

#include <cstdint>
#include <limits>
#include <opencv2/core.hpp>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/fitting/fit_report.h"
#include "orxFunctions/fitting/geometric_fit.h"

namespace orx {

struct TConsensusOptions {
    // [2] Points within this distance support a shape during the search, pixels, above 0. Three to four times
    // the noise is right; the final fit finds the noise itself and keeps what is within its reach, so that
    // one to thirty times lead to the same result.
    double tolerance = 2.0;
    // [0.999] Trials go on until a shape with the best support so far would have been found with this
    // probability. Above 0, below 1.
    double confidence = 0.999;
    int maxTrials = 20000;   // [20000] Trials at the most, 1 to 10 million.
    std::uint64_t seed = 1;  // [1] Any value. Equal seeds, equal results.
    // [0.1] Least support: this share of the points, 0 to 1, and never fewer than minPoints.
    double minSupport = 0.1;
    int minPoints = 0;  // [0] 0: twice as many as the shape has parameters.
    // [0, infinite] Circles: radius; ellipses: both half axes. 0 <= minRadius <= maxRadius.
    double minRadius = 0.0;
    double maxRadius = std::numeric_limits<double>::infinity();
    // [0, 90] Lines: only those whose angle differs from `angle` (degrees) by at most this much, 0 to 90;
    // both senses of a line are one.
    double angle = 0.0;
    double angleTolerance = 90.0;
    // How the points err. `loss`, `tuning` and `scale` are ignored: the end is always by Tukey's loss. The
    // search takes all points alike, but for those with a deviation of 0.
    TFitOptions fit;
};

// The shape with the least cost.
ORX_API TMeasuredLine findLine(const std::vector<cv::Point2d>& points, const TConsensusOptions& options = {});
ORX_API TMeasuredLine findLine(const std::vector<cv::Point2f>& points, const TConsensusOptions& options = {});
ORX_API TMeasuredCircle findCircle(const std::vector<cv::Point2d>& points,
                                   const TConsensusOptions& options = {});
ORX_API TMeasuredCircle findCircle(const std::vector<cv::Point2f>& points,
                                   const TConsensusOptions& options = {});
ORX_API TMeasuredEllipse findEllipse(const std::vector<cv::Point2d>& points,
                                     const TConsensusOptions& options = {});
ORX_API TMeasuredEllipse findEllipse(const std::vector<cv::Point2f>& points,
                                     const TConsensusOptions& options = {});

// All of them, one after another, each from the points that those before it left, by descending support:
// until nothing has the support asked for (a share of all the points given), or `most` are found (0: no
// limit). Empty when there is none (rcNoResult, or rcDegenerate as for the single ones), or when the
// points or the options are refused, a negative `most` included (rcOption). `used` is over all points given;
// no point supports two shapes, and those within the tolerance of a shape are taken away with it.
ORX_API std::vector<TMeasuredLine> findLines(const std::vector<cv::Point2d>& points,
                                             const TConsensusOptions& options = {}, int most = 0);
ORX_API std::vector<TMeasuredLine> findLines(const std::vector<cv::Point2f>& points,
                                             const TConsensusOptions& options = {}, int most = 0);
ORX_API std::vector<TMeasuredCircle> findCircles(const std::vector<cv::Point2d>& points,
                                                 const TConsensusOptions& options = {}, int most = 0);
ORX_API std::vector<TMeasuredCircle> findCircles(const std::vector<cv::Point2f>& points,
                                                 const TConsensusOptions& options = {}, int most = 0);

}  // namespace orx

#endif
