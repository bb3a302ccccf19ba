#include "orxFunctions/matching/search/search_plan.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::matching {
namespace {

// On the top level the outline is at least so far from its middle, root mean square, pixels.
constexpr double kLeastRadius = 6;
// And so many pixels of it are seen where the least score is reached.
constexpr double kLeastSeen = 18;
// Steps of angle and scale on the top level move no point by more than this, pixels. Half of it, and half a
// pixel of the place, the width of edges in the maps bears.
constexpr double kTopStep = 1.25;
// A picture's diagonal against the outline's radius, if all of it is to be seen.
constexpr double kLeastDiagonal = 0.5;
// Narrower pictures show nothing that could be told from anything else, pixels.
constexpr int kNarrowest = 6;
// Scales that are searched together differ by this factor at the most.
constexpr double kWidestBand = 1.5;
constexpr std::size_t kMostPoints = 1024;
// Of the contrast that an edge must have a thin part on a coarse level keeps this share.
constexpr double kContrastShare = 0.55;
// Noise makes few gradients this many times its standard deviation.
constexpr double kNoiseFactor = 3.5;
constexpr double kLeastNoise = 0.29;  // of rounding
constexpr double kPictureBlur = 0.5;  // pixels of a level, of a sharp picture

// Of a part that looks nearly the same at every angle the angles are looked at in such steps, pixels at its
// rim: climbing bridges them.
constexpr double kNearTurn = 4;

// An order in which any first part of a sequence is spread evenly over all of it.
std::vector<std::size_t> spreadOrder(std::size_t count) {
    constexpr double kGolden = 0.6180339887498949;
    std::vector<std::pair<double, std::size_t>> keys(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double turns = static_cast<double>(i) * kGolden;
        keys[i] = {turns - std::floor(turns), i};
    }
    std::sort(keys.begin(), keys.end());
    std::vector<std::size_t> order;
    order.reserve(count);
    for (const auto& key : keys) order.push_back(key.second);
    return order;
}

cv::Point2d meanOf(const std::vector<LevelPoint>& points) {
    cv::Point2d sum;
    for (const LevelPoint& point : points) sum += cv::Point2d(point.position);
    return sum / static_cast<double>(std::max<std::size_t>(1, points.size()));
}

SearchPoints searchPoints(const ModelLevel& level, cv::Point2d middle, bool reversed) {
    SearchPoints result;
    const float sign = reversed ? -1.0F : 1.0F;
    const std::size_t count = level.points.size();
    const std::size_t kept = std::min(count, kMostPoints);
    for (const std::size_t i : spreadOrder(kept)) {
        const LevelPoint& point = level.points[i * count / kept];
        result.x.push_back(point.position.x - static_cast<float>(middle.x));
        result.y.push_back(point.position.y - static_cast<float>(middle.y));
        result.normalX.push_back(sign * point.normal.x);
        result.normalY.push_back(sign * point.normal.y);
    }
    return result;
}

}  // namespace

SearchPlan::SearchPlan(const ModelData& model, const TFindOptions& options, cv::Size picture)
    : startAngle_(radians(options.startAngle)),
      angleRange_(radians(options.angleRange)),
      sigma_(model.sigma),
      contrast_(options.minContrast),
      noise_(options.noise),
      leastShare_(options.minScore) {
    addLevels(model, options.polarity == ppReversed && model.signsAreKnown);
    if (levels_.empty()) return;
    symmetry_ = model.report.symmetry;
    nearSymmetry_ = model.report.nearSymmetry;
    symmetryCentre_ = model.report.symmetryCentre - middle_;
    period_ = symmetry_ > 0 ? 2 * kPi / symmetry_ : 0.0;
    angleRange_ = std::min(angleRange_, period_);
    // Equal factors, none wider than a band.
    const double ratio = options.maxScale / options.minScale;
    const int bands =
        std::max(1, static_cast<int>(std::ceil(std::log(ratio) / std::log(kWidestBand) - 1e-9)));
    for (int i = 0; i < bands; ++i) {
        addBand(options.minScale * std::pow(ratio, static_cast<double>(i) / bands),
                options.minScale * std::pow(ratio, (i + 1.0) / bands), picture);
    }
}

