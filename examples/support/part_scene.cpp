#include "support/part_scene.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "support/angles.h"
#include "support/part_surroundings_internal.h"
#include "support/random_source_internal.h"
#include "support/synthetic_scene.h"

namespace scenes {
namespace {

constexpr double kGap = 10;    // between the circles of two parts
constexpr double kBorder = 4;  // between a part's circle and the picture's border
constexpr double kDistance = 1000;
// Optics blurs before the pixels gather light. Painted in pixels and blurred then, an edge along an axis
// would lie up to 0.03 pixels off; in thirds of a pixel it is a thousandth. Large pictures are not worth it.
constexpr int kFineness = 3;
constexpr int kFineArea = 6'000'000;

double radiusOf(const ScenePose& pose) { return kPartRadius * pose.scale; }

// A part in the picture: its loops with everything done to them.
struct Laid {
    PlacedPart part;
    std::vector<Loop> loops;
    Loop points;  // along all loops
};

// A plane through the part's origin, tilted and seen from a distance.
class Tilt {
  public:
    Tilt(cv::Point2d origin, double axis, double degrees)
        : origin_(origin),
          across_(-std::sin(axis), std::cos(axis)),
          cosine_(std::cos(degrees * kDegree)),
          sine_(std::sin(degrees * kDegree)) {}

    cv::Point2d operator()(cv::Point2d p) const {
        const cv::Point2d d = p - origin_;
        const double off = d.dot(across_);
        const double depth = 1 + off * sine_ / kDistance;
        return origin_ + (d + across_ * (off * (cosine_ - 1))) * (1 / depth);
    }

  private:
    cv::Point2d origin_;
    cv::Point2d across_;
    double cosine_;
    double sine_;
};

Laid lay(PartKind kind, const ScenePose& pose, double tilt, double axis) {
    const PartShape& shape = partShape(kind);
    const Tilt tilted({pose.x, pose.y}, axis, tilt);
    Laid laid{{kind, pose, 0}, shape.loops, outlinePoints(shape, 1)};
    for (Loop& loop : laid.loops)
        for (cv::Point2d& p : loop) p = tilted(placed(pose, p));
    for (cv::Point2d& p : laid.points) p = tilted(placed(pose, p));
    return laid;
}

// ---- Places
// -------------------------------------------------------------------------------------------------

class Placing {
  public:
    Placing(const PartSceneSettings& settings, RandomSource& random)
        : settings_(settings), random_(random), size_(settings.size) {}

    std::vector<Laid> all() {
        for (int i = 0; i < settings_.count; ++i) {
            const bool atOther = settings_.touching && !laid_.empty();
            if (!(atOther ? addTouching() : addApart(settings_.kind))) break;
        }
        if (settings_.cut > 0 && !laid_.empty()) pushOut(laid_.front());
        return std::move(laid_);
    }

    std::vector<Laid> others(const std::vector<Laid>& parts) {
        laid_ = parts;
        for (int i = 0; i < settings_.otherParts; ++i) {
            PartKind kind = settings_.kind;
            while (kind == settings_.kind)
                kind = kFiveParts.at(static_cast<std::size_t>(wholeNumber(0, 4, random_)));
            if (!addApart(kind)) break;
        }
        return {laid_.begin() + static_cast<std::ptrdiff_t>(parts.size()), laid_.end()};
    }

  private:
    ScenePose anyPose() {
        ScenePose pose;
        pose.angle = random_.uniform(-0.5, 0.5) * settings_.angleRange;
        pose.scale = random_.uniform(settings_.minScale, settings_.maxScale);
        const double reach = radiusOf(pose) + kBorder;
        pose.x = random_.uniform(reach, std::max(reach, size_.width - 1 - reach));
        pose.y = random_.uniform(reach, std::max(reach, size_.height - 1 - reach));
        return pose;
    }

    Laid layHere(PartKind kind, const ScenePose& pose) {
        return lay(kind, pose, settings_.tilt, random_.uniform(0, 2 * kPi));
    }

    bool isApart(const ScenePose& pose) const {
        return std::none_of(laid_.begin(), laid_.end(), [&](const Laid& other) {
            const ScenePose& at = other.part.pose;
            return std::hypot(at.x - pose.x, at.y - pose.y) < radiusOf(at) + radiusOf(pose) + kGap;
        });
    }

    bool addApart(PartKind kind) {
        for (int i = 0; i < 2000; ++i) {
            const ScenePose pose = anyPose();
            if (!isApart(pose)) continue;
            laid_.push_back(layHere(kind, pose));
            return true;
        }
        return false;
    }

