// The results as one JSON file.
#ifndef EXAMPLES_INSPECTION_REPORT_JSON_H
#define EXAMPLES_INSPECTION_REPORT_JSON_H

#include <json/value.h>

#include <string>

#include "inspection/report/result.h"
#include "inspection/run/settings.h"

namespace inspection {

// Collects results. Lengths are pixels (the centre of the top-left pixel at (0, 0)), angles degrees. A
// picture is "measured" (true or false) whatever else failed; its "status" is "measured", "measured with
// problems" or "not measured", its "problems" are a list, and "problem" has them in one line.
class JsonReport {
  public:
    explicit JsonReport(const Settings& settings);

    void add(const ImageResult& result);

    // The report in UTF-8.
    std::string text() const;

  private:
    Json::Value root_;
};

}  // namespace inspection

#endif
