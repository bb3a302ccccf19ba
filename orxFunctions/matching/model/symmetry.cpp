#include "orxFunctions/matching/model/symmetry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "orxFunctions/foundation/angles_internal.h"

namespace orx::matching {
namespace {

constexpr int kHighestOrder = 64;
constexpr std::array<int, 18> kPrimes = {2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37, 41, 43, 47, 53, 59, 61};
// What looks the same after 1/89 and 1/97 of a turn has teeth finer than anything that counts here, or none.
constexpr std::array<int, 2> kOrdersOfARing = {89, 97};

// The same: a feature of this length differs, or so much in all.
constexpr double kFeature = 6;
constexpr double kSameShare = 0.98;
constexpr double kNearShare = 0.85;
// The centre is looked for where at least this share of the outline lies near itself.
constexpr double kLooseShare = 0.6;
constexpr std::size_t kSamples = 64;
// Where so little of the samples match, the rest is not looked at.
constexpr double kHopelessShare = 0.75;
// A polygon of many corners is not a ring: rms of the distances across, pixels, beside the noise.
constexpr double kSameDistance = 0.2;

struct Turn {
    bool same = false;
    double share = 0;
    cv::Point2d centre;
};

std::complex<double> complexOf(cv::Point2d p) { return {p.x, p.y}; }

// Steps of 1/order of a turn that are near half a turn, where the centre is known best, and reach every
// multiple.
int stepsFor(int order) {
    int steps = order / 2;
    while (steps > 1 && std::gcd(steps, order) != 1) --steps;
    return std::max(steps, 1);
}

class TurnTest {
  public:
    explicit TurnTest(const MatchedOutline& outline)
        : outline_(outline), stride_(std::max<std::size_t>(1, outline.points().size() / kSamples)) {
        for (std::size_t i = 0; i < outline.points().size(); i += stride_) sampled_ += outline.lengthAt(i);
    }

    // Where only the same is asked for, the share of what is not may be missing.
    Turn test(int order, bool onlySame = false) const {
        const double angle = 2 * kPi * stepsFor(order) / order;
        Motion motion;
        motion.factor = std::polar(1.0, angle);
        const std::complex<double> middle = complexOf(outline_.centroid());
        motion.shift = middle - motion.factor * middle;
        Turn turn;
        if (!settle(motion)) return turn;
        const std::complex<double> centre = motion.shift / (1.0 - motion.factor);
        turn.centre = {centre.real(), centre.imag()};
        const double noise = outline_.noise();
        MatchTolerance tight;
        tight.across = std::max(0.5, 5 * noise);
        const SelfMatch match =
            onlySame ? outline_.match(motion, tight, kFeature) : outline_.match(motion, tight);
        turn.share = match.share;
        turn.same = match.share >= kSameShare && match.longestGap < kFeature &&
                    match.meanSquare < kSameDistance * kSameDistance + 3 * noise * noise;
        return turn;
    }

  private:
    // Shifts the turned outline onto itself. False where too little of it lies near itself.
    bool settle(Motion& motion) const {
        const double wide = 3 * outline_.cell();
        const std::array<double, 3> reaches = {wide, wide / 3, 0.6};
        for (const double reach : reaches) {
            const MatchTolerance tolerance{std::max(reach, 0.6), wide, 0.7};
            const double least = reach == reaches.back() ? kHopelessShare : kLooseShare;
            double missing = 0;
            // Held back a little where nothing tells the shift.
            cv::Matx22d squares(1e-3, 0, 0, 1e-3);
            cv::Vec2d products(0, 0);
            for (std::size_t i = 0; i < outline_.points().size(); i += stride_) {
                const double length = outline_.lengthAt(i);
                const int found = outline_.partner(i, motion, tolerance);
                if (found < 0) {
                    missing += length;
                    if (missing > (1 - least) * sampled_) return false;
                    continue;
                }
                const OutlinePoint& other = outline_.points()[static_cast<std::size_t>(found)];
                const cv::Point2d d = motion.apply(outline_.points()[i].position) - other.position;
                const cv::Vec2d n(other.normal.x, other.normal.y);
                squares += length * (n * n.t());
                products += length * d.dot(other.normal) * n;
            }
            const cv::Vec2d step = squares.inv() * products;
            motion.shift -= std::complex<double>(step[0], step[1]);
        }
        return true;
    }

    const MatchedOutline& outline_;
    std::size_t stride_;
    double sampled_ = 0;  // length that the samples stand for
};

struct Found {
    int order = 1;
    double share = 1;  // the least of the turns that led here
    cv::Point2d centre;
};

bool isAccepted(const Turn& turn, bool strict) { return turn.same || (!strict && turn.share >= kNearShare); }

Found ringOf(const std::array<Turn, kOrdersOfARing.size()>& turns, bool strict) {
    Found found;
    for (const Turn& turn : turns) {
        if (!isAccepted(turn, strict)) return {};
        found = {0, std::min(found.share, turn.share), turn.centre};
    }
    return found;
}

// What has an order has its divisors, too: prime by prime, then their products.
Found orderOf(const TurnTest& test, const std::array<Turn, kPrimes.size()>& primes, bool strict) {
    Found found;
    for (std::size_t i = 0; i < kPrimes.size(); ++i) {
        if (!isAccepted(primes[i], strict)) continue;
        for (int order = found.order * kPrimes[i]; order <= kHighestOrder; order *= kPrimes[i]) {
            const Turn turn = order == kPrimes[i] ? primes[i] : test.test(order, strict);
            if (!isAccepted(turn, strict)) break;
            found = {order, std::min(found.share, turn.share), turn.centre};
        }
    }
    return found;
}

}  // namespace

Symmetry findSymmetry(const MatchedOutline& outline) {
    Symmetry symmetry;
    symmetry.centre = outline.centroid();
    const TurnTest test(outline);
    std::array<Turn, kOrdersOfARing.size()> rings;
    std::transform(kOrdersOfARing.begin(), kOrdersOfARing.end(), rings.begin(),
                   [&test](int order) { return test.test(order); });
    const Found ring = ringOf(rings, true);
    if (ring.order == 0) {
        symmetry.order = 0;
        symmetry.centre = ring.centre;
        return symmetry;
    }
    Found near = ringOf(rings, false);
    const bool isNearlyARing = near.order == 0;
    std::array<Turn, kPrimes.size()> primes;
    std::transform(kPrimes.begin(), kPrimes.end(), primes.begin(),
                   [&](int order) { return test.test(order, isNearlyARing); });
    const Found same = orderOf(test, primes, true);
    symmetry.order = same.order;
    if (!isNearlyARing) near = orderOf(test, primes, false);
    if (same.order > 1) {
        symmetry.centre = same.centre;
    } else if (near.order != 1) {
        symmetry.centre = near.centre;
    }
    if (near.order != same.order && near.order % same.order == 0) {
        symmetry.nearOrder = near.order;
        symmetry.nearShare = near.share;
    }
    return symmetry;
}

}  // namespace orx::matching