    static bool overlap(const Laid& a, const Laid& b) {
        const auto anyInside = [](const Laid& one, const Laid& other) {
            const ScenePose& pose = other.part.pose;
            return std::any_of(one.points.begin(), one.points.end(), [&](cv::Point2d p) {
                return std::hypot(p.x - pose.x, p.y - pose.y) <= radiusOf(pose) + 1 &&
                       contains(other.loops.front(), p);
            });
        };
        return anyInside(a, b) || anyInside(b, a);
    }

    bool isInside(const ScenePose& pose) const {
        const double reach = radiusOf(pose) + kBorder;
        return pose.x >= reach && pose.y >= reach && pose.x <= size_.width - 1 - reach &&
               pose.y <= size_.height - 1 - reach;
    }

    // Brings a part up to another one until they touch.
    bool addTouching() {
        for (int i = 0; i < 200; ++i) {
            const Laid& other =
                laid_[static_cast<std::size_t>(wholeNumber(0, static_cast<int>(laid_.size()) - 1, random_))];
            const ScenePose& at = other.part.pose;
            ScenePose pose = anyPose();
            const cv::Point2d way = unit(random_.uniform(0, 2 * kPi));
            const double axis = random_.uniform(0, 2 * kPi);
            const auto laidAt = [&](double distance) {
                pose.x = at.x + way.x * distance;
                pose.y = at.y + way.y * distance;
                return lay(settings_.kind, pose, settings_.tilt, axis);
            };
            double near = 0;
            double far = radiusOf(at) + radiusOf(pose) + 1;
            for (int halving = 0; halving < 12; ++halving) {
                const double middle = 0.5 * (near + far);
                (overlap(laidAt(middle), other) ? near : far) = middle;
            }
            const Laid laid = laidAt(far);
            const bool isFree = std::none_of(laid_.begin(), laid_.end(),
                                             [&](const Laid& each) { return overlap(laid, each); });
            if (!isInside(laid.part.pose) || !isFree) continue;
            laid_.push_back(laid);
            return true;
        }
        return false;
    }

    // Pushes a part over the nearest border at its left or right.
    void pushOut(Laid& laid) {
        std::vector<double> xs;
        for (const cv::Point2d& p : laid.points) xs.push_back(p.x);
        std::sort(xs.begin(), xs.end());
        const auto count = static_cast<double>(xs.size());
        const bool left = laid.part.pose.x < 0.5 * size_.width;
        const double share = left ? settings_.cut : 1 - settings_.cut;
        const double border = left ? -0.5 : size_.width - 0.5;
        const double shift = border - xs[static_cast<std::size_t>(std::clamp(share * count, 0.0, count - 1))];
        laid.part.pose.x += shift;
        for (Loop& loop : laid.loops)
            for (cv::Point2d& p : loop) p.x += shift;
        for (cv::Point2d& p : laid.points) p.x += shift;
    }

