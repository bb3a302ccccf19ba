#include "orxFunctions/calibration/plane/dot_blobs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <opencv2/imgproc.hpp>
#include <queue>
#include <utility>

#include "orxFunctions/analysis/image_noise.h"

namespace orx::plane {
namespace {

constexpr double kLeastArea = 16.0;  // pixels
constexpr double kLongest = 4.0;     // major to minor axis
constexpr double kEllipse = 0.12;    // how far an area may be off that of the ellipse of its moments
constexpr std::size_t kMostBlobs = 100000;
constexpr std::size_t kMostSeeds = 40;
constexpr double kNear = 0.3;   // of a step: how far a neighbour may lie off its place
constexpr double kAlike = 2.0;  // ratio of neighbours' half axes

bool isEllipse(const std::vector<cv::Point>& contour, Blob& blob) {
    const cv::Moments m = cv::moments(contour);
    if (m.m00 < kLeastArea) return false;
    blob.middle = cv::Point2d(m.m10 / m.m00, m.m01 / m.m00);
    const double xx = m.mu20 / m.m00;
    const double yy = m.mu02 / m.m00;
    const double xy = m.mu11 / m.m00;
    const double mean = 0.5 * (xx + yy);
    const double apart = std::hypot(0.5 * (xx - yy), xy);
    if (!(mean > apart)) return false;
    blob.major = 2.0 * std::sqrt(mean + apart);
    blob.minor = 2.0 * std::sqrt(mean - apart);
    blob.angle = 0.5 * std::atan2(2.0 * xy, xx - yy);
    return blob.major <= kLongest * blob.minor &&
           std::abs(m.m00 / (CV_PI * blob.major * blob.minor) - 1.0) <= kEllipse;
}

bool touchesBorder(const std::vector<cv::Point>& contour, cv::Size size) {
    const cv::Rect box = cv::boundingRect(contour);
    return box.x <= 1 || box.y <= 1 || box.br().x >= size.width - 1 || box.br().y >= size.height - 1;
}

using Place = std::pair<int, int>;  // column and row in a lattice that grows
using Lattice = std::map<Place, int>;

// Blobs by cells of the picture.
class Neighbourhood {
  public:
    Neighbourhood(const std::vector<Blob>& blobs, double cell) : blobs_(blobs), cell_(cell) {
        for (std::size_t i = 0; i < blobs.size(); ++i)
            cells_[cellOf(blobs[i].middle)].push_back(static_cast<int>(i));
    }

    // The nearest to a place within `radius` that is none of two; -1 where there is none.
    int nearest(cv::Point2d place, double radius, int besides) const {
        int best = -1;
        double least = radius;
        const int reach = static_cast<int>(std::min(50.0, std::ceil(radius / cell_)));
        const auto [column, row] = cellOf(place);
        for (int y = row - reach; y <= row + reach; ++y) {
            for (int x = column - reach; x <= column + reach; ++x) {
                const auto found = cells_.find({x, y});
                if (found == cells_.end()) continue;
                for (const int i : found->second) {
                    const double distance = cv::norm(blobs_[static_cast<std::size_t>(i)].middle - place);
                    if (i == besides || distance >= least) continue;
                    least = distance;
                    best = i;
                }
            }
        }
        return best;
    }

  private:
    Place cellOf(cv::Point2d p) const {
        return {static_cast<int>(std::floor(p.x / cell_)), static_cast<int>(std::floor(p.y / cell_))};
    }

    const std::vector<Blob>& blobs_;
    double cell_;
    std::map<Place, std::vector<int>> cells_;
};

bool areAlike(const Blob& a, const Blob& b) {
    return a.major < kAlike * b.major && b.major < kAlike * a.major && a.minor < kAlike * b.minor &&
           b.minor < kAlike * a.minor;
}

class Growth {
  public:
    Growth(const std::vector<Blob>& blobs, const Neighbourhood& neighbours)
        : blobs_(blobs), neighbours_(neighbours) {}

    Lattice from(int seed) const {
        Lattice lattice;
        std::array<cv::Point2d, 2> steps;
        if (!findSteps(seed, steps)) return lattice;
        std::vector<bool> used(blobs_.size(), false);
        lattice[{0, 0}] = seed;
        used[static_cast<std::size_t>(seed)] = true;
        std::queue<Place> open;
        open.push({0, 0});
        while (!open.empty()) {
            const Place place = open.front();
            open.pop();
            for (const Place& way : {Place{1, 0}, Place{-1, 0}, Place{0, 1}, Place{0, -1}}) {
                const Place next{place.first + way.first, place.second + way.second};
                if (lattice.count(next) != 0) continue;
                const int here = lattice.at(place);
                const cv::Point2d step = stepFrom(lattice, place, way, steps);
                const int there = neighbours_.nearest(middle(here) + step, kNear * cv::norm(step), here);
                if (there < 0 || used[static_cast<std::size_t>(there)] || !areAlike(blob(here), blob(there)))
                    continue;
                used[static_cast<std::size_t>(there)] = true;
                lattice[next] = there;
                open.push(next);
            }
        }
        return lattice;
    }

  private:
    const Blob& blob(int i) const { return blobs_[static_cast<std::size_t>(i)]; }
    cv::Point2d middle(int i) const { return blob(i).middle; }

