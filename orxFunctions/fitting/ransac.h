// One line or one circle in a noisy list of pixel points, by random sampling and consensus.
//
// Method: M. A. Fischler, R. C. Bolles, "Random sample consensus", Commun. ACM 24 (1981). TRansacLine refits
// its line to the inliers; TRansacCircle returns the circle of its three sample points as it is (fitCircle in
// fitting/geometry.h or a factory of the fits refines it). For the line nearest one side of a part see
// getWantedLine (fitting/wanted_line.h).
//
// For results that repeat give a seed (setSeed): equal seeds give equal results on any number of threads and
// beside any use of rand(), on every processor with the same C runtime, and rand() is left alone. Without one
// samples are drawn from the C runtime's rand(), which the whole process shares (on Windows: the thread) and
// which nothing here seeds: seed it (srand, getSrandNum) before doRansac, and let no other thread call rand()
// or srand() meanwhile, nor what calls them.
#ifndef ORXFUNCTIONS_FITTING_RANSAC_H
#define ORXFUNCTIONS_FITTING_RANSAC_H

#include <opencv2/core.hpp>
#include <optional>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/foundation/enumerations.h"
#include "orxFunctions/foundation/records.h"

namespace orx {

// A line by two-point samples. A plain value; one thread at a time.
class ORX_API TRansacLine {
  public:
    // iterations: number of samples drawn (none below 1). cap: sampling stops once more than `cap` lines are
    // candidates; samples of one point twice, or outside the angle limits, make no candidate. threshold: the
    // largest distance of an inlier from the line, pixels (no inliers but the samples when negative).
    TRansacLine(std::vector<cv::Point> points, int iterations, int cap, double threshold);

    // Only samples with minAngle <= angleFrom2Points(p, q, type) <= maxAngle are accepted, degrees.
    // ANGLE_NO_LIMIT, the initial type, accepts all.
    void setAngleLimit(double minAngle, double maxAngle, TAngleType type);

    // Each doRansac from now on draws what rand() gives after srand(seed), from a generator of its own.
    void setSeed(unsigned seed);

    // Searches anew. True when there was a candidate; the one with the most indices, the earliest among
    // equals, is then the result. False leaves the earlier result as it was: fewer than two points
    // (rcTooFew), no samples to draw (rcOption), none within the limits (rcNoResult).
    bool doRansac();

    // The line y = k x + b through the inliers, by cv::fitLine with the Huber loss (in single precision). A
    // vertical line has an infinite or very large slope. Invalid before the first success of doRansac
    // (rcNotReady).
    TLine getResultLine();

    // The inliers as points, and as indices into the list given. The two sample points come first and, being
    // within the threshold of their own line, normally once more in their place among the others, which are
    // in ascending order. Empty before the first success of doRansac (rcNotReady).
    void getLineList(std::vector<cv::Point>& out);
    void getIdxList(std::vector<int>& out);

  private:
    bool withinAngleLimit(cv::Point p, cv::Point q) const;

    std::vector<cv::Point> points_;
    std::vector<int> inliers_;
    int iterations_;
    int cap_;
    double threshold_;
    double maxAngle_ = 0;
    double minAngle_ = 0;
    TAngleType angleType_ = ANGLE_NO_LIMIT;
    std::optional<unsigned> seed_;
};

// A circle by three-point samples. A plain value; one thread at a time.
class ORX_API TRansacCircle {
  public:
    // iterations: number of samples drawn (none below 1). cap: sampling stops once more than `cap` circles
    // are candidates; samples with a repeated point, on a line, or outside the radius limits make none.
    // threshold: the largest distance of an inlier from the outline, pixels.
    TRansacCircle(std::vector<cv::Point> points, int iterations, int cap, double threshold);

    // Candidates have minRadius <= radius <= maxRadius, pixels; initially 5 and 1000.
    void setRLimit(int minRadius, int maxRadius);

    // Each doRansac from now on draws what rand() gives after srand(seed), from a generator of its own.
    void setSeed(unsigned seed);

    // Searches anew and returns centre and radius of the winner. The winner is the last candidate with more
    // inliers than the first candidate, or the first when no other has more: deliberately not always the one
    // with the most. Invalid and all zero, the earlier inliers kept, for fewer than 3 points (rcTooFew), no
    // samples to draw (rcOption), no candidate (rcNoResult).
    // Sample circles are computed in 32-bit integers that wrap (threePoints2circle): keep coordinates below
    // about 1,000, or shift the points to their middle first.
    TCircle doRansac();

    // The inliers of the winner as ascending indices into the list given. Empty before the first success
    // (rcNotReady).
    void getCircleIdxList(std::vector<int>& out);

  private:
    std::vector<cv::Point> points_;
    std::vector<int> inliers_;
    int iterations_;
    int cap_;
    double threshold_;
    int maxRadius_ = 1000;
    int minRadius_ = 5;
    std::optional<unsigned> seed_;
};

}  // namespace orx

#endif
