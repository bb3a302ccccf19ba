#include "orxFunctions/matching/search/top_search.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <tuple>

#include "orxFunctions/matching/model/pyramid.h"
#include "orxFunctions/matching/search/kernels.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx::matching {
namespace {

constexpr int kRows = DirectionMaps::kBlockRows;
constexpr int kColumns = DirectionMaps::kBlockColumns;
// A rougher outline does on the top level.
constexpr std::size_t kMostTopPoints = 64;
// Points of the outline that may fall on one pixel.
constexpr int kPointsOnPixel = 2;
// Rows of places are given up after so many of them, two full sums of bytes, where they promise too little.
constexpr std::size_t kFirstPoints = 2 * search_kernels::kByteSum;

// The outline at one angle and scale.
struct Template {
    std::vector<cv::Point> shifts;
    std::vector<std::int32_t> offsets;
    cv::Rect reach;    // of the shifts
    cv::Rect allowed;  // where its middle may lie
};

struct Seed {
    int x = 0;
    int y = 0;
    int layer = 0;
    int sum = 0;
};

bool isBetter(const Seed& a, const Seed& b) {
    return std::tie(b.sum, a.layer, a.y, a.x) < std::tie(a.sum, b.layer, b.y, b.x);
}

// Where the middle of the outline may lie on the level, if the reference point lies in the region.
cv::Rect allowedMiddles(const SearchPlan& plan, const cv::Rect& region, double angle, double scale,
                        const ScaleBand& band, cv::Size level) {
    const cv::Point2d middle = plan.middle() * scale;
    const cv::Point2d offset(std::cos(angle) * middle.x - std::sin(angle) * middle.y,
                             std::sin(angle) * middle.x + std::cos(angle) * middle.y);
    // Steps of the angle move a middle that is far from the reference point.
    const double slack = 1 + std::ldexp(cv::norm(middle) * band.angles.step, -band.top);
    const cv::Point2d first = toLevel(cv::Point2d(region.tl()) + offset, band.top);
    const cv::Point2d last = toLevel(cv::Point2d(region.br() - cv::Point(1, 1)) + offset, band.top);
    const cv::Rect2d wide(first.x - slack, first.y - slack, last.x - first.x + 2 * slack,
                          last.y - first.y + 2 * slack);
    // Farther out less than half of the outline would be seen.
    const double outside = std::ldexp(plan.radius() * scale, -band.top) / 2;
    const cv::Rect2d near =
        wide & cv::Rect2d(-outside, -outside, level.width + 2 * outside, level.height + 2 * outside);
    if (near.empty()) return {};
    const cv::Point corner(cvFloor(near.x), cvFloor(near.y));
    return {corner, cv::Point(cvFloor(near.br().x) + 1, cvFloor(near.br().y) + 1)};
}

class LevelSearch {
  public:
    LevelSearch(const DirectionMaps& maps, const SearchPlan& plan, const ScaleBand& band,
                const cv::Rect& region, const Thresholds& thresholds)
        : maps_(maps), plan_(plan), band_(band), kernels_(search_kernels::chosen()) {
        for (const double scale : band.scales) {
            for (int i = 0; i < band.angles.count; ++i) addTemplate(band.angles.angle(i), scale, region);
        }
        const std::size_t points = templates_.front().shifts.size();
        perfect_ = static_cast<double>(points * search_kernels::kBestResponse);
        least_ = std::max(1, static_cast<int>(std::ceil(thresholds.leastScore * perfect_)));
        firstShare_ = thresholds.firstShare;
    }

    std::vector<LevelPose> best(std::size_t most) const {
        const int across = (area_.width + kColumns - 1) / kColumns;
        const int down = (area_.height + kRows - 1) / kRows;
        std::vector<std::vector<Seed>> found(static_cast<std::size_t>(across) *
                                             static_cast<std::size_t>(down));
        platform::parallelFor(static_cast<int>(found.size()), [&](int i) {
            searchBlock(area_.tl() + cv::Point(i % across * kColumns, i / across * kRows),
                        found[static_cast<std::size_t>(i)]);
        });
        std::vector<Seed> seeds;
        for (const std::vector<Seed>& part : found) seeds.insert(seeds.end(), part.begin(), part.end());
        const auto kept = static_cast<std::ptrdiff_t>(std::min(most, seeds.size()));
        std::partial_sort(seeds.begin(), seeds.begin() + kept, seeds.end(), isBetter);
        seeds.resize(static_cast<std::size_t>(kept));
        std::vector<LevelPose> poses;
        poses.reserve(seeds.size());
        for (const Seed& seed : seeds) poses.push_back(poseOf(seed));
        return poses;
    }

