// Everything that is known about one picture after measuring it.
#ifndef EXAMPLES_INSPECTION_RESULT_H
#define EXAMPLES_INSPECTION_RESULT_H

#include <array>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "inspection/analyse/analyses.h"
#include "inspection/measure/measurement.h"
#include "inspection/measure/truth_check.h"
#include "inspection/report/section.h"

namespace inspection {

struct ImageResult {
    std::string name;     // UTF-8, fit for showing
    std::string problem;  // why it could not be measured; "" when it was

    cv::Size size;
    int level = 0;
    bool brightObjects = true;
    std::array<int, 256> histogram{};
    std::vector<Feature> features;
    Analyses analyses;
    std::vector<Section> sections;  // the analyses for people

    bool hasTruth = false;
    std::vector<TruthError> truth;

    std::string annotatedFile;           // UTF-8; "" when there is none
    std::vector<std::string> moreFiles;  // further pictures, UTF-8
    std::vector<std::string> messages;   // of the library, UTF-8

    bool measured() const { return problem.empty(); }
};

}  // namespace inspection

#endif
