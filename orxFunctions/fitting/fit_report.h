// What every fit for measuring is told, and what it tells: how the points err, how well the shape is known,
// and why there is no result where there is none.
//
// Points are pixels (or whatever unit they come in), the centre of the top-left pixel at (0, 0); angles are
// degrees from the x axis towards the y axis, clockwise on the screen. A covariance is in the units of its
// parameters, pixels and degrees. Deviations are standard uncertainties in the sense of the Guide to the
// Expression of Uncertainty in Measurement (JCGM 100): what the noise of the points leaves open, not what a
// lens or a wrong scale adds. All is computed in double, about the points' centre. Everything here is
// reentrant; nothing depends on the number of threads. Nothing throws.
#ifndef ORXFUNCTIONS_FITTING_FIT_REPORT_H
#define ORXFUNCTIONS_FITTING_FIT_REPORT_H

#include <vector>

#include "orxFunctions/api.h"

namespace orx {

// Why there is no result; fsOk where there is one. lastRefusal() says it in the words of fitStatusText, as
// rcOption for fsBadOptions and fsBadDeviations, rcTooFew, rcTooMany for fsTooLarge, rcNotFinite,
// rcDegenerate for fsCoincident and fsCollinear, rcNoResult for the others.
enum TFitStatus : int {
    fsOk = 0,
    fsTooFewPoints =
        1,            // fewer usable points than the shape has parameters (none to spare for its uncertainty)
    fsNotFinite = 2,  // a coordinate is infinite or not a number
    fsBadOptions = 3,     // an option outside its range
    fsBadDeviations = 4,  // not one deviation a point, or one that is negative, infinite or not a number
    fsCoincident = 5,     // all points in one place
    fsCollinear = 6,      // on a straight line, as far as their noise tells: no circle, no ellipse
    fsArcTooShort =
        7,  // the arc does not tell the radius (or an axis): its uncertainty is more than half of it
    fsNotThatShape = 8,  // the points follow no ellipse, but a parabola or a hyperbola
    fsNotConverged = 9,  // the steps did not settle within maxIterations
    fsNoConsensus = 10,  // no shape has the support asked for
    fsTooLarge = 11      // coordinates beyond 1e9, or more than 20 million points
};

// The status as a short English text, "ok" for fsOk; "unknown status" for other values. Never null.
ORX_API const char* fitStatusText(TFitStatus status);

// How a point's say falls off with its distance, u = distance / scale. All but the first bear outliers; the
// last three give far points (nearly) no say at all. P. J. Huber, "Robust Statistics" (1981); the constants
// that keep 95 % of the efficiency under Gaussian noise are 1.345, 2.385, 4.685 and 3.787.
enum TFitLoss : int { flLeastSquares = 0, flHuber = 1, flCauchy = 2, flTukey = 3, flGemanMcClure = 4 };

// How the points err, which decides what n of them are worth.
enum TPointNoise : int {
    // Independently, in x and y alike: centres of marks, clicked points, coordinates from elsewhere. Such
    // noise
    // makes curves look larger, by noise^2 / (2 radius); that is taken back.
    pnIndependent = 0,
    // Across the edge alone, each point from pixels of its own: calipers side by side.
    pnNormal = 1,
    // Across the edge alone, and in company: an edge chain in order along it. An edge finder that smooths by
    // sigma
    // lets neighbours see the same pixels, so that points count as if they lay 2 sqrt(pi) sigma apart; taken
    // for
    // independent they would promise sqrt(2 sqrt(pi) sigma) times too much.
    pnEdgeChain = 2
};

struct TFitOptions {
    TFitLoss loss = flLeastSquares;
    // [0] Where the loss bends, in scales; 0 takes the constant of 95 % efficiency. 0 or 0.1 to 100.
    double tuning = 0.0;
    // [0] The scale of a robust loss: the noise of an inlier in pixels (with deviations: in deviations). 0
    // estimates it from the points (with absolute deviations it is 1). Not negative.
    double scale = 0.0;
    // [none] The standard deviation of each point across the outline, in pixels, one for each point; a
    // deviation of 0 leaves its point out. Equal for all where there are none.
    std::vector<double> deviations;
    // [false] true: the deviations are known in pixels, and the uncertainty follows from them alone. false:
    // they tell how the points compare, and the distances that remain tell how large they are. true needs
    // deviations.
    bool absoluteDeviations = false;
    TPointNoise noise = pnIndependent;
    // [1] For pnEdgeChain: the smoothing of the edge finder in pixels (its sigma), 0.3 to 50.
    double smoothing = 1.0;
    // [50] Steps at the most, 1 to 1,000.
    int maxIterations = 50;
};

// What a fit tells beside the shape.
struct TFitReport {
    TFitStatus status = fsTooFewPoints;
    int points = 0;                 // given
    int usedPoints = 0;             // that had a say, see `used`
    double effectivePoints = 0.0;   // independent points that would be worth as much
    double degreesOfFreedom = 0.0;  // of the noise; infinite where deviations are absolute
    double noise = 0.0;         // standard deviation of a point (of an average one, with deviations), pixels
    double rms = 0.0;           // root mean square distance of the used points, pixels
    double peakToValley = 0.0;  // largest less smallest signed distance of the used points, pixels
    int iterations = 0;
    // For each point 1 where it had a say, else 0. All with a deviation above 0 have in least squares. A
    // robust loss leaves out those beyond 5 scales of the shape that most points follow (Tukey's those beyond
    // its bend), and those near it by chance, far along the outline from the stretches that hold a twentieth
    // or more of the points. Of up to 64 near it these are such that stand alone (for five median steps or
    // more), if there are as many outliers elsewhere.
    std::vector<unsigned char> used;

    bool valid() const { return status == fsOk; }
};

// How many standard uncertainties make the half width of the interval that holds the true value with
// `probability`: Student's t with the report's degrees of freedom (1.96 for 0.95 and many points, more for
// few). Not-a-number for a probability outside of (0, 1) or degrees of freedom not above 0 (rcOption).
ORX_API double coverageFactor(double probability, double degreesOfFreedom);

}  // namespace orx

#endif
