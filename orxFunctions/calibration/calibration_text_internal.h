// The texts of calibration files: read with their limits, and written whole.
#ifndef ORXFUNCTIONS_CALIBRATION_CALIBRATION_TEXT_INTERNAL_H
#define ORXFUNCTIONS_CALIBRATION_CALIBRATION_TEXT_INTERNAL_H

#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/platform/file_access_internal.h"

namespace orx {

// The text of a file, inflated where OpenCV compressed it (names that end with .gz). False, refused in the
// name of the public function, when it can't be read (rcFileMissing, rcFileUnreadable), is too long, nests so
// deep that OpenCV's readers would overflow the stack, or is YAML that they would read for ever
// (rcFileFormat).
bool readCalibrationText(const std::string& fileName, std::string& text, const char* function);

// Writes the text whole, in place of an earlier file, compressed where its name ends with .gz. (OpenCV would
// write into the file itself, and only under a name in the code page of the process.)
platform::ReplaceResult writeCalibrationText(const std::string& fileName, const std::string& text);

// True when a matrix holds as many numbers as its size says, so that reading it takes no memory for others.
// An absent one is empty.
bool isMatrix(const cv::FileNode& node);

}  // namespace orx

#endif
