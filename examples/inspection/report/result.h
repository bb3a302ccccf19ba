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

enum class Status {
    kNotMeasured,  // it can't be read, or has no level: only the name and the problems say anything
    kMeasured,     // also where something else failed, which the problems say
};

struct ImageResult {
    std::string name;  // UTF-8, fit for showing
    Status status = Status::kNotMeasured;
    std::vector<std::string> problems;  // what failed, in the order in which it did; UTF-8

    cv::Size size;
    bool hasShapes = true;  // false where parts were looked for, and level, objects and features say nothing
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

    bool measured() const { return status == Status::kMeasured; }
    // All of it: measured, and nothing failed beside it.
    bool complete() const { return measured() && problems.empty(); }
    // All problems in one line.
    std::string problemText() const;
};

// What became of the pictures of a run.
class Tally {
  public:
    void add(const ImageResult& result);
    // "3 measured (1 with problems), 1 failed".
    std::string text() const;
    bool allComplete() const { return failed_ == 0 && withProblems_ == 0; }

  private:
    int measured_ = 0;
    int withProblems_ = 0;  // of the measured
    int failed_ = 0;
};

}  // namespace inspection

#endif