  private:
    // Sums of a block of places, layer by layer; `most` is the largest of a layer, 0 where none is kept.
    struct Block {
        std::vector<std::int16_t> sums;
        std::vector<int> most;
        std::vector<std::int32_t> offsets;
    };

    void addTemplate(double angle, double scale, const cv::Rect& region) {
        const SearchPoints& points = plan_.points(band_.top, scale);
        const double unit = std::ldexp(scale, -band_.top);
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        Template made;
        const std::size_t count = std::min(kMostTopPoints, points.size());
        for (std::size_t i = 0; i < count; ++i) {
            const cv::Point shift(cvRound(unit * (c * points.x[i] - s * points.y[i])),
                                  cvRound(unit * (s * points.x[i] + c * points.y[i])));
            const int bin = DirectionMaps::binOf(c * points.normalX[i] - s * points.normalY[i],
                                                 s * points.normalX[i] + c * points.normalY[i]);
            made.shifts.push_back(shift);
            made.offsets.push_back(
                static_cast<std::int32_t>(bin * maps_.mapStep() + shift.y * maps_.step() + shift.x));
        }
        made.reach = cv::boundingRect(made.shifts);
        made.allowed = allowedMiddles(plan_, region, angle, scale, band_, maps_.size());
        area_ |= made.allowed;
        reach_ |= made.reach;
        templates_.push_back(std::move(made));
    }

    // Whether there are enough edges for the outline to lie on.
    bool isWorthwhile(cv::Point corner) const {
        const cv::Size size(kColumns - 1, kRows - 1);
        const int edges = maps_.edgesIn(cv::Rect(corner + reach_.tl(), reach_.size() + size));
        return kPointsOnPixel * search_kernels::kBestResponse * edges >= least_;
    }

    void searchBlock(cv::Point corner, std::vector<Seed>& found) const {
        if (!isWorthwhile(corner)) return;
        Block block;
        block.sums.resize(templates_.size() * kRows * kColumns);
        block.most.resize(templates_.size());
        for (std::size_t layer = 0; layer < templates_.size(); ++layer) sumLayer(corner, layer, block);
        for (std::size_t layer = 0; layer < templates_.size(); ++layer) {
            if (block.most[layer] >= least_) addSummits(corner, static_cast<int>(layer), block, found);
        }
    }

    void sumLayer(cv::Point corner, std::size_t layer, Block& block) const {
        const Template& shape = templates_[layer];
        const cv::Rect places(corner, cv::Size(kColumns, kRows));
        if ((places & shape.allowed).empty()) return;
        const cv::Rect reached(places.tl() + shape.reach.tl(),
                               places.br() + shape.reach.br() - cv::Point(1, 1));
        const cv::Rect level(cv::Point(), maps_.size());
        const std::int32_t* offsets = shape.offsets.data();
        std::size_t count = shape.offsets.size();
        if ((reached & level) != reached) {
            block.offsets.clear();
            for (std::size_t i = 0; i < count; ++i) {
                const bool isReached = !((places + shape.shifts[i]) & level).empty();
                if (isReached) block.offsets.push_back(offsets[i]);
            }
            offsets = block.offsets.data();
            count = block.offsets.size();
        }
        if (static_cast<int>(count) * search_kernels::kBestResponse < least_) return;
        const std::size_t first = std::min(count, kFirstPoints);
        const double leastFirst =
            firstShare_ * least_ * static_cast<double>(first) / static_cast<double>(count);
        const search_kernels::ShiftedRows shifts = {offsets, count, first, static_cast<int>(leastFirst)};
        const int most =
            kernels_.sumRows(maps_.responses() + corner.y * maps_.step() + corner.x, maps_.step(), kRows,
                             shifts, block.sums.data() + layer * kRows * kColumns);
        if (most >= least_) block.most[layer] = most;
    }

