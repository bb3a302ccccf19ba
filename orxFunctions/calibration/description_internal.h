// Any bytes as a text that OpenCV's persistence formats carry, and a bound on how deep a text makes its
// readers recurse.
#ifndef ORXFUNCTIONS_CALIBRATION_DESCRIPTION_INTERNAL_H
#define ORXFUNCTIONS_CALIBRATION_DESCRIPTION_INTERNAL_H

#include <opencv2/core.hpp>
#include <string>

namespace orx {

void writeDescription(cv::FileStorage& storage, const std::string& key, const std::string& text);

// The text of a string, or of a sequence of strings as writeDescription makes it; "" for anything else.
std::string readDescription(const cv::FileNode& node);

// No less than the number of levels to which a YAML, XML or JSON text nests. It counts everything that may
// open a level, quoted or not, and believes nothing that may close one: quotes and comments differ between
// the formats, and whoever trusts them can be fooled.
int nestingBound(const std::string& text);

}  // namespace orx

#endif
