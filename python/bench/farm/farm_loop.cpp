// The inspection of scene.py in C++: names of pictures on standard input, the processor time that all of them
// took on standard output. What the loops of the Python package are measured against.
#include <algorithm>
#include <cstddef>
#include <ctime>
#include <fstream>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "orxFunctions/analysis/subpixel_edges_metric.h"
#include "orxFunctions/analysis/threshold.h"
#include "orxFunctions/files/picture_bytes.h"
#include "orxFunctions/fitting/geometric_fit.h"

namespace {

double secondsNow() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

cv::Mat read(const std::string& name) {
    std::ifstream file(name, std::ios::binary | std::ios::ate);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(std::max<std::streamoff>(0, file.tellg())));
    file.seekg(0);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return orx::decodePicture(bytes, cv::IMREAD_GRAYSCALE);
}

// The sum of all that was measured, so that nothing can be left out.
double inspect(const std::string& name) {
    const cv::Mat image = read(name);
    double sum = orx::getThresholdValue(image, orx::tmOtsu);
    ORXEdge::TMetricOptions finder;
    finder.minPoints = 60;
    std::vector<ORXEdge::TMetricContour> edges;
    ORXEdge::edgesSubPixMetric(image, edges, finder);
    for (const ORXEdge::TMetricContour& edge : edges) {
        sum += orx::fitCircleGeometric(edge.points).radius;
    }
    return sum;
}

}  // namespace

int main() {
    cv::setNumThreads(1);
    std::vector<std::string> names;
    for (std::string name; std::getline(std::cin, name);) names.push_back(name);
    if (names.empty()) return 2;
    inspect(names.front());  // what is loaded with the first picture belongs to no picture
    const double start = secondsNow();
    double sum = 0;
    for (const std::string& name : names) sum += inspect(name);
    std::cout << R"({"seconds": )" << secondsNow() - start << R"(, "sum": )" << sum << "}\n";
    return 0;
}