void SearchPlan::addLevels(const ModelData& model, bool reversed) {
    if (model.levels.empty() || model.levels.front().points.empty()) return;
    middle_ = meanOf(model.levels.front().points);
    double squares = 0;
    for (const LevelPoint& point : model.levels.front().points) {
        const double distance = cv::norm(cv::Point2d(point.position) - middle_);
        radius_ = std::max(radius_, distance);
        squares += distance * distance;
    }
    typicalRadius_ = std::sqrt(squares / static_cast<double>(model.levels.front().points.size()));
    for (const ModelLevel& level : model.levels) {
        if (level.points.empty()) break;
        levels_.push_back(searchPoints(level, middle_, reversed));
    }
}

std::size_t SearchPlan::modelLevel(int level, double scale) const {
    const double wanted = std::round(level - std::log2(scale));
    return static_cast<std::size_t>(std::clamp(wanted, 0.0, static_cast<double>(levels_.size()) - 1));
}

std::vector<double> SearchPlan::nearTurns(int level, double scale) const {
    std::vector<double> turns;
    if (symmetry_ == 0 || angleRange_ <= 0 || nearSymmetry_ == 1 || nearSymmetry_ == symmetry_) return turns;
    const double radius = std::max(1.0, std::ldexp(radius_ * scale, -level));
    const int count = nearSymmetry_ > 0 ? std::max(1, nearSymmetry_ / symmetry_)
                                        : static_cast<int>(std::ceil(period_ * radius / kNearTurn));
    for (int i = 1; i < count; ++i) turns.push_back(period_ * i / count);
    return turns;
}

bool SearchPlan::isAllowed(double angle) const {
    if (anglesAreClosed() || period_ <= 0) return true;
    const double turned = angle - startAngle_;
    return turned - period_ * std::floor(turned / period_) <= angleRange_;
}

double SearchPlan::leastSlope(int level) const {
    const double blur = std::sqrt(sigma_ * sigma_ + kPictureBlur * kPictureBlur);
    const double slope = kContrastShare * contrast_ / (blur * std::sqrt(2 * kPi));
    const double noise = std::max(kLeastNoise, noise_ / (1 << level));
    return std::max(slope, kNoiseFactor * noise / (sigma_ * sigma_ * std::sqrt(8 * kPi)));
}

bool SearchPlan::isFineEnough(int level, double scale) const {
    const std::size_t ofModel = modelLevel(level, scale);
    const double finer = scale * std::ldexp(1.0, static_cast<int>(ofModel) - level);
    const double points = finer * static_cast<double>(levels_[ofModel].size());
    return std::ldexp(typicalRadius_ * scale, -level) >= kLeastRadius && leastShare_ * points >= kLeastSeen &&
           level - std::log2(scale) < static_cast<double>(levels_.size()) - 0.5;
}

int SearchPlan::topFor(double scale, cv::Size picture) const {
    int top = 0;
    while (isFineEnough(top + 1, scale) && std::min(picture.width, picture.height) >> (top + 1) > 0) ++top;
    return top;
}

AngleSteps SearchPlan::angleSteps(double radius) const {
    AngleSteps steps;
    steps.start = startAngle_;
    steps.range = angleRange_;
    if (angleRange_ <= 0) return steps;
    steps.closed = anglesAreClosed();
    const int intervals = std::max(1, static_cast<int>(std::ceil(angleRange_ * radius / kTopStep)));
    steps.step = angleRange_ / intervals;
    steps.count = steps.closed ? intervals : intervals + 1;
    return steps;
}

void SearchPlan::addBand(double least, double most, cv::Size picture) {
    // Such a picture can't hold as much of the outline as is to be seen.
    const double diagonal = std::hypot(picture.width, picture.height);
    if (diagonal < kLeastDiagonal * leastShare_ * typicalRadius_ * least) return;
    if (std::min(picture.width, picture.height) < kNarrowest) return;
    ScaleBand band;
    band.least = least;
    band.most = most;
    band.top = topFor(least, picture);
    band.bottom = std::clamp(band.top - 1, 0, 1);
    const double radius = std::ldexp(radius_, -band.top);
    band.angles = angleSteps(radius * most);
    const int intervals = static_cast<int>(std::ceil((most - least) * radius / kTopStep));
    for (int i = 0; i < intervals; ++i) band.scales.push_back(least + (most - least) * (i + 0.5) / intervals);
    if (band.scales.empty()) band.scales.push_back(least);
    bands_.push_back(band);
}

}  // namespace orx::matching
