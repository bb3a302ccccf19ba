#include "orxFunctions/analysis/thinning.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/parallel_internal.h"

namespace orx {
namespace {

// Bits of the surroundings, clockwise from the upper neighbour: the papers' P2 to P9.
enum Neighbour : unsigned { n2 = 1, n3 = 2, n4 = 4, n5 = 8, n6 = 16, n7 = 32, n8 = 64, n9 = 128 };

constexpr bool has(unsigned around, unsigned bit) { return (around & bit) != 0; }

constexpr int countOf(unsigned around) {
    int count = 0;
    for (unsigned bit = n2; bit <= n9; bit *= 2) count += has(around, bit) ? 1 : 0;
    return count;
}

// How often the ring goes from 0 to 1.
constexpr int risesOf(unsigned around) {
    const unsigned turned = (around >> 1 | around << 7) & 0xff;
    return countOf(~around & turned & 0xff);
}

constexpr bool removedByZhangSuen(unsigned p, bool firstPass) {
    if (countOf(p) < 2 || countOf(p) > 6 || risesOf(p) != 1) return false;
    const unsigned a = firstPass ? n2 | n4 | n6 : n2 | n4 | n8;
    const unsigned b = firstPass ? n4 | n6 | n8 : n2 | n6 | n8;
    return (p & a) != a && (p & b) != b;
}

constexpr int pairsOf(unsigned p, const std::array<unsigned, 4>& pairs) {
    int count = 0;
    for (const unsigned pair : pairs) count += (p & pair) != 0 ? 1 : 0;
    return count;
}

constexpr bool removedByGuoHall(unsigned p, bool firstPass) {
    const int crossings = (!has(p, n2) && has(p, n3 | n4) ? 1 : 0) +
                          (!has(p, n4) && has(p, n5 | n6) ? 1 : 0) +
                          (!has(p, n6) && has(p, n7 | n8) ? 1 : 0) + (!has(p, n8) && has(p, n9 | n2) ? 1 : 0);
    const int one = pairsOf(p, {n9 | n2, n3 | n4, n5 | n6, n7 | n8});
    const int other = pairsOf(p, {n2 | n3, n4 | n5, n6 | n7, n8 | n9});
    const int least = one < other ? one : other;
    if (crossings != 1 || least < 2 || least > 3) return false;
    return firstPass ? !((has(p, n2 | n3) || !has(p, n5)) && has(p, n4))
                     : !((has(p, n6 | n7) || !has(p, n9)) && has(p, n8));
}

using Table = std::array<bool, 256>;

constexpr Table tableOf(bool (*removed)(unsigned, bool), bool firstPass) {
    Table table{};
    for (unsigned p = 0; p < table.size(); ++p) table[p] = removed(p, firstPass);
    return table;
}

using Tables = std::array<Table, 2>;
constexpr Tables kZhangSuen{tableOf(removedByZhangSuen, true), tableOf(removedByZhangSuen, false)};
constexpr Tables kGuoHall{tableOf(removedByGuoHall, true), tableOf(removedByGuoHall, false)};

// A pixel of the image in its frame is 0, or kObject with a flag for each pass that it awaits.
constexpr uchar kObject = 1;
constexpr std::array<uchar, 2> kWaits{2, 4};
constexpr uchar kWaitsForBoth = 7;

std::size_t sizeOf(int value) { return static_cast<std::size_t>(value); }

// The image in a frame of background one pixel wide.
class FramedPixels {
  public:
    explicit FramedPixels(cv::Size size) : stride_(sizeOf(size.width) + 2), rows_(size.height) {
        pixels_.create(size.height + 2, size.width + 2, CV_8UC1);
    }

    // Copies rows, and makes their frame.
    void fill(const cv::Mat& src, const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            const uchar* from = src.ptr(y);
            uchar* to = row(y);
            for (int x = 0; x < src.cols; ++x) to[x] = from[x] != 0 ? kObject : 0;
            to[-1] = 0;
            to[src.cols] = 0;
        }
        if (rows.start == 0) std::fill_n(row(-1) - 1, stride_, uchar{0});
        if (rows.end == rows_) std::fill_n(row(rows_) - 1, stride_, uchar{0});
    }

