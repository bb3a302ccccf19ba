// Edge finders: the classic one against its plain version, the one for measuring on one thread and on many,
// Canny against OpenCV's, calipers and probes along shapes.
#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "orxFunctions/orxfunctions.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/edge_reference.h"

namespace {

using fuzz::require;

bool isInside(cv::Point2d p, const cv::Mat& image, double margin) {
    return p.x >= -margin && p.y >= -margin && p.x <= image.cols - 1 + margin &&
           p.y <= image.rows - 1 + margin;
}

void checkClassic(fuzz::Input& input) {
    const int low = input.between(-20, 235);
    const int high = input.between(-2, 253);
    const double alpha = 0.1 + input.byte() / 60.0;
    const int mode = input.between(0, 3);
    cv::Mat image = input.grey();
    std::vector<ORXEdge::TContour> found;
    cv::Mat hierarchy;
    require(ORXEdge::EdgesSubPix(image, found, hierarchy, mode, low, high, alpha), "grey pictures are taken");
    cv::Mat plainHierarchy;
    const auto plain = edge_reference::edgesSubPix(image, plainHierarchy, mode, low, high, alpha);
    require(found.size() == plain.size() && fuzz::same(hierarchy, plainHierarchy), "the plain chains");
    for (std::size_t i = 0; i < found.size(); ++i) {
        require(found[i].points == plain[i].points && found[i].response == plain[i].response,
                "points and responses of the plain version");
        require(found[i].direction.size() == plain[i].direction.size(), "a direction for each point");
        for (std::size_t k = 0; k < found[i].direction.size(); ++k)
            require(std::abs(found[i].direction[k] - plain[i].direction[k]) < 1e-5F, "the plain directions");
    }
    std::vector<std::vector<cv::Point2f>> points;
    std::vector<ORXEdge::TContour> all;
    require(ORXEdge::EdgesSubPix(image, points, low, high, alpha) &&
                ORXEdge::EdgesSubPix(image, all, low, high, alpha),
            "the other overloads take it, too");
    require(points.size() == all.size(), "as many chains by every overload");
    for (std::size_t i = 0; i < all.size(); ++i) require(points[i] == all[i].points, "the same chains");
}

// Whatever comes: an answer, a refusal that leaves everything, or OpenCV's exception.
void checkClassicAnything(fuzz::Input& input) {
    const int low = input.integer();
    const int high = input.integer();
    const double alpha = input.number();
    const int mode = input.between(-1, 5);
    const cv::Mat image = input.matrix();
    const cv::Mat before = fuzz::copyOf(image);
    std::vector<ORXEdge::TContour> found(1);
    try {
        const bool taken = ORXEdge::EdgesSubPix(image, found, cv::noArray(), mode, low, high, alpha);
        require(taken || (found.size() == 1 && found[0].points.empty()), "a refusal leaves the contours");
        require(!taken || (image.dims <= 2 && image.type() == CV_8UC1), "grey pictures alone are taken");
    } catch (const cv::Exception&) {
        require(image.empty() || !(alpha > 0) || mode < 0 || mode > 3,
                "exceptions for what the header names");
    }
    require(fuzz::same(image, before), "the picture stays");
    if (image.dims <= 2) return;
    require(ORXEdge::calcEdgeThresVal(image, image) == -1, "no threshold of more than two dimensions");
}

ORXEdge::TMetricOptions metricOptions(fuzz::Input& input) {
    ORXEdge::TMetricOptions options;
    options.sigma = input.option(0.5, 6);
    options.low = input.option(0, 60);
    options.high = input.option(0, 120);
    options.automaticThresholds = input.flag();
    options.mode = input.between(-1, 4);
    options.noise = input.option(0, 5);
    options.minPoints = input.between(0, 20);
    return options;
}

void checkMetric(fuzz::Input& input) {
    const ORXEdge::TMetricOptions options = metricOptions(input);
    const cv::Mat image = input.grey();
    std::vector<ORXEdge::TMetricContour> one;
    cv::setNumThreads(1);
    const bool taken = ORXEdge::edgesSubPixMetric(image, one, options);
    std::vector<ORXEdge::TMetricContour> many;
    cv::setNumThreads(3);
    require(ORXEdge::edgesSubPixMetric(image, many, options) == taken, "as on one thread");
    cv::setNumThreads(1);
    require(one.size() == many.size(), "as many edges as on one thread");
    for (std::size_t i = 0; i < one.size(); ++i) {
        const ORXEdge::TMetricContour& edge = one[i];
        require(edge.points == many[i].points && edge.deviation == many[i].deviation &&
                    edge.closed == many[i].closed,
                "the edges of one thread");
        const std::size_t count = edge.points.size();
        require(edge.direction.size() == count && edge.contrast.size() == count &&
                    edge.deviation.size() == count && static_cast<int>(count) >= options.minPoints,
                "all of each point");
        for (std::size_t k = 0; k < count; ++k) {
            require(isInside(edge.points[k], image, 3), "edges lie in the picture");
            // Of a noise of 1e-40 floats know nothing.
            const bool isTold = edge.deviation[k] > 0 || (edge.deviation[k] == 0 && options.noise < 1e-30);
            require(edge.direction[k] >= 0 && edge.direction[k] < 6.2832F && isTold,
                    "directions and deviations in range");
        }
        const orx::TMeasuredLine line = orx::fitLineGeometric(edge, options.sigma);
        const orx::TMeasuredCircle circle = orx::fitCircleGeometric(edge, options.sigma);
        require(!line.valid() || std::isfinite(line.offsetDeviation), "a line of an edge is told how well");
        require(!circle.valid() || circle.radius > 0, "a circle of an edge has a radius");
    }
}

void checkCanny(fuzz::Input& input) {
    orx::TAutoCannyOptions options;
    options.method = input.flag() ? orx::cmOtsu : orx::cmMedian;
    options.spread = input.option(0, 1);
    options.lowRatio = input.option(0, 1);
    options.bits = input.between(7, 17);
    const bool isBlurred = input.flag();
    options.blur = isBlurred ? input.option(0, 5) : 0;
    const cv::Mat image = input.matrix();
    const orx::TCannyThresholds levels = orx::getCannyThresholds(image, options);
    const cv::Mat edges = orx::autoCanny(image, options);
    require(levels.valid == !edges.empty(), "edges where there are thresholds");
    if (!levels.valid) return;
    require(levels.low >= 0 && levels.low <= levels.high && levels.high <= 1443, "thresholds in range");
    if (isBlurred || image.type() != CV_8UC1) return;
    cv::Mat plain;
    cv::Canny(image, plain, levels.low, levels.high, 3, true);
    require(fuzz::same(edges, plain), "the edges of OpenCV's Canny by these thresholds");
}

orx::TCaliperOptions caliperOptions(fuzz::Input& input) {
    orx::TCaliperOptions options;
    options.sigma = input.option(0.5, 5);
    options.minContrast = input.option(0, 60);
    options.polarity = static_cast<orx::TEdgePolarity>(input.between(-1, 3));
    options.selection = static_cast<orx::TEdgeSelection>(input.between(-1, 4));
    return options;
}

void checkEdges(const std::vector<orx::TContrastEdge>& edges, const orx::TCaliperOptions& options) {
    for (std::size_t i = 0; i < edges.size(); ++i) {
        require(std::isfinite(edges[i].position.x) && std::isfinite(edges[i].position.y),
                "places are numbers");
        require(std::abs(edges[i].contrast) >= options.minContrast, "edges of the contrast asked for");
        require(options.polarity != orx::epDarkToBright || edges[i].contrast > 0, "the polarity asked for");
        require(edges[i].blur >= 0, "blur is not negative");
        if (i > 0 && edges[i].caliper == edges[i - 1].caliper)
            require(edges[i].distance >= edges[i - 1].distance, "in the order along the caliper");
    }
}

void checkCalipers(fuzz::Input& input) {
    const orx::TCaliperOptions options = caliperOptions(input);
    const cv::Point2d from{input.number(), input.number()};
    const cv::Point2d to{input.option(-8, 56), input.option(-8, 56)};
    const double width = input.option(0, 12);
    const cv::Rect box{input.between(-2, 40), input.between(-2, 40), input.between(0, 30),
                       input.between(0, 30)};
    orx::TCircleCaliperOptions circle;
    circle.edge = options;
    circle.count = input.between(-1, 40);
    circle.searchLength = input.option(1, 30);
    circle.width = input.option(0, 9);
    circle.direction = input.flag() ? orx::rdInward : orx::rdOutward;
    circle.startAngle = input.option(-180, 180);
    circle.sweep = input.option(-360, 360);
    circle.compensateBlur = input.flag();
    const double radius = input.option(0, 30);
    const cv::Mat image = input.matrix();
    checkEdges(orx::getContrastEdges(image, from, to, width, options), options);
    checkEdges(orx::getContrastEdges(image, cv::Point2d(3, 3), to, width, options), options);
    for (int d = -1; d <= 4; ++d)
        checkEdges(orx::getContrastEdges(image, box, static_cast<orx::TScanDirection>(d), options), options);
    const cv::RotatedRect turned(to, {static_cast<float>(box.width), static_cast<float>(width)},
                                 static_cast<float>(circle.startAngle));
    checkEdges(orx::getContrastEdges(image, turned, options), options);
    const auto edges = orx::getCircleEdges(image, to, radius, circle);
    checkEdges(edges, options);
    for (const orx::TContrastEdge& edge : edges)
        require(edge.caliper >= 0 && edge.caliper < circle.count, "calipers are numbered");
    const orx::TMeasuredCircle fitted = orx::fitCircleGeometric(edges);
    require(!fitted.valid() || fitted.radius > 0, "a circle of calipers has a radius");
}

// A picture and its mirror image have the same edges, seen from the other side.
void checkMirrored(fuzz::Input& input) {
    orx::TCaliperOptions options;
    options.minContrast = 5.0 + input.byte() / 4.0;
    const cv::Mat image = input.grey();
    cv::Mat mirrored;
    cv::flip(image, mirrored, 1);
    const cv::Rect whole({}, image.size());
    const auto a = orx::getContrastEdges(image, whole, orx::sdLeftToRight, options);
    const auto b = orx::getContrastEdges(mirrored, whole, orx::sdRightToLeft, options);
    require(a.size() == b.size(), "a mirrored picture has as many edges");
    for (std::size_t i = 0; i < a.size(); ++i) {
        require(
            std::abs(a[i].distance - b[i].distance) < 1e-6 && std::abs(a[i].contrast - b[i].contrast) < 1e-6,
            "a mirrored picture has the same edges");
    }
}

void checkProbes(fuzz::Input& input) {
    orx::TContourEdgeOptions options;
    options.reach = input.option(1.5, 12);
    options.minContrast = input.option(0, 60);
    options.polarity = static_cast<orx::TEdgePolarity>(input.between(-1, 3));
    options.noise = input.option(0, 5);
    const cv::Point2d middle{input.option(0, 48), input.option(0, 48)};
    const double radius = input.option(0, 30);
    const double spacing = input.option(0.3, 5);
    const double angle = input.option(-400, 400);
    const cv::Mat image = input.matrix();
    std::vector<orx::TEdgeProbe> probes = orx::probesAlongCircle(middle, radius, spacing, angle, angle);
    const auto line = orx::probesAlongLine(middle, {radius, angle}, spacing);
    const auto ellipse = orx::probesAlongEllipse(
        {middle, {static_cast<float>(radius), static_cast<float>(2 * spacing)}, static_cast<float>(angle)},
        spacing);
    if (probes.size() + line.size() + ellipse.size() > 5000) return;
    probes.insert(probes.end(), line.begin(), line.end());
    probes.insert(probes.end(), ellipse.begin(), ellipse.end());
    for (const orx::TEdgeProbe& probe : probes)
        require(std::abs(cv::norm(probe.normal) - 1) < 1e-3, "normals have length 1");
    probes.push_back({{input.number(), input.number()}, {input.number(), input.number()}, input.number()});
    const std::vector<orx::TContourEdge> edges = orx::edgesAcross(image, probes, options);
    if (edges.empty()) return;
    require(edges.size() == probes.size(), "an answer for each probe");
    std::size_t found = 0;
    for (const orx::TContourEdge& edge : edges) {
        found += edge.found ? 1 : 0;
        if (!edge.found) continue;
        require(std::abs(edge.offset) <= options.reach + 1e-9 && edge.deviation > 0, "within the reach");
    }
    require(orx::pointsOf(edges).size() == found && orx::deviationsOf(edges).size() == found,
            "points of those that were found");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::runOneOf({checkClassic, checkMetric, checkCanny, checkCalipers, checkMirrored, checkClassicAnything,
                    checkProbes},
                   bytes, size);
    return 0;
}
