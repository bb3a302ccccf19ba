#include "orxFunctions/fitting/ransac.h"

#include <cstddef>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <utility>

#include "orxFunctions/fitting/geometry.h"
#include "orxFunctions/fitting/inlier_tests_internal.h"
#include "orxFunctions/fitting/line_search_internal.h"
#include "orxFunctions/fitting/point_columns_internal.h"
#include "orxFunctions/fitting/point_list.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/runtime_random_internal.h"

namespace orx {
namespace {

constexpr const char* kNothingFound = "doRansac has found nothing yet";

// Where samples come from: a generator of the search's own where it has a seed, else that of the runtime.
class Draws {
  public:
    Draws(const std::vector<cv::Point>& points, std::optional<unsigned> seed)
        : count_(static_cast<int>(points.size())) {
        if (seed) own_.emplace().seed(*seed);
    }

    int index() { return (own_ ? own_->draw() : std::rand()) % count_; }

  private:
    int count_;
    std::optional<platform::RuntimeRandom> own_;
};

const cv::Point& at(const std::vector<cv::Point>& points, int index) {
    return points[static_cast<std::size_t>(index)];
}

// The circle through three points drawn. False where they determine none.
bool sampleCircle(const std::vector<cv::Point>& points, Draws& draws, cv::Point3d& circle) {
    const int a = draws.index();
    const int b = draws.index();
    const int c = draws.index();
    if (a == b || b == c || a == c) return false;
    if (isCollinear(at(points, a), at(points, b), at(points, c))) return false;
    return threePoints2circle(at(points, a), at(points, b), at(points, c), circle);
}

// Why a search found no candidate.
bool refuseSearch(std::size_t points, std::size_t fewest, int iterations, const char* shape) {
    if (points < fewest)
        return refuse(rcTooFew, "doRansac", "%zu points; at least %zu are taken", points, fewest);
    if (iterations < 1)
        return refuse(rcOption, "doRansac", "%d samples to draw; at least 1 is taken", iterations);
    return refuse(rcNoResult, "doRansac", "none of %d samples makes a %s within the limits", iterations,
                  shape);
}

// Finds the last circle that has more inliers than the first. Circles are judged from the last to the first,
// so that the search ends at the first success, in batches, so that memory stays bounded.
class CircleContest {
  public:
    CircleContest(const std::vector<cv::Point>& points, double threshold)
        : columns_(points), kernels_(inlier_kernels::chosen()), threshold_(threshold) {}

    void add(const cv::Point3d& circle) {
        if (isEmpty_) {
            winner_ = circle;
            reference_ = count(circle, 0);
            isEmpty_ = false;
            return;
        }
        waiting_.push_back(circle);
        if (waiting_.size() == kBatch) judge();
    }

    bool isEmpty() const { return isEmpty_; }

    const cv::Point3d& winner() {
        judge();
        return winner_;
    }

    std::vector<int> inliers() const {
        std::vector<int> indices(columns_.span().size);
        indices.resize(kernels_.listOnCircle(columns_.span(), test(winner_), indices.data()));
        return indices;
    }

  private:
    static constexpr std::size_t kBatch = 4096;

    inlier_kernels::CircleTest test(const cv::Point3d& circle) const {
        return circleWithin(circle.x, circle.y, circle.z, threshold_);
    }

    std::size_t count(const cv::Point3d& circle, std::size_t floor) const {
        return kernels_.countOnCircle(columns_.span(), test(circle), floor);
    }

    void judge() {
        for (auto circle = waiting_.rbegin(); circle != waiting_.rend(); ++circle) {
            if (count(*circle, reference_) > reference_) {
                winner_ = *circle;
                break;
            }
        }
        waiting_.clear();
    }