    uchar* row(int y) { return pixels_.ptr(y + 1) + 1; }
    // Places of pixels count from the frame's first.
    std::size_t startOf(int y) const { return (sizeOf(y) + 1) * stride_; }
    std::size_t stride() const { return stride_; }
    uchar* data() { return pixels_.data; }

  private:
    std::size_t stride_;
    int rows_;
    cv::Mat pixels_;
};

unsigned around(const uchar* middle, std::size_t stride) {
    const uchar* upper = middle - stride;
    const uchar* lower = middle + stride;
    return (upper[0] & 1U) | (upper[1] & 1U) << 1 | (middle[1] & 1U) << 2 | (lower[1] & 1U) << 3 |
           (lower[0] & 1U) << 4 | (lower[-1] & 1U) << 5 | (middle[-1] & 1U) << 6 | (upper[-1] & 1U) << 7;
}

using Places = std::vector<std::size_t>;

// Rows of the image with the pixels in them that await a pass. Its steps are for all stripes at once, one
// after the other: `find` and `mark`, and for each pass `test` and `remove`. `find` and `test` change no
// pixel; the others look at and change none but the stripe's own.
class ThinnedStripe {
  public:
    ThinnedStripe(FramedPixels& pixels, const cv::Range& rows)
        : pixels_(pixels),
          rows_(rows),
          secondRow_(pixels.startOf(rows.start + 1)),
          lastRow_(pixels.startOf(rows.end - 1)) {}

    // Every pixel that either method removes has background above, below, left or right of it.
    void find() {
        const std::size_t stride = pixels_.stride();
        const std::size_t cols = stride - 2;
        std::vector<uchar> outer(cols + sizeof(std::uint64_t));  // and some that stay 0
        for (int y = rows_.start; y < rows_.end; ++y) {
            const uchar* row = pixels_.row(y);
            const uchar* before = row - 1;
            const uchar* after = row + 1;
            const uchar* above = row - stride;
            const uchar* below = row + stride;
            for (std::size_t x = 0; x < cols; ++x)
                outer[x] = row[x] & static_cast<uchar>(~(before[x] & after[x] & above[x] & below[x]));
            appendPlaces(outer, pixels_.startOf(y) + 1, waiting_[0]);
        }
    }

    // They await both passes.
    void mark() {
        waiting_[1] = waiting_[0];
        for (const std::size_t place : waiting_[0]) pixels_.data()[place] = kWaitsForBoth;
    }

    std::size_t waiting() const { return waiting_[0].size() + waiting_[1].size(); }

    // Which pixels their surroundings before the pass condemn.
    void test(std::size_t pass, const Table& table) {
        const Places& waiting = waiting_[pass];
        removed_.resize(waiting.size());
        const uchar* const data = pixels_.data();
        const std::size_t stride = pixels_.stride();
        std::size_t count = 0;
        // No branches: which pixels go can't be foretold.
        for (const std::size_t place : waiting) {
            removed_[count] = place;
            count += (data[place] & (table[around(data + place, stride)] ? kObject : 0U)) != 0 ? 1 : 0;
        }
        removed_.resize(count);
        fromFirstRow_.clear();
        fromLastRow_.clear();
        for (const std::size_t place : removed_) {
            if (place < secondRow_) fromFirstRow_.push_back(place);
            if (place >= lastRow_) fromLastRow_.push_back(place);
        }
    }

    // Removes them. A pixel that is left and whose surroundings stay as they are would get the same answer
    // again, so it need not be asked.
    void remove(std::size_t pass, const ThinnedStripe* above, const ThinnedStripe* below) {
        uchar* const data = pixels_.data();
        for (const std::size_t place : waiting_[pass])
            data[place] = static_cast<uchar>(data[place] & ~kWaits[pass]);
        waiting_[pass].clear();
        for (const std::size_t place : removed_) data[place] = 0;
        const std::size_t stride = pixels_.stride();
        for (const std::size_t place : removed_) {
            if (place >= secondRow_) enqueueThree(data, place - stride);
            enqueueThree(data, place);
            if (place < lastRow_) enqueueThree(data, place + stride);
        }
        if (above != nullptr) {
            for (const std::size_t place : above->fromLastRow_) enqueueThree(data, place + stride);
        }
        if (below != nullptr) {
            for (const std::size_t place : below->fromFirstRow_) enqueueThree(data, place - stride);
        }
    }

