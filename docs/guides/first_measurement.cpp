// Guide "first measurement": the diameters of a washer, and how well they are known.
#include <algorithm>
#include <cstdio>

#include "canvas.h"
#include "orxFunctions/orxfunctions.h"
#include "support/synthetic_scene.h"

namespace {

// [edges]
std::vector<ORXEdge::TMetricContour> findEdges(const cv::Mat& grey) {
    ORXEdge::TMetricOptions options;
    options.automaticThresholds = true;
    options.minPoints = 40;  // leaves out specks
    std::vector<ORXEdge::TMetricContour> edges;
    if (!ORXEdge::edgesSubPixMetric(grey, edges, options))
        std::printf("refused: %s\n", orx::lastRefusal().text.c_str());
    return edges;
}
// [edges end]

// [circles]
std::vector<orx::TMeasuredCircle> measureCircles(const std::vector<ORXEdge::TMetricContour>& edges) {
    std::vector<orx::TMeasuredCircle> circles;
    for (const ORXEdge::TMetricContour& edge : edges) {
        const orx::TMeasuredCircle circle = orx::fitCircleGeometric(edge, 1.0);  // the sigma of the edges
        if (circle.valid())
            circles.push_back(circle);
        else
            std::printf("no circle: %s\n", orx::fitStatusText(circle.status));
    }
    const auto larger = [](const auto& a, const auto& b) { return a.radius > b.radius; };
    std::sort(circles.begin(), circles.end(), larger);
    return circles;
}
// [circles end]

// [report]
void report(const char* name, const orx::TMeasuredCircle& circle) {
    const double diameter = 2 * circle.radius;
    const double uncertainty = 2 * circle.radiusDeviation;
    const double half = uncertainty * orx::coverageFactor(0.95, circle.degreesOfFreedom);
    std::printf("%s: %.3f pixels, between %.3f and %.3f with 95 %%\n", name, diameter, diameter - half,
                diameter + half);
}
// [report end]

const scenes::Disk kOuter{{118.37, 90.72}, 71.25};
const scenes::Disk kHole{{118.90, 90.44}, 30.80};

cv::Mat washer() {
    cv::Mat ideal(182, 240, CV_32F, cv::Scalar(50.0));
    scenes::paint(ideal, kOuter, 190.0);
    scenes::paint(ideal, kHole, 50.0);
    return scenes::expose(ideal, {0.2, 0.8, 2.5, 3});
}

cv::Mat drawEdges(const cv::Mat& image, const std::vector<ORXEdge::TMetricContour>& edges,
                  const std::vector<orx::TMeasuredCircle>& circles) {
    guide::Enlarged whole(image, 2);
    guide::Enlarged near(image, {169, 42, 26, 26}, 14);
    for (guide::Enlarged* panel : {&whole, &near})
        for (const orx::TMeasuredCircle& circle : circles)
            panel->circle(circle.center, circle.radius, guide::kBlue, 2);
    for (const ORXEdge::TMetricContour& edge : edges)
        for (const cv::Point2f& point : edge.points) near.dot(point, 3.5, guide::kOrange);
    return guide::sheet({whole.canvas(), near.canvas()}, 2);
}

void make() {
    const cv::Mat image = washer();
    const auto edges = findEdges(image);
    const auto circles = measureCircles(edges);
    guide::expect(edges.size() == 2 && circles.size() == 2, "there are two edges, and both are circles");
    if (circles.size() != 2) return;
    report("outer diameter", circles[0]);
    report("hole", circles[1]);
    guide::save("first-measurement-image", image);
    guide::save("first-measurement-edges", drawEdges(image, edges, circles));

    guide::expectAbout(2 * circles[0].radius, 142.5, 0.03, "outer diameter");
    guide::expectAbout(2 * circles[1].radius, 61.6, 0.04, "diameter of the hole");
    guide::expectAbout(2 * circles[0].radiusDeviation, 0.004, 0.002, "uncertainty of the outer diameter");

    // [distance]
    const orx::TMeasuredValue shift = orx::distance(circles[0], circles[1]);
    std::printf("the hole lies %.3f pixels from the middle, standard uncertainty %.3f\n", shift.value,
                shift.deviation);
    // [distance end]

    // [colour]
    const cv::Mat colour(182, 240, CV_8UC3, cv::Scalar(50, 60, 70));
    std::printf("%zu edges\n", findEdges(colour).size());
    // [colour end]
    guide::expect(orx::lastRefusal().code == orx::rcImageType, "a colour image is refused by its type");

    // [nothing]
    const cv::Mat empty(182, 240, CV_8UC1, cv::Scalar(50));
    std::printf("%zu edges\n", findEdges(empty).size());  // no refusal: there is nothing in it
    // [nothing end]
    guide::expect(findEdges(empty).empty(), "an even picture has no edges");
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, make); }
