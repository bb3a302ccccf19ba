// Prints docs/accuracy-edges.md: where the edge detectors place edges whose true place is known, by blur and
// noise. Run it as
//     build/release/bin/accuracy_edges > docs/accuracy-edges.md
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

#include "orxFunctions/analysis/subpixel_edges.h"
#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "tests/support/edge_scene.h"

namespace {

using edge_scene::Look;

// Signed distances of found points from the true edge.
struct Errors {
    double sum = 0;
    double squares = 0;
    int count = 0;
    double estimated = 0;  // sum of the squared estimates of the deviation

    void add(double distance) {
        sum += distance;
        squares += distance * distance;
        ++count;
    }
    double bias() const { return sum / count; }
    double rms() const { return std::sqrt(squares / count); }
    double spread() const { return std::sqrt(std::max(0.0, squares / count - bias() * bias())); }
};

using Distance = std::function<double(cv::Point2f)>;

struct Scene {
    cv::Mat image;
    Distance distance;  // positive outside the bright shape
};

constexpr int kTrials = 16;
constexpr double kBorder = 8;  // pixels at the image's border that do not count

template <typename Contours>
void addPoints(const Contours& contours, const Scene& scene, Errors& errors) {
    for (const auto& contour : contours) {
        for (const cv::Point2f& p : contour.points) {
            if (p.x < kBorder || p.y < kBorder || p.x > static_cast<float>(scene.image.cols) - 1 - kBorder ||
                p.y > static_cast<float>(scene.image.rows) - 1 - kBorder) {
                continue;
            }
            const double distance = scene.distance(p);
            if (std::abs(distance) < 2) errors.add(distance);
        }
    }
}

void measure(Scene& scene, Errors& plain, Errors& metric) {
    std::vector<ORXEdge::TContour> found;
    ORXEdge::EdgesSubPix(scene.image, found, 12, 36, 1.0);
    addPoints(found, scene, plain);
    std::vector<ORXEdge::TMetricContour> measured;
    ORXEdge::edgesSubPixMetric(scene.image, measured);
    addPoints(measured, scene, metric);
    for (const auto& contour : measured) {
        for (const float deviation : contour.deviation) metric.estimated += deviation * deviation;
    }
}

Scene diskScene(cv::RNG& random, double radius, const Look& look) {
    const int size = static_cast<int>(2 * radius) + 30;
    const cv::Point2d centre(size / 2.0 + random.uniform(-0.5, 0.5), size / 2.0 + random.uniform(-0.5, 0.5));
    return {edge_scene::disk({size, size}, centre, radius, look),
            [=](cv::Point2f p) { return std::hypot(p.x - centre.x, p.y - centre.y) - radius; }};
}

Scene lineScene(cv::RNG& random, double angle, const Look& look) {
    const cv::Point2d through(40 + random.uniform(-0.5, 0.5), 40 + random.uniform(-0.5, 0.5));
    return {edge_scene::halfPlane({81, 81}, through, angle, look), [=](cv::Point2f p) {
                return -((p.x - through.x) * std::cos(angle) + (p.y - through.y) * std::sin(angle));
            }};
}

Scene rectangleScene(cv::RNG& random, const Look& look) {
    const cv::Rect2d area(25 + random.uniform(-0.5, 0.5), 25 + random.uniform(-0.5, 0.5),
                          50 + random.uniform(-0.5, 0.5), 50 + random.uniform(-0.5, 0.5));
    // Corners are rounded by any smoothing: only what lies along the sides counts.
    return {edge_scene::rectangle({100, 100}, area, look), [=](cv::Point2f p) {
                const double left = area.x - p.x;
                const double right = p.x - area.x - area.width;
                const double top = area.y - p.y;
                const double bottom = p.y - area.y - area.height;
                const double x = std::abs(left) < std::abs(right) ? left : right;
                const double y = std::abs(top) < std::abs(bottom) ? top : bottom;
                if (std::abs(x) < 12 && std::abs(y) < 12) return 1e9;
                return std::abs(x) < std::abs(y) ? x : y;
            }};
}

// The smallest deviation that any unbiased detector can reach on a straight edge which it smooths along its
// length like ours: the Cramer-Rao bound for the place of a known profile.
double bound(const Look& look) {
    if (look.noise <= 0) return 0;
    const double noise = std::sqrt(look.noise * look.noise + 1.0 / 12);
    const double blur = std::sqrt(look.blur * look.blur + 1.0 / 12);
    const double length = 2 * std::sqrt(CV_PI);  // of edge that smoothing with sigma 1 averages over
    return noise / (look.bright - look.dark) * std::sqrt(2 * std::sqrt(CV_PI) * blur / length);
}

void printRow(const char* shape, const Look& look, const std::function<Scene(cv::RNG&, const Look&)>& make) {
    cv::RNG random(4711);
    Errors plain;
    Errors metric;
    for (int trial = 0; trial < kTrials; ++trial) {
        Look varied = look;
        varied.seed = trial;
        Scene scene = make(random, varied);
        measure(scene, plain, metric);
    }
    std::printf("| %s | %.1f | %.0f | %+.3f | %.3f | %.3f | %+.4f | %.4f | %.4f | %.4f | ", shape, look.blur,
                look.noise, plain.bias(), plain.spread(), plain.rms(), metric.bias(), metric.spread(),
                metric.rms(), std::sqrt(metric.estimated / metric.count));
    const double least = bound(look);
    if (least > 0) {
        std::printf("%.4f |\n", least);
    } else {
        std::printf("|\n");
    }
}

}  // namespace

