// Guide "edges and their accuracy": classic against metric edges, smoothing, thresholds, noise.
#include <array>
#include <cmath>
#include <cstdio>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

// [classic]
std::vector<cv::Point2f> classicEdges(const cv::Mat& grey) {
    std::vector<ORXEdge::TContour> chains;
    ORXEdge::EdgesSubPix(grey, chains, 12, 36, 1.0);  // low, high, sigma
    std::vector<cv::Point2f> points;
    for (const ORXEdge::TContour& chain : chains)
        points.insert(points.end(), chain.points.begin(), chain.points.end());
    return points;
}
// [classic end]

// [metric]
std::vector<ORXEdge::TMetricContour> metricEdges(const cv::Mat& grey, double sigma) {
    ORXEdge::TMetricOptions options;
    options.sigma = sigma;
    options.low = 12;  // grey levels of a sharp step
    options.high = 36;
    std::vector<ORXEdge::TMetricContour> chains;
    if (!ORXEdge::edgesSubPixMetric(grey, chains, options))
        std::printf("refused: %s\n", orx::lastRefusal().text.c_str());
    return chains;
}
// [metric end]

// [across]
// The outline of a disk that is known to within three pixels.
std::vector<orx::TContourEdge> edgesOfDisk(const cv::Mat& grey, cv::Point2d center, double radius) {
    orx::TContourEdgeOptions options;
    options.reach = 3;
    options.minContrast = 20;
    return orx::edgesAcross(grey, orx::probesAlongCircle(center, radius), options);
}
// [across end]

constexpr double kBlur = 0.8;

cv::Mat pictureOf(const scenes::Disk& disk, double noise, std::uint64_t seed) {
    cv::Mat ideal(100, 100, CV_32F, cv::Scalar(60.0));
    scenes::paint(ideal, disk, 180.0);
    return scenes::expose(ideal, {0, kBlur, noise, seed});
}

scenes::Disk diskOf(int i, double radius) {
    return {{49.5 + 0.37 * (i % 5), 49.2 + 0.23 * (i % 7)}, radius + 0.11 * (i % 9)};
}

// Distances of points from the true outline, above 0 outside.
struct Errors {
    double sum = 0;
    double squares = 0;
    double stated = 0;  // squares of what the finder itself says
    double count = 0;

    void add(double error, double deviation) {
        sum += error;
        squares += error * error;
        stated += deviation * deviation;
        ++count;
    }
    double bias() const { return sum / count; }
    double rms() const { return std::sqrt(squares / count); }
    double statedRms() const { return std::sqrt(stated / count); }
};

double errorOf(cv::Point2d point, const scenes::Disk& disk) {
    return cv::norm(point - disk.center) - disk.radius;
}

constexpr int kPictures = 12;

Errors classicErrors(double noise) {
    Errors errors;
    for (int i = 0; i < kPictures; ++i) {
        const scenes::Disk disk = diskOf(i, 32);
        for (const cv::Point2f& point :
             classicEdges(pictureOf(disk, noise, 100 + static_cast<unsigned>(i)))) {
            const double error = errorOf(point, disk);
            if (std::abs(error) < 3) errors.add(error, 0);
        }
    }
    return errors;
}

Errors metricErrors(double noise, double sigma, double radius) {
    Errors errors;
    for (int i = 0; i < kPictures; ++i) {
        const scenes::Disk disk = diskOf(i, radius);
        for (const auto& chain : metricEdges(pictureOf(disk, noise, 100 + static_cast<unsigned>(i)), sigma)) {
            for (std::size_t k = 0; k < chain.points.size(); ++k) {
                const double error = errorOf(chain.points[k], disk);
                if (std::abs(error) < 3) errors.add(error, static_cast<double>(chain.deviation[k]));
            }
        }
    }
    return errors;
}

Errors acrossErrors(double noise) {
    Errors errors;
    for (int i = 0; i < kPictures; ++i) {
        const scenes::Disk disk = diskOf(i, 32);
        const cv::Mat grey = pictureOf(disk, noise, 100 + static_cast<unsigned>(i));
        for (const orx::TContourEdge& edge : edgesOfDisk(grey, {50, 50}, 32))
            if (edge.found) errors.add(errorOf(edge.position, disk), edge.deviation);
    }
    return errors;
}

// Left the classic points, right the metric ones, of the same picture.
void drawBoth() {
    const scenes::Disk disk = diskOf(3, 32);
    const cv::Mat grey = pictureOf(disk, 2, 3);
    const cv::Rect area(68, 20, 20, 20);
    guide::Enlarged classic(grey, area, 20);
    guide::Enlarged metric(grey, area, 20);
    for (guide::Enlarged* panel : {&classic, &metric})
        panel->circle(disk.center, disk.radius, guide::kBlue, 1);
    for (const cv::Point2f& point : classicEdges(grey)) classic.dot(point, 4, guide::kOrange);
    for (const auto& chain : metricEdges(grey, 1))
        for (const cv::Point2f& point : chain.points) metric.dot(point, 4, guide::kOrange);
    guide::save("edges-classic-and-metric",
                guide::sheet({guide::captioned(classic.canvas(), "EdgesSubPix"),
                              guide::captioned(metric.canvas(), "edgesSubPixMetric")},
                             2));
}

