// A part of the reports: what people read, and what they look at.
#ifndef EXAMPLES_INSPECTION_SECTION_H
#define EXAMPLES_INSPECTION_SECTION_H

#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace inspection {

struct Figure {
    std::string svg;
    std::string caption;
};

struct Section {
    std::string title;
    std::string note;                            // one line below the title; may be ""
    std::vector<std::vector<std::string>> rows;  // the first is the heading
    std::string suffix;                          // of the picture's file name; "" when there is no picture
    cv::Mat picture;
    std::vector<Figure> figures;  // for the HTML report
};

}  // namespace inspection

#endif
