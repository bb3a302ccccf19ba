// A camera's calibration on disk: an OpenCV persistence file, which any OpenCV program can read.
//
// The extension chooses the format (.xml, .json, else YAML). Keys, in this order: "imageIntrinsic" and
// "imageDistortion" (matrices), "imageSize" (width and height), "description" (text), "isDistortionConfig"
// (1). Reentrant.
#ifndef ORXFUNCTIONS_CALIBRATION_CALIBRATION_FILE_H
#define ORXFUNCTIONS_CALIBRATION_CALIBRATION_FILE_H

#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/api.h"

namespace orx {

// Writes the file, replacing one that exists once the new one is whole on the disk (a killed process leaves
// the earlier one, and perhaps FILE.0.new beside it). The matrices, of two dimensions, keep their type and
// size; doubles keep all their digits (a negative zero becomes zero). Two of a million doubles are too long
// to be read again. OpenCV's exceptions pass through, the one for a file that can't be opened among them: a
// name that leads to no regular file, a file that may not be written, a folder that takes no new one. Where
// the disk has no room nothing is thrown, and the earlier file stays. rcFileName or rcFileUnwritable in both
// cases.
//
// A description comes back byte for byte whatever it holds. OpenCV's formats can't carry every text as a
// string (one that begins or ends with a blank or a quotation mark or begins with '$', one with control
// characters other than tabulators and line ends, or one of more than about 650 bytes other than letters,
// digits and blanks); such a text is written as a sequence of strings, "percent-encoded" and then pieces in
// which each byte but letters and digits is %XX.
ORX_API void calibrateData2File(cv::Mat intrinsic, cv::Mat distortion, cv::Size imageSize,
                                std::string description, std::string fileName);

// Reads what calibrateData2File wrote. False, with the outputs untouched, for a file that can't be opened
// (rcFileName, rcFileMissing, rcFileUnreadable) or understood, that is longer than 64 MiB or opens more than
// 800 brackets, tags or blocks (OpenCV's readers recurse, and a deep file would overflow the stack), or whose
// "isDistortionConfig" is 0 or missing (rcFileFormat). An
// "imageSize" that is not two numbers reads as 0 x 0; other missing keys read as empty.
ORX_API bool calibrateDataFromFile(std::string fileName, cv::Mat& intrinsic, cv::Mat& distortion,
                                   cv::Size& imageSize, std::string& description);

}  // namespace orx

#endif