// [thresholds]
std::vector<ORXEdge::TMetricContour> edgesAbove(const cv::Mat& grey, double high) {
    ORXEdge::TMetricOptions options;
    options.high = high;       // one point of a chain reaches this,
    options.low = 0.4 * high;  // and all of them this
    options.minPoints = 8;     // shorter chains are noise
    std::vector<ORXEdge::TMetricContour> chains;
    ORXEdge::edgesSubPixMetric(grey, chains, options);
    return chains;
}
// [thresholds end]

void tellThresholds() {
    const cv::Mat grey = pictureOf(diskOf(3, 32), 16, 5);
    const std::array<double, 3> highs{20, 50, 140};
    const std::array<std::size_t, 3> stated{93, 1, 0};
    std::vector<cv::Mat> panels;
    for (std::size_t i = 0; i < highs.size(); ++i) {
        const auto chains = edgesAbove(grey, highs[i]);
        std::printf("high %g: %zu chains\n", highs[i], chains.size());
        guide::expectAbout(static_cast<double>(chains.size()), static_cast<double>(stated[i]),
                           i == 0 ? 10 : 0, "chains");
        guide::Enlarged panel(grey, 3);
        for (const auto& chain : chains)
            for (const cv::Point2f& point : chain.points) panel.dot(point, 1.5, guide::kOrange);
        panels.push_back(guide::captioned(panel.canvas(), "high " + guide::formatted("%g", highs[i])));
    }
    guide::save("edges-thresholds", guide::sheet(panels, 3));
}

void tellNoise() {
    std::printf(
        "| noise | EdgesSubPix rms | edgesSubPixMetric rms | it states | edgesAcross rms | it states |\n");
    std::vector<cv::Point2d> classic, metric, stated, across;
    for (const double noise : {0.5, 1.0, 2.0, 4.0, 8.0, 16.0}) {
        const Errors c = classicErrors(noise);
        const Errors m = metricErrors(noise, 1, 32);
        const Errors a = acrossErrors(noise);
        std::printf("| %g | %.3f | %.4f | %.4f | %.4f | %.4f |\n", noise, c.rms(), m.rms(), m.statedRms(),
                    a.rms(), a.statedRms());
        classic.emplace_back(noise, c.rms());
        guide::expectAbout(c.rms(), 0.22, 0.04, "classic edges scatter by a fifth of a pixel");
        if (noise >= 2 && noise <= 8)
            guide::expectAbout(m.rms() / m.statedRms(), 1.1, 0.05, "metric edges scatter as stated");
        guide::expectAbout(m.rms() / (noise < 2 ? 0.01 : 0.01 * noise), 1.05, 0.25,
                           "a hundredth per grey level");
        guide::expectAbout(a.rms() / m.rms(), 1.5, 0.5, "edges across the outline against chains");
        metric.emplace_back(noise, m.rms());
        stated.emplace_back(noise, m.statedRms());
        across.emplace_back(noise, a.rms());
    }
    guide::Plot plot({640, 400}, {"noise of a pixel, grey levels", 0.4, 20, {0.5, 1, 2, 4, 8, 16}, true},
                     {"root mean square error, pixels", 0.001, 6, {0.001, 0.01, 0.1, 1}, true});
    plot.line(classic, guide::kRed);
    plot.line(stated, guide::kInk);
    plot.dots(metric, guide::kGreen);
    plot.dots(across, guide::kBlue);
    plot.legend("EdgesSubPix", guide::kRed);
    plot.legend("edgesSubPixMetric", guide::kGreen);
    plot.legend("what it states itself", guide::kInk);
    plot.legend("edgesAcross", guide::kBlue);
    guide::save("edges-noise", plot.canvas());
}

void tellSigma() {
    const std::array<std::array<double, 2>, 5> stated{
        {{0.102, 0.0005}, {0.079, 0.0014}, {0.061, 0.0021}, {0.055, -0.070}, {0.051, -0.227}}};
    std::size_t row = 0;
    std::printf("| sigma | rms at noise 8 | it states | bias, radius 6 | \n");
    for (const double sigma : {0.7, 1.0, 1.5, 2.0, 3.0}) {
        const Errors noisy = metricErrors(8, sigma, 32);
        const Errors small = metricErrors(0.5, sigma, 6);
        std::printf("| %g | %.4f | %.4f | %+.4f |\n", sigma, noisy.rms(), noisy.statedRms(), small.bias());
        guide::expectAbout(noisy.rms(), stated[row][0], 0.004, "rms by sigma");
        guide::expectAbout(small.bias(), stated[row++][1], 0.004, "bias of a small disk by sigma");
    }
}

// Fits of all points have what single points lack: both finders see the same pixels.
void tellFits() {
    double chains = 0, across = 0;
    for (int i = 0; i < kPictures; ++i) {
        const scenes::Disk disk = diskOf(i, 32);
        const cv::Mat grey = pictureOf(disk, 8, 200 + static_cast<unsigned>(i));
        const auto edges = metricEdges(grey, 1);
        if (edges.size() != 1) continue;
        orx::TFitOptions options;
        options.noise = orx::pnEdgeChain;
        options.smoothing = orx::kContourEdgeSmoothing;
        const auto places = edgesOfDisk(grey, {50, 50}, 32);
        chains += orx::fitCircleGeometric(edges[0], 1).radiusDeviation;
        across += orx::fitCircleGeometric(orx::pointsOf(places), options).radiusDeviation;
    }
    std::printf("radius: %.4f by chains, %.4f by edges across\n", chains / kPictures, across / kPictures);
    guide::expectAbout(across / chains, 1, 0.15, "fits of both are known equally well");
}

void make() {
    tellFits();
    drawBoth();
    tellNoise();
    tellSigma();
    tellThresholds();
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
