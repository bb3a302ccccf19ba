#include "orxFunctions/analysis/pixel_runs_internal.h"

#include <numeric>
#include <opencv2/core/hal/intrin.hpp>

#include "orxFunctions/platform/simd/narrow_vectors.h"

namespace orx {
namespace {

constexpr int kWord = 64;

// Bit i is set where pixel i is not 0.
std::uint64_t objectBits(const uchar* pixels, int count) {
    std::uint64_t bits = 0;
#if CV_SIMD128
    if (count == kWord) {
        for (int i = 0; i < kWord; i += 16) {
            const auto empty =
                static_cast<std::uint32_t>(cv::v_signmask(cv::v_load(pixels + i) == cv::v_setzero_u8()));
            bits |= static_cast<std::uint64_t>(~empty & 0xffffU) << i;
        }
        return bits;
    }
#endif
    for (int i = 0; i < count; ++i) bits |= static_cast<std::uint64_t>(pixels[i] != 0 ? 1 : 0) << i;
    return bits;
}

int lowestBit(std::uint64_t bits) {
    const auto low = static_cast<std::uint32_t>(bits);
    return static_cast<int>(low != 0 ? ORX_SIMD::lowestBit(low)
                                     : 32 + ORX_SIMD::lowestBit(static_cast<std::uint32_t>(bits >> 32)));
}

// Appends the runs of a row, without their pieces.
void appendRuns(const uchar* row, int cols, RunsOf kind, std::vector<PixelRun>& runs) {
    const std::uint64_t flip = kind == RunsOf::background ? ~std::uint64_t{0} : 0;
    std::uint64_t last = 0;  // whether the pixel before belongs to a run
    int begin = 0;
    for (std::int64_t word = 0; word < cols; word += kWord) {  // which may pass the largest int
        const int x = static_cast<int>(word);
        const int count = std::min(kWord, cols - x);
        const std::uint64_t here = count == kWord ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
        const std::uint64_t bits = (objectBits(row + x, count) ^ flip) & here;
        for (std::uint64_t changes = bits ^ (bits << 1 | last); changes != 0; changes &= changes - 1) {
            const int at = x + lowestBit(changes);
            if ((bits >> (at - x) & 1) != 0) {
                begin = at;
            } else {
                runs.push_back({begin, at, 0});
            }
        }
        last = bits >> (kWord - 1);
    }
    if (last != 0) runs.push_back({begin, cols, 0});
}

// Sets of numbers that are joined step by step; the smallest of a set stands for it.
std::uint32_t rootOf(std::vector<std::uint32_t>& sets, std::uint32_t number) {
    while (sets[number] != number) number = sets[number] = sets[sets[number]];
    return number;
}

void joinSets(std::vector<std::uint32_t>& sets, std::uint32_t a, std::uint32_t b) {
    a = rootOf(sets, a);
    b = rootOf(sets, b);
    sets[std::max(a, b)] = std::min(a, b);
}

}  // namespace

RowRuns PixelRuns::Stripe::row(int y) const {
    const auto i = static_cast<std::size_t>(y - rows.start);
    return {runs.data() + starts[i], runs.data() + starts[i + 1]};
}

RowRuns PixelRuns::row(int y) const { return found_[static_cast<std::size_t>(stripes_.stripeOf(y))].row(y); }

PixelRuns::PixelRuns(const cv::Mat& binary, RunsOf kind, int connectivity)
    : rows_(binary.rows),
      fewestColumns_(connectivity == 8 ? 0 : 1),
      stripes_(binary.size(), platform::kStripe),
      found_(static_cast<std::size_t>(stripes_.count())) {
    platform::forStripes(stripes_, [&](int i, const cv::Range& rows) {
        Stripe& stripe = found_[static_cast<std::size_t>(i)];
        stripe.rows = rows;
        findStripe(binary, kind, stripe);
    });
    joinStripes();
    platform::forStripes(stripes_, [&](int i, const cv::Range&) {
        Stripe& stripe = found_[static_cast<std::size_t>(i)];
        for (PixelRun& run : stripe.runs) run.piece = stripe.firstPiece + stripe.pieces[run.piece];
    });
}

// Runs first get the number of one that they touch in the row above, or a new one.
void PixelRuns::findStripe(const cv::Mat& binary, RunsOf kind, Stripe& stripe) const {
    constexpr std::uint32_t kNone = ~std::uint32_t{0};
    std::vector<std::uint32_t>& sets = stripe.pieces;
    stripe.starts.push_back(0);
    for (int y = stripe.rows.start; y < stripe.rows.end; ++y) {
        const std::size_t start = stripe.runs.size();
        appendRuns(binary.ptr(y), binary.cols, kind, stripe.runs);
        stripe.starts.push_back(stripe.runs.size());
        for (std::size_t i = start; i < stripe.runs.size(); ++i) stripe.runs[i].piece = kNone;
        PixelRun* const runs = stripe.runs.data();
        const RowRuns above = y > stripe.rows.start ? stripe.row(y - 1) : RowRuns{runs, runs};
        forTouchingRuns(above, stripe.row(y), fewestColumns_,
                        [&](const PixelRun& upper, const PixelRun& lower, int) {
                            std::uint32_t& piece = runs[&lower - runs].piece;
                            if (piece == kNone) {
                                piece = upper.piece;
                            } else {
                                joinSets(sets, piece, upper.piece);
                            }
                        });
        for (std::size_t i = start; i < stripe.runs.size(); ++i) {
            if (runs[i].piece != kNone) continue;
            runs[i].piece = static_cast<std::uint32_t>(sets.size());
            sets.push_back(runs[i].piece);
        }
    }
    // From sets to pieces, numbered without gaps: each root comes before the others of its set.
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < sets.size(); ++i) sets[i] = sets[i] == i ? count++ : sets[sets[i]];
    stripe.firstPiece = count;
}

void PixelRuns::joinStripes() {
    std::uint32_t count = 0;
    for (Stripe& stripe : found_) {
        const std::uint32_t own = stripe.firstPiece;
        stripe.firstPiece = count;
        count += own;
    }
    joined_.resize(count);
    std::iota(joined_.begin(), joined_.end(), std::uint32_t{0});
    for (std::size_t i = 1; i < found_.size(); ++i) {
        const Stripe& above = found_[i - 1];
        const Stripe& below = found_[i];
        forTouchingRuns(above.row(above.rows.end - 1), below.row(below.rows.start), fewestColumns_,
                        [&](const PixelRun& upper, const PixelRun& lower, int) {
                            joinSets(joined_, above.firstPiece + above.pieces[upper.piece],
                                     below.firstPiece + below.pieces[lower.piece]);
                        });
    }
    for (std::uint32_t& piece : joined_) piece = joined_[piece];
}

}  // namespace orx