  private:
    void enqueue(uchar* data, std::size_t place) {
        const uchar before = data[place];
        data[place] = kWaitsForBoth;
        if ((before & kWaits[0]) == 0) waiting_[0].push_back(place);
        if ((before & kWaits[1]) == 0) waiting_[1].push_back(place);
    }

    // A pixel and those left and right of it, as far as they are left.
    void enqueueThree(uchar* data, std::size_t place) {
        for (const std::size_t next : {place - 1, place, place + 1}) {
            if (data[next] != 0 && data[next] != kWaitsForBoth) enqueue(data, next);
        }
    }

    // The marked ones of a row, which begins at a place; eight at a time are looked for.
    static void appendPlaces(const std::vector<uchar>& marks, std::size_t start, Places& places) {
        for (std::size_t x = 0; x + sizeof(std::uint64_t) <= marks.size(); x += sizeof(std::uint64_t)) {
            std::uint64_t eight = 0;
            std::memcpy(&eight, marks.data() + x, sizeof eight);
            if (eight == 0) continue;
            for (std::size_t i = x; i < x + sizeof eight; ++i) {
                if (marks[i] != 0) places.push_back(start + i);
            }
        }
    }

    FramedPixels& pixels_;
    cv::Range rows_;
    std::size_t secondRow_;
    std::size_t lastRow_;
    std::array<Places, 2> waiting_;
    Places removed_;
    Places fromFirstRow_;
    Places fromLastRow_;
};

class Thinner {
  public:
    explicit Thinner(const cv::Mat& src) : pixels_(src.size()), rows_(src.size(), platform::kStripe) {
        platform::forStripes(rows_, [&](int, const cv::Range& rows) { pixels_.fill(src, rows); });
        for (int i = 0; i < rows_.count(); ++i) stripes_.emplace_back(pixels_, rows_.rows(i));
    }

    void run(const Tables& tables) {
        const std::size_t last = stripes_.size() - 1;
        platform::forStripes(rows_, [&](int i, const cv::Range&) { stripes_[sizeOf(i)].find(); });
        platform::forStripes(rows_, [&](int i, const cv::Range&) { stripes_[sizeOf(i)].mark(); });
        for (std::size_t waiting = waitingPixels(); waiting > 0; waiting = waitingPixels()) {
            for (std::size_t pass = 0; pass < tables.size(); ++pass) {
                forEach(waiting, [&](std::size_t i) { stripes_[i].test(pass, tables[pass]); });
                forEach(waiting, [&](std::size_t i) {
                    stripes_[i].remove(pass, i > 0 ? &stripes_[i - 1] : nullptr,
                                       i < last ? &stripes_[i + 1] : nullptr);
                });
            }
        }
    }

    cv::Mat result(cv::Size size) {
        cv::Mat lines(size, CV_8UC1);
        platform::forStripes(rows_, [&](int, const cv::Range& rows) {
            for (int y = rows.start; y < rows.end; ++y) {
                const uchar* from = pixels_.row(y);
                uchar* to = lines.ptr(y);
                for (int x = 0; x < size.width; ++x) to[x] = from[x] != 0 ? 255 : 0;
            }
        });
        return lines;
    }

  private:
    std::size_t waitingPixels() const {
        std::size_t count = 0;
        for (const ThinnedStripe& stripe : stripes_) count += stripe.waiting();
        return count;
    }

    // Where few pixels wait, as in the last passes, they are no work for several threads.
    template <class Step>
    void forEach(std::size_t waiting, const Step& step) {
        constexpr std::size_t kFew = 1 << 14;
        if (waiting < kFew) {
            for (std::size_t i = 0; i < stripes_.size(); ++i) step(i);
        } else {
            platform::parallelFor(rows_.count(), [&](int i) { step(sizeOf(i)); });
        }
    }

    FramedPixels pixels_;
    platform::RowStripes rows_;
    std::vector<ThinnedStripe> stripes_;
};

}  // namespace

bool thinning(const cv::Mat& src, cv::Mat& dst, TThinningMethod method) {
    if (!takesBytes(src, "thinning")) return false;
    if (method != tnZhangSuen && method != tnGuoHall)
        return refuse(rcOption, "thinning", "there is no method %d", static_cast<int>(method));
    Thinner thinner(src);
    thinner.run(method == tnGuoHall ? kGuoHall : kZhangSuen);
    dst = thinner.result(src.size());
    return true;
}

}  // namespace orx
