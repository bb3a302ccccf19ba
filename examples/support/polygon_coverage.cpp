#include "support/polygon_coverage.h"

#include <algorithm>
#include <cmath>

namespace scenes {
namespace {

// Sums up, for each pixel of a window, the area between the loops' edges and the right end of its row: an
// edge changes the pixels that it crosses by their share, and all to the right of them by its height. What
// lies left of the window counts as if at its left border; what is above, below or to the right, not at all.
class Accumulator {
  public:
    explicit Accumulator(cv::Rect window)
        : window_(window), changes_(window.height, window.width + 1, CV_64F, cv::Scalar(0)) {}

    // Corners of the pixel (0, 0) are (0, 0) and (1, 1) here.
    void add(cv::Point2d from, cv::Point2d to) {
        const double sign = to.y > from.y ? 1 : -1;
        if (sign < 0) std::swap(from, to);
        if (from.y == to.y) return;
        const double top = std::max(from.y, static_cast<double>(window_.y));
        const double bottom = std::min(to.y, static_cast<double>(window_.y + window_.height));
        const double slope = (to.x - from.x) / (to.y - from.y);
        double y = top;
        while (y < bottom) {
            const int row = static_cast<int>(std::floor(y));
            const double next = std::min(row + 1.0, bottom);
            addInRow(row - window_.y, from.x + (y - from.y) * slope, from.x + (next - from.y) * slope,
                     sign * (next - y));
            y = next;
        }
    }

    // The share of each pixel that is covered.
    void drawTowards(cv::Mat& image, double level) const {
        for (int row = 0; row < window_.height; ++row) {
            const auto* changes = changes_.ptr<double>(row);
            auto* pixels = image.ptr<float>(row + window_.y) + window_.x;
            double sum = 0;
            for (int column = 0; column < window_.width; ++column) {
                sum += changes[column];
                const double covered = std::min(1.0, std::abs(sum));
                const auto before = static_cast<double>(pixels[column]);
                pixels[column] = static_cast<float>(before + covered * (level - before));
            }
        }
    }

  private:
    // A piece of an edge within one row, `height` high, cut at the borders of the columns.
    void addInRow(int row, double x0, double x1, double height) {
        if (x0 > x1) std::swap(x0, x1);
        const double width = x1 - x0;
        const double left = window_.x;
        const double right = window_.x + window_.width;
        double x = x0;
        do {
            double next = x < left ? left : std::floor(x) + 1;
            if (x >= right || next > x1) next = x1;
            const double share = width > 0 ? (next - x) / width : 1;
            put(row, 0.5 * (x + next), height * share);
            x = next;
        } while (x < x1);
    }

    void put(int row, double middle, double height) {
        const double column = std::max(0.0, std::floor(middle - window_.x));
        if (column >= window_.width) return;
        const double inside = std::clamp(middle - window_.x - column, 0.0, 1.0);
        auto* changes = changes_.ptr<double>(row) + static_cast<int>(column);
        changes[0] += height * (1 - inside);
        changes[1] += height * inside;
    }

    cv::Rect window_;
    cv::Mat changes_;
};

cv::Rect windowOf(const Loop& outline, cv::Size size) {
    cv::Point2d low = outline.front();
    cv::Point2d high = outline.front();
    for (const cv::Point2d& p : outline) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    const int left = std::clamp(static_cast<int>(std::floor(low.x)), 0, size.width);
    const int top = std::clamp(static_cast<int>(std::floor(low.y)), 0, size.height);
    const int right = std::clamp(static_cast<int>(std::ceil(high.x)) + 1, left, size.width);
    const int bottom = std::clamp(static_cast<int>(std::ceil(high.y)) + 1, top, size.height);
    return {left, top, right - left, bottom - top};
}

// From pixels' centres at whole numbers to finer pixels' corners at whole numbers.
Loop cornered(Loop loop, int fineness) {
    for (cv::Point2d& p : loop) p = (p + cv::Point2d(0.5, 0.5)) * fineness;
    return loop;
}

}  // namespace

void paint(cv::Mat& image, const std::vector<Loop>& loops, double level, int fineness) {
    if (loops.empty() || loops.front().size() < 3) return;
    const cv::Rect window = windowOf(cornered(loops.front(), fineness), image.size());
    if (window.empty()) return;
    Accumulator accumulator(window);
    for (const Loop& loop : loops) {
        const Loop corners = cornered(loop, fineness);
        for (std::size_t i = 0; i < corners.size(); ++i)
            accumulator.add(corners[i], corners[(i + 1) % corners.size()]);
    }
    accumulator.drawTowards(image, level);
}

bool contains(const Loop& loop, cv::Point2d point) {
    bool inside = false;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        const cv::Point2d a = loop[i];
        const cv::Point2d b = loop[(i + 1) % loop.size()];
        if ((a.y > point.y) == (b.y > point.y)) continue;
        if (point.x < a.x + (point.y - a.y) / (b.y - a.y) * (b.x - a.x)) inside = !inside;
    }
    return inside;
}

double signedArea(const Loop& loop) {
    double twice = 0;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        const cv::Point2d a = loop[i];
        const cv::Point2d b = loop[(i + 1) % loop.size()];
        twice += a.x * b.y - a.y * b.x;
    }
    return twice;
}

}  // namespace scenes
