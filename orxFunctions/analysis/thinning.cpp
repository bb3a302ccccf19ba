#include "orxFunctions/analysis/thinning.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orxFunctions/foundation/refusal_internal.h"

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

// The image in a frame of background, and for each of the two passes the pixels that await their test.
class Thinner {
  public:
    Thinner(const cv::Mat& src, const Tables& tables)
        : tables_(tables),
          size_(src.size()),
          stride_(size(src.cols) + 2),
          pixels_(stride_ * (size(src.rows) + 2)) {
        for (int y = 0; y < src.rows; ++y) {
            const uchar* from = src.ptr(y);
            uchar* to = rowOf(y);
            for (int x = 0; x < src.cols; ++x) to[x] = from[x] != 0 ? kObject : 0;
        }
        // Every pixel that either method removes has background above, below, left or right of it.
        for (int y = 0; y < src.rows; ++y) {
            uchar* row = rowOf(y);
            for (int x = 0; x < src.cols; ++x) {
                const bool surrounded = (row[x] & row[x - 1] & row[x + 1] & *(row + x - stride_) &
                                         *(row + x + stride_) & kObject) != 0;
                if (row[x] != 0 && !surrounded) enqueue(static_cast<std::size_t>(row + x - pixels_.data()));
            }
        }
    }

    void run() {
        while (!waiting_[0].empty() || !waiting_[1].empty()) {
            pass(0);
            pass(1);
        }
    }

    cv::Mat result() {
        cv::Mat lines(size_, CV_8UC1);
        for (int y = 0; y < size_.height; ++y) {
            const uchar* from = rowOf(y);
            uchar* to = lines.ptr(y);
            for (int x = 0; x < size_.width; ++x) to[x] = from[x] != 0 ? 255 : 0;
        }
        return lines;
    }

  private:
    // A pixel is 0, or kObject with a flag for each queue that it stands in.
    static constexpr uchar kObject = 1;
    static constexpr std::array<uchar, 2> kWaits{2, 4};
    static constexpr uchar kWaitsForBoth = 7;

    static std::size_t size(int value) { return static_cast<std::size_t>(value); }
    uchar* rowOf(int y) { return pixels_.data() + (size(y) + 1) * stride_ + 1; }

    void enqueue(std::size_t pixel) {
        for (std::size_t which = 0; which < 2; ++which) {
            if ((pixels_[pixel] & kWaits[which]) != 0) continue;
            pixels_[pixel] |= kWaits[which];
            waiting_[which].push_back(pixel);
        }
    }

    unsigned around(std::size_t pixel) const {
        const uchar* middle = pixels_.data() + pixel;
        const uchar* upper = middle - stride_;
        const uchar* lower = middle + stride_;
        return (upper[0] & 1U) | (upper[1] & 1U) << 1 | (middle[1] & 1U) << 2 | (lower[1] & 1U) << 3 |
               (lower[0] & 1U) << 4 | (lower[-1] & 1U) << 5 | (middle[-1] & 1U) << 6 | (upper[-1] & 1U) << 7;
    }

    void enqueueNeighbours(std::size_t pixel) {
        for (const std::size_t row : {pixel - stride_, pixel, pixel + stride_}) {
            for (const std::size_t next : {row - 1, row, row + 1}) {
                if (pixels_[next] != 0 && pixels_[next] != kWaitsForBoth) enqueue(next);
            }
        }
    }

    // Removes at once all the pixels that the surroundings before the pass condemn. A pixel that is left and
    // whose surroundings stay as they are would get the same answer again, so it need not be asked.
    void pass(std::size_t which) {
        removed_.clear();
        for (const std::size_t pixel : waiting_[which]) {
            pixels_[pixel] = static_cast<uchar>(pixels_[pixel] & ~kWaits[which]);
            if (pixels_[pixel] != 0 && tables_[which][around(pixel)]) removed_.push_back(pixel);
        }
        waiting_[which].clear();
        for (const std::size_t pixel : removed_) pixels_[pixel] = 0;
        for (const std::size_t pixel : removed_) enqueueNeighbours(pixel);
    }

    const Tables& tables_;
    cv::Size size_;
    std::size_t stride_;
    std::vector<uchar> pixels_;
    std::array<std::vector<std::size_t>, 2> waiting_;
    std::vector<std::size_t> removed_;
};

}  // namespace

bool thinning(const cv::Mat& src, cv::Mat& dst, TThinningMethod method) {
    if (!takesBytes(src, "thinning")) return false;
    if (method != tnZhangSuen && method != tnGuoHall)
        return refuse(rcOption, "thinning", "there is no method %d", static_cast<int>(method));
    Thinner thinner(src, method == tnGuoHall ? kGuoHall : kZhangSuen);
    thinner.run();
    dst = thinner.result();
    return true;
}

}  // namespace orx
