#include <cstdio>
#include <opencv2/imgcodecs.hpp>

#include "orxFunctions/orxfunctions.h"

void report(const orx::TMeasuredCircle& circle) {
    const double diameter = 2 * circle.radius, uncertainty = 2 * circle.radiusDeviation;
    const double half = uncertainty * orx::coverageFactor(0.95, circle.degreesOfFreedom);
    if (!circle.valid() || circle.sweep < 300 || half > 1) return;  // part of a circle, or none
    std::printf("(%.2f, %.2f): diameter %.3f, standard uncertainty %.3f; with 95 %%: %.3f to %.3f\n",
                circle.center.x, circle.center.y, diameter, uncertainty, diameter - half, diameter + half);
}

bool measure(const cv::Mat& image) {
    ORXEdge::TMetricOptions finder;
    finder.automaticThresholds = true;
    std::vector<ORXEdge::TMetricContour> edges;
    if (!ORXEdge::edgesSubPixMetric(image, edges, finder)) return false;  // orx::lastRefusal() says why
    orx::TFitOptions fit;
    fit.loss = orx::flTukey;  // dents and dirt get no say
    for (const ORXEdge::TMetricContour& edge : edges)
        report(orx::fitCircleGeometric(edge, finder.sigma, fit));
    return true;
}

int main(int count, char** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: consumer PICTURE\n");
        return 2;
    }
    if (measure(cv::imread(arguments[1], cv::IMREAD_GRAYSCALE))) return 0;
    std::fprintf(stderr, "%s: %s\n", arguments[1], orx::lastRefusal().text.c_str());
    return 1;
}