    // The layer of a neighbouring angle or scale, -1 if there is none.
    int neighbour(int layer, int angles, int scales) const {
        const int count = band_.angles.count;
        int angle = layer % count + angles;
        const int scale = layer / count + scales;
        if (band_.angles.closed) angle = (angle + count) % count;
        if (angle < 0 || angle >= count || scale < 0 || scale >= static_cast<int>(band_.scales.size()))
            return -1;
        const int result = scale * count + angle;
        return result == layer ? -1 : result;
    }

    static int largestAround(const std::int16_t* sums, int row, int column) {
        int largest = 0;
        for (int r = std::max(0, row - 1); r <= std::min(kRows - 1, row + 1); ++r) {
            for (int c = std::max(0, column - 1); c <= std::min(kColumns - 1, column + 1); ++c) {
                largest = std::max<int>(largest, sums[r * kColumns + c]);
            }
        }
        return largest;
    }

    // Of equal neighbours the first counts.
    static bool isSummitOf(const std::int16_t* sums, int row, int column) {
        const std::int16_t sum = sums[row * kColumns + column];
        for (int r = std::max(0, row - 1); r <= std::min(kRows - 1, row + 1); ++r) {
            for (int c = std::max(0, column - 1); c <= std::min(kColumns - 1, column + 1); ++c) {
                const std::int16_t other = sums[r * kColumns + c];
                const bool isEarlier = r < row || (r == row && c < column);
                if (other > sum || (other == sum && isEarlier)) return false;
            }
        }
        return true;
    }

    void addSummits(cv::Point corner, int layer, const Block& block, std::vector<Seed>& found) const {
        const auto sumsOf = [&](int l) {
            return block.sums.data() + static_cast<std::ptrdiff_t>(l) * kRows * kColumns;
        };
        const cv::Rect allowed = templates_[static_cast<std::size_t>(layer)].allowed;
        const int beside[] = {neighbour(layer, -1, 0), neighbour(layer, 1, 0), neighbour(layer, 0, -1),
                              neighbour(layer, 0, 1)};
        const std::int16_t* sums = sumsOf(layer);
        for (int r = 0; r < kRows; ++r) {
            for (int c = 0; c < kColumns; ++c) {
                const int sum = sums[r * kColumns + c];
                const cv::Point place = corner + cv::Point(c, r);
                if (sum < least_ || !allowed.contains(place) || !isSummitOf(sums, r, c)) continue;
                bool isSummit = true;
                for (const int other : beside) {
                    if (other < 0 || block.most[static_cast<std::size_t>(other)] < sum) continue;
                    const int largest = largestAround(sumsOf(other), r, c);
                    if (largest > sum || (largest == sum && other < layer)) isSummit = false;
                }
                if (isSummit) found.push_back({place.x, place.y, layer, sum});
            }
        }
    }

    LevelPose poseOf(const Seed& seed) const {
        LevelPose pose;
        pose.x = seed.x;
        pose.y = seed.y;
        pose.angle = band_.angles.angle(seed.layer % band_.angles.count);
        pose.scale = band_.scales[static_cast<std::size_t>(seed.layer / band_.angles.count)];
        pose.score = seed.sum / perfect_;
        return pose;
    }

    const DirectionMaps& maps_;
    const SearchPlan& plan_;
    const ScaleBand& band_;
    const search_kernels::Kernels& kernels_;
    std::vector<Template> templates_;  // scale by scale, angle by angle
    cv::Rect area_;
    double perfect_ = 1.0;
    int least_ = 1;
    double firstShare_ = 0.0;
    cv::Rect reach_;  // of all templates
};

}  // namespace

std::vector<LevelPose> searchLevel(const DirectionMaps& maps, const SearchPlan& plan, const ScaleBand& band,
                                   const cv::Rect& region, const Thresholds& thresholds, std::size_t most) {
    return LevelSearch(maps, plan, band, region, thresholds).best(most);
}

}  // namespace orx::matching
