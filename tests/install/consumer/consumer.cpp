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

void measure(const cv::Mat& image) {
    ORXEdge::TMetricOptions finder;
    finder.automaticThresholds = true;
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(image, edges, finder);
    orx::TFitOptions fit;
    fit.loss = orx::flTukey;  // dents and dirt get no say
    for (const ORXEdge::TMetricContour& edge : edges)
        report(orx::fitCircleGeometric(edge, finder.sigma, fit));
}

int main(int, char** arguments) { measure(cv::imread(arguments[1], cv::IMREAD_GRAYSCALE)); }
