#include "orxFunctions/calibration/plane/find_dots.h"

#include <algorithm>
#include <cmath>

#include "orxFunctions/analysis/caliper.h"
#include "orxFunctions/analysis/grey_input_internal.h"
#include "orxFunctions/calibration/plane/dot_blobs.h"
#include "orxFunctions/fitting/ellipse_geometric.h"
#include "orxFunctions/foundation/angles_internal.h"

namespace orx::plane {
namespace {

constexpr double kLeastDeviation = 1e-3;  // pixels
constexpr double kSpacing = 1.8;          // pixels along the outline: calipers nearer share their noise
constexpr double kRoughOutline = 0.15;    // pixels: where something else than noise disturbs it

// The edges of a dot along calipers that stand on its outline.
std::vector<cv::Point2d> outlineOf(const cv::Mat& grey, const Blob& blob, double room) {
    const double perimeter = kPi * (blob.major + blob.minor);
    const int count = std::clamp(static_cast<int>(perimeter / kSpacing), 12, 72);
    const double inside = std::min(0.8 * blob.minor, 5.0);
    const double outside = std::min(room, 5.0);
    TCaliperOptions options;
    options.polarity = epDarkToBright;
    options.selection = esStrongest;
    const cv::Point2d along(std::cos(blob.angle), std::sin(blob.angle));
    const cv::Point2d across(-along.y, along.x);
    std::vector<cv::Point2d> points;
    for (int k = 0; k < count; ++k) {
        const double t = 2.0 * kPi * k / count;
        const cv::Point2d at =
            blob.middle + blob.major * std::cos(t) * along + blob.minor * std::sin(t) * across;
        cv::Point2d normal = blob.minor * std::cos(t) * along + blob.major * std::sin(t) * across;
        normal *= 1.0 / cv::norm(normal);
        const std::vector<TContrastEdge> edges =
            getContrastEdges(grey, at - inside * normal, at + outside * normal, 1.0, options);
        if (!edges.empty()) points.push_back(edges.front().position);
    }
    return points;
}

TMeasuredEllipse measure(const std::vector<cv::Point2d>& points) {
    TFitOptions options;
    options.noise = pnNormal;
    TMeasuredEllipse ellipse = fitEllipseGeometric(points, options);
    if (ellipse.valid() && ellipse.noise < kRoughOutline) return ellipse;
    options.loss = flTukey;
    return fitEllipseGeometric(points, options);
}

bool searchGrid(const cv::Mat& bytes, Grid& grid, std::vector<Blob>& blobs, std::size_t& most) {
    const int side = std::max(bytes.cols, bytes.rows);
    for (const int share : {8, 24, 3, 60}) {
        blobs = darkBlobs(bytes, std::max(7, side / share));
        std::size_t count = 0;
        const std::vector<int> indices = growGrid(blobs, grid.columns, grid.rows, count);
        most = std::max(most, count);
        if (indices.empty()) continue;
        std::vector<Blob> chosen;
        for (const int i : indices) chosen.push_back(blobs[static_cast<std::size_t>(i)]);
        blobs = chosen;
        return true;
    }
    return false;
}

}  // namespace

bool findDots(const cv::Mat& grey, Grid& grid, std::vector<double>& deviations, std::string& problem) {
    cv::Mat bytes;
    grey.convertTo(bytes, CV_8U, 1.0 / levelUnit(grey));
    std::vector<Blob> blobs;
    std::size_t most = 0;
    if (!searchGrid(bytes, grid, blobs, most)) {
        problem = "the picture does not show the whole grid: " + std::to_string(most) +
                  " dots lie in one, asked for are " + std::to_string(grid.columns * grid.rows);
        return false;
    }
    grid.points.clear();
    for (const Blob& blob : blobs) grid.points.push_back(blob.middle);
    order(grid);
    std::vector<cv::Point2d> centers;
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            const int origin = grid.origins[grid.index(column, row)];
            const Blob& blob = blobs[static_cast<std::size_t>(origin)];
            const double pitch =
                std::min(cv::norm(stepAlong(grid, column, row)), cv::norm(stepAcross(grid, column, row)));
            const double room = std::max(2.0, 0.5 * pitch - 0.5 * (blob.major + blob.minor) / 2.0);
            const TMeasuredEllipse ellipse = measure(outlineOf(grey, blob, room));
            if (!ellipse.valid() || cv::norm(ellipse.center - blob.middle) > 0.5 * blob.minor) {
                problem = "dot " + std::to_string(column) + ", " + std::to_string(row) +
                          " is too small, blurred or covered";
                return false;
            }
            centers.push_back(ellipse.center);
            deviations.push_back(std::max(
                kLeastDeviation, std::sqrt(0.5 * (ellipse.covariance(0, 0) + ellipse.covariance(1, 1)))));
        }
    }
    grid.points = centers;
    return true;
}

}  // namespace orx::plane