    const PartSceneSettings& settings_;
    RandomSource& random_;
    cv::Size size_;
    std::vector<Laid> laid_;
};

// ---- Covers
// -------------------------------------------------------------------------------------------------

// What lies farther than `distance` from the part's origin in a direction, up to somewhat outside its circle.
Loop coverBeyond(const ScenePose& pose, double reach, cv::Point2d way, double distance,
                 RandomSource& random) {
    constexpr int kCorners = 16;
    const double radius = radiusOf(pose) + reach;
    const double half = std::acos(std::clamp(distance / radius, -1.0, 1.0));
    const double turn = std::atan2(way.y, way.x);
    Loop loop;
    for (int i = 0; i < kCorners; ++i) {
        const double angle = turn + half * (2.0 * i / (kCorners - 1) - 1);
        // Both ends lie on the cover's straight edge; the rest is outside the circle.
        const bool isEnd = i == 0 || i == kCorners - 1;
        const double away =
            isEnd ? radius : radius / std::cos(2 * half / (kCorners - 1)) + random.uniform(0, 3);
        loop.push_back(cv::Point2d(pose.x, pose.y) + unit(angle) * away);
    }
    return loop;
}

// Where a cover must begin to hide a share of the points: along `way`, from the part's origin.
double beginHiding(const Laid& laid, cv::Point2d way, double share) {
    std::vector<double> along;
    for (const cv::Point2d& p : laid.points)
        along.push_back((p - cv::Point2d(laid.part.pose.x, laid.part.pose.y)).dot(way));
    std::sort(along.begin(), along.end(), std::greater<>());
    const auto index = static_cast<std::size_t>(share * static_cast<double>(along.size()));
    return along[std::min(index, along.size() - 1)];
}

double coverLevel(RandomSource& random) {
    const int kind = wholeNumber(0, 2, random);
    if (kind == 0) return random.uniform(15, 55);
    return kind == 1 ? random.uniform(105, 155) : random.uniform(205, 240);
}

std::vector<Loop> coversOf(const Laid& laid, double share, double reach, RandomSource& random) {
    const double turn = random.uniform(0, 2 * kPi);
    const double first = oneIn(2, random) ? share : share * random.uniform(0.3, 0.7);
    std::vector<Loop> covers;
    const auto add = [&](double angle, double part) {
        if (part < 1e-6) return;
        covers.push_back(
            coverBeyond(laid.part.pose, reach, unit(angle), beginHiding(laid, unit(angle), part), random));
    };
    add(turn, first);
    add(turn + kPi, share - first);
    return covers;
}

double hiddenShare(const Laid& laid, const std::vector<Loop>& covers, cv::Size size) {
    const auto hidden = std::count_if(laid.points.begin(), laid.points.end(), [&](cv::Point2d p) {
        const bool outside = p.x < -0.5 || p.y < -0.5 || p.x > size.width - 0.5 || p.y > size.height - 0.5;
        return outside || std::any_of(covers.begin(), covers.end(),
                                      [&](const Loop& cover) { return contains(cover, p); });
    });
    return static_cast<double>(hidden) / static_cast<double>(laid.points.size());
}

std::vector<Loop> outlinesOf(const std::vector<Laid>& parts) {
    std::vector<Loop> outlines;
    for (const Laid& laid : parts) outlines.push_back(laid.points);
    return outlines;
}

std::vector<PlacedPart> truthOf(const std::vector<Laid>& parts) {
    std::vector<PlacedPart> truth;
    for (const Laid& laid : parts) truth.push_back(laid.part);
    return truth;
}

int finenessOf(cv::Size size) { return size.area() <= kFineArea ? kFineness : 1; }

cv::Mat exposeFine(const cv::Mat& ideal, int fineness, Exposure exposure) {
    cv::Mat lit = ideal;
    if (exposure.blurSigma > 0) {
        const double sigma = exposure.blurSigma * fineness;
        cv::GaussianBlur(ideal, lit, cv::Size(), sigma, sigma, cv::BORDER_REPLICATE);
    }
    cv::Mat gathered;
    cv::resize(lit, gathered, ideal.size() / fineness, 0, 0, cv::INTER_AREA);
    exposure.blurSigma = 0;
    return expose(gathered, exposure);
}

}  // namespace

PartScene renderParts(const PartSceneSettings& settings) {
    // Each subject has its own stream: one setting changes nothing that another one rules.
    RandomSource places(settings.seed);
    RandomSource grounds(settings.seed ^ 0x9e3779b97f4a7c15U);
    RandomSource objects(settings.seed ^ 0xbf58476d1ce4e5b9U);
    RandomSource fibres(settings.seed ^ 0x94d049bb133111ebU);

    std::vector<Laid> parts = Placing(settings, places).all();
    const std::vector<Laid> others = Placing(settings, places).others(parts);
    std::vector<Laid> everything = parts;
    everything.insert(everything.end(), others.begin(), others.end());

    const int fineness = finenessOf(settings.size);
    cv::Mat ideal(settings.size * fineness, CV_32F, cv::Scalar(settings.ground));
    if (settings.texture > 0) roughen(ideal, settings.texture, fineness, grounds);
    if (settings.clutter > 0)
        paintClutter(ideal, settings.clutter, outlinesOf(everything), fineness, objects);
    for (const Laid& laid : everything)
        paint(ideal, laid.loops, settings.ground + settings.contrast, fineness);
    for (Laid& laid : parts) {
        const std::vector<Loop> covers = coversOf(laid, settings.hidden, settings.coverReach, objects);
        for (const Loop& cover : covers) paint(ideal, {cover}, coverLevel(objects), fineness);
        laid.part.hidden = hiddenShare(laid, covers, settings.size);
    }
    if (settings.threads > 0) paintThreads(ideal, settings.threads, fineness, fibres);

    PartScene scene;
    scene.parts = truthOf(parts);
    scene.others = truthOf(others);
    scene.image = exposeFine(ideal, fineness,
                             {settings.lightFall, settings.blurSigma, settings.noiseSigma, ~settings.seed});
    return scene;
}

PartPicture renderPartAlone(PartKind kind, double noiseSigma, double contrast, double blurSigma) {
    constexpr double kGround = 80;
    PartPicture picture;
    picture.pose = {80.3, 79.6, 12, 1};
    cv::Mat ideal(cv::Size(160, 160) * kFineness, CV_32F,
                  cv::Scalar(contrast < 0 ? kGround - contrast : kGround));
    paint(ideal, lay(kind, picture.pose, 0, 0).loops, contrast < 0 ? kGround : kGround + contrast, kFineness);
    picture.image = exposeFine(ideal, kFineness, {0, blurSigma, noiseSigma, 4711});
    return picture;
}

}  // namespace scenes
