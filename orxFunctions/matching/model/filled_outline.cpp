#include "orxFunctions/matching/model/filled_outline.h"

#include <algorithm>
#include <cmath>

namespace orx::matching {
namespace {

constexpr int kLines = 4;  // a row

double heightOf(int line) { return (line + 0.5) / kLines - 0.5; }

// Where a polygon's side crosses the lines.
void addCrossings(cv::Point2d a, cv::Point2d b, std::vector<std::vector<double>>& crossings) {
    if (a.y > b.y) std::swap(a, b);
    const int lines = static_cast<int>(crossings.size());
    const auto lineFrom = [lines](double y) {
        return static_cast<int>(std::clamp(std::ceil((y + 0.5) * kLines - 0.5), 0.0, double(lines)));
    };
    // Half open, so that a corner on a line counts once.
    const int end = lineFrom(b.y);
    for (int line = lineFrom(a.y); line < end; ++line) {
        const double share = (heightOf(line) - a.y) / (b.y - a.y);
        crossings[static_cast<std::size_t>(line)].push_back(a.x + share * (b.x - a.x));
    }
}

// Adds the share of each pixel that lies between two places of a row.
void cover(float* row, int cols, double from, double to) {
    from = std::clamp(from + 0.5, 0.0, double(cols));
    to = std::clamp(to + 0.5, 0.0, double(cols));
    for (int x = static_cast<int>(from); x < cols && x < to; ++x) {
        row[x] += static_cast<float>(std::min(to, x + 1.0) - std::max(from, double(x))) / kLines;
    }
}

}  // namespace

cv::Mat fillPolygons(const std::vector<std::vector<cv::Point2d>>& polygons, cv::Size size, int bright) {
    std::vector<std::vector<double>> crossings(static_cast<std::size_t>(size.height) * kLines);
    for (const std::vector<cv::Point2d>& polygon : polygons) {
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            addCrossings(polygon[i], polygon[(i + 1) % polygon.size()], crossings);
        }
    }
    cv::Mat covered = cv::Mat::zeros(size, CV_32F);
    for (std::size_t line = 0; line < crossings.size(); ++line) {
        std::vector<double>& xs = crossings[line];
        std::sort(xs.begin(), xs.end());
        float* row = covered.ptr<float>(static_cast<int>(line / kLines));
        for (std::size_t i = 0; i + 1 < xs.size(); i += 2) cover(row, size.width, xs[i], xs[i + 1]);
    }
    cv::Mat picture;
    covered.convertTo(picture, CV_8U, bright);
    return picture;
}

}  // namespace orx::matching
