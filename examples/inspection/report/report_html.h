// The results as one HTML file that needs no other file and no network.
#ifndef EXAMPLES_INSPECTION_REPORT_HTML_H
#define EXAMPLES_INSPECTION_REPORT_HTML_H

#include <opencv2/core.hpp>
#include <ostream>
#include <string>

#include "inspection/report/result.h"
#include "inspection/run/settings.h"

namespace inspection {

// Writes as it goes, so that the pictures of a long run never lie in memory together. Every text that comes
// from outside (names, reasons, messages) is escaped.
class HtmlReport {
  public:
    HtmlReport(std::ostream& out, const Settings& settings);

    // `annotated` is embedded, shrunk when it is large; it may be empty.
    void add(const ImageResult& result, const cv::Mat& annotated);

    // Ends the document; nothing may be added after it.
    void finish();

  private:
    std::ostream& out_;
    std::string method_;
    Tally tally_;
};

}  // namespace inspection

#endif