int main() {
    std::puts(
        "# Accuracy of the edge detectors\n"
        "\n"
        "Made by `docs/tools/accuracy_edges.cpp`; do not edit. Distances in pixels from the true edge, "
        "positive\n"
        "outside the bright shape, of all points found in 16 pictures with random sub-pixel shifts (grey "
        "levels\n"
        "40 and 200, rounded to 8 bits; sigma 1, thresholds 12 and 36). Edges are error functions: a sharp "
        "shape\n"
        "blurred by a Gaussian and integrated over the pixel. Slanted lines have random angles. Of "
        "rectangles\n"
        "only the sides count, not the 12 pixels around a corner.\n"
        "\n"
        "`estimated` is the deviation that the detector itself reports (root mean square); `bound` is the\n"
        "Cramer-Rao bound for a straight edge of known profile and the same smoothing along the edge.\n"
        "\n"
        "Edges of blur 0.4 are undersampled: with the pixel's own share their blur is s = 0.49, and the "
        "first\n"
        "repetition of their spectrum passes the gradient's filter with 2 s^2 exp(-2 pi^2 s^2 / (1 + s^2)) "
        "=\n"
        "0.010 of the edge's amplitude. On edges along an axis this moves the maximum of the filtered edge "
        "by\n"
        "up to 0.02 pixels, to and fro with the phase of the edge. edgesSubPixMetric measures s and takes "
        "the\n"
        "shift back; what is left is the error of that measurement.\n"
        "\n"
        "| shape | blur | noise | EdgesSubPix bias | spread | rms | edgesSubPixMetric bias | spread | rms | "
        "estimated | bound |\n"
        "|---|---|---|---|---|---|---|---|---|---|---|");
    for (const double blur : {0.4, 0.7, 1.0, 1.5}) {
        for (const double noise : {0.0, 2.0, 8.0}) {
            Look look;
            look.blur = blur;
            look.noise = noise;
            printRow("line along an axis", look, [](cv::RNG& random, const Look& l) {
                return lineScene(random, random.uniform(0, 4) * CV_PI / 2, l);
            });
            printRow("line, any angle", look, [](cv::RNG& random, const Look& l) {
                return lineScene(random, random.uniform(0.0, 2 * CV_PI), l);
            });
            printRow("rectangle", look,
                     [](cv::RNG& random, const Look& l) { return rectangleScene(random, l); });
            printRow("disk, radius 10", look,
                     [](cv::RNG& random, const Look& l) { return diskScene(random, 10, l); });
            printRow("disk, radius 20", look,
                     [](cv::RNG& random, const Look& l) { return diskScene(random, 20, l); });
            printRow("disk, radius 60", look,
                     [](cv::RNG& random, const Look& l) { return diskScene(random, 60, l); });
        }
    }
    return 0;
}