    PointColumns columns_;
    const inlier_kernels::Kernels& kernels_;
    double threshold_;
    std::vector<cv::Point3d> waiting_;
    cv::Point3d winner_;
    std::size_t reference_ = 0;  // inliers of the first circle; intended to stay the same throughout
    bool isEmpty_ = true;
};

}  // namespace

TRansacLine::TRansacLine(std::vector<cv::Point> points, int iterations, int cap, double threshold)
    : points_(std::move(points)), iterations_(iterations), cap_(cap), threshold_(threshold) {}

void TRansacLine::setAngleLimit(double minAngle, double maxAngle, TAngleType type) {
    minAngle_ = minAngle;
    maxAngle_ = maxAngle;
    angleType_ = type;
}

void TRansacLine::setSeed(unsigned seed) { seed_ = seed; }

bool TRansacLine::withinAngleLimit(cv::Point p, cv::Point q) const {
    if (angleType_ == ANGLE_NO_LIMIT) return true;
    const double angle = angleFrom2Points(p, q, angleType_);
    return minAngle_ <= angle && angle <= maxAngle_;
}

bool TRansacLine::doRansac() {
    constexpr std::size_t kFewest = 2;
    if (points_.empty()) return refuseSearch(0, kFewest, iterations_, "line");
    LineSearch search(points_, threshold_);
    Draws draws(points_, seed_);
    int candidates = 0;
    for (int trial = 0; trial < iterations_ && candidates <= cap_; ++trial) {
        const int i = draws.index();
        const int j = draws.index();
        if (i == j || !withinAngleLimit(at(points_, i), at(points_, j))) continue;
        search.offer({i, j});
        ++candidates;
    }
    if (!search.hasBest()) return refuseSearch(points_.size(), kFewest, iterations_, "line");
    const std::vector<int> onLine = search.inliers();
    // The sample points count twice, intended: as samples and as points of their line.
    inliers_ = {search.best().first, search.best().second};
    inliers_.insert(inliers_.end(), onLine.begin(), onLine.end());
    return true;
}

TLine TRansacLine::getResultLine() {
    if (inliers_.empty()) {
        refuse(rcNotReady, "getResultLine", "%s", kNothingFound);
        return {};
    }
    std::vector<cv::Point> points;
    getLineList(points);
    cv::Vec4f fit;  // direction, then a point of the line
    cv::fitLine(points, fit, cv::DIST_HUBER, 0, 0.01, 0.01);
    const double k = fit[1] / fit[0];
    return {k, fit[3] - fit[2] * k, true};
}

void TRansacLine::getLineList(std::vector<cv::Point>& out) {
    if (inliers_.empty()) refuse(rcNotReady, "getLineList", "%s", kNothingFound);
    getPointListFromIdxList(points_, inliers_, out);
}

void TRansacLine::getIdxList(std::vector<int>& out) {
    if (inliers_.empty()) refuse(rcNotReady, "getIdxList", "%s", kNothingFound);
    out = inliers_;
}

TRansacCircle::TRansacCircle(std::vector<cv::Point> points, int iterations, int cap, double threshold)
    : points_(std::move(points)), iterations_(iterations), cap_(cap), threshold_(threshold) {}

void TRansacCircle::setRLimit(int minRadius, int maxRadius) {
    minRadius_ = minRadius;
    maxRadius_ = maxRadius;
}

void TRansacCircle::setSeed(unsigned seed) { seed_ = seed; }

TCircle TRansacCircle::doRansac() {
    constexpr std::size_t kFewest = 3;
    if (points_.size() < kFewest) {
        refuseSearch(points_.size(), kFewest, iterations_, "circle");
        return {};
    }
    CircleContest contest(points_, threshold_);
    Draws draws(points_, seed_);
    int candidates = 0;
    for (int trial = 0; trial < iterations_; ++trial) {
        cv::Point3d circle;
        if (!sampleCircle(points_, draws, circle)) continue;
        // A radius that is not a number fails here.
        if (minRadius_ <= circle.z && circle.z <= maxRadius_) {
            contest.add(circle);
            ++candidates;
        }
        if (candidates > cap_) break;
    }
    if (contest.isEmpty()) {
        refuseSearch(points_.size(), kFewest, iterations_, "circle");
        return {};
    }
    const cv::Point3d& winner = contest.winner();
    inliers_ = contest.inliers();
    TCircle result;
    result.x = winner.x;
    result.y = winner.y;
    result.r = winner.z;
    result.valid = true;
    return result;
}

void TRansacCircle::getCircleIdxList(std::vector<int>& out) {
    if (inliers_.empty()) refuse(rcNotReady, "getCircleIdxList", "%s", kNothingFound);
    out = inliers_;
}

}  // namespace orx