    // To the nearest neighbour, and to the nearest of those that lie rather across it; both have one on the
    // other side, too.
    bool findSteps(int seed, std::array<cv::Point2d, 2>& steps) const {
        std::vector<cv::Point2d> ways;
        for (std::size_t i = 0; i < blobs_.size(); ++i) {
            const cv::Point2d way = blobs_[i].middle - middle(seed);
            if (static_cast<int>(i) != seed && areAlike(blob(seed), blobs_[i]) &&
                cv::norm(way) < 20.0 * blob(seed).major)
                ways.push_back(way);
        }
        std::sort(ways.begin(), ways.end(), [](cv::Point2d a, cv::Point2d b) { return a.dot(a) < b.dot(b); });
        int found = 0;
        for (const cv::Point2d& way : ways) {
            const double length = cv::norm(way);
            if (found == 1 && std::abs(way.cross(steps[0])) < 0.5 * length * cv::norm(steps[0])) continue;
            if (neighbours_.nearest(middle(seed) - way, kNear * length, seed) < 0) continue;
            steps[static_cast<std::size_t>(found++)] = way;
            if (found == 2) return true;
        }
        return false;
    }

    // As the last step led here, else as steps beside it lead, else as the first of all.
    cv::Point2d stepFrom(const Lattice& lattice, Place at, Place way,
                         const std::array<cv::Point2d, 2>& steps) const {
        const auto found = [&](int column, int row) {
            const auto it = lattice.find({column, row});
            return it == lattice.end() ? -1 : it->second;
        };
        const int here = lattice.at(at);
        const int before = found(at.first - way.first, at.second - way.second);
        if (before >= 0) return middle(here) - middle(before);
        for (const int side : {1, -1}) {
            const Place beside{at.first + side * way.second, at.second + side * way.first};
            const int from = found(beside.first, beside.second);
            const int to = found(beside.first + way.first, beside.second + way.second);
            if (from >= 0 && to >= 0) return middle(to) - middle(from);
        }
        const cv::Point2d& step = steps[way.first != 0 ? 0 : 1];
        return way.first + way.second > 0 ? step : -step;
    }

    const std::vector<Blob>& blobs_;
    const Neighbourhood& neighbours_;
};

// Row by row where the lattice is a full rectangle of that size.
std::vector<int> rectangleOf(const Lattice& lattice, int columns, int rows) {
    if (lattice.size() != static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) return {};
    Place low{std::numeric_limits<int>::max(), std::numeric_limits<int>::max()};
    for (const auto& [place, blob] : lattice)
        low = {std::min(low.first, place.first), std::min(low.second, place.second)};
    std::vector<int> indices;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const auto found = lattice.find({low.first + column, low.second + row});
            if (found == lattice.end()) return {};
            indices.push_back(found->second);
        }
    }
    return indices;
}

// The same with columns and rows of the lattice exchanged.
Lattice turned(const Lattice& lattice) {
    Lattice result;
    for (const auto& [place, blob] : lattice) result[{place.second, place.first}] = blob;
    return result;
}

}  // namespace

std::vector<Blob> darkBlobs(const cv::Mat& bytes, int block) {
    const double noise = std::max(1.0, getImageNoise(bytes));
    cv::Mat dark;
    cv::adaptiveThreshold(bytes, dark, 255, cv::ADAPTIVE_THRESH_MEAN_C, cv::THRESH_BINARY_INV, block | 1,
                          std::max(6.0, 3.0 * noise));
    std::vector<std::vector<cv::Point>> contours;
    std::vector<cv::Vec4i> hierarchy;
    cv::findContours(dark, contours, hierarchy, cv::RETR_CCOMP, cv::CHAIN_APPROX_NONE);
    std::vector<Blob> blobs;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        Blob blob;
        if (hierarchy[i][3] < 0 && !touchesBorder(contours[i], bytes.size()) && isEllipse(contours[i], blob))
            blobs.push_back(blob);
    }
    std::sort(blobs.begin(), blobs.end(),
              [](const Blob& a, const Blob& b) { return a.major * a.minor > b.major * b.minor; });
    if (blobs.size() > kMostBlobs) blobs.resize(kMostBlobs);
    return blobs;
}

std::vector<int> growGrid(const std::vector<Blob>& blobs, int columns, int rows, std::size_t& count) {
    count = 0;
    if (blobs.size() < static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)) return {};
    // A blob of the middle size, most probably a dot; tried from the middle of the picture of all outwards.
    const Blob& typical = blobs[blobs.size() / 2];
    cv::Point2d middle;
    for (const Blob& blob : blobs) middle += blob.middle * (1.0 / static_cast<double>(blobs.size()));
    std::vector<int> seeds(blobs.size());
    for (std::size_t i = 0; i < seeds.size(); ++i) seeds[i] = static_cast<int>(i);
    const auto distance = [&](int i) { return cv::norm(blobs[static_cast<std::size_t>(i)].middle - middle); };
    std::sort(seeds.begin(), seeds.end(), [&](int a, int b) { return distance(a) < distance(b); });
    const Neighbourhood neighbours(blobs, std::max(4.0, 3.0 * typical.major));
    const Growth growth(blobs, neighbours);
    for (std::size_t k = 0; k < std::min(kMostSeeds, seeds.size()); ++k) {
        const Lattice lattice = growth.from(seeds[k]);
        count = std::max(count, lattice.size());
        for (const Lattice& way : {lattice, turned(lattice)}) {
            std::vector<int> indices = rectangleOf(way, columns, rows);
            if (!indices.empty()) return indices;
        }
    }
    return {};
}

}  // namespace orx::plane
