// A matrix of doubles in a raw binary file, with a size and a short text: a height map, a calibration result.
//
// Layout, little-endian, without magic number or version: rows and cols (int32), rows * cols elements of 8
// bytes, row by row, size width and height (int32), 255 bytes of text. The file has 271 + 8 * rows * cols
// bytes. For pictures to look at, prefer FileOperator::saveImage. Reentrant.
#ifndef ORXFUNCTIONS_FILES_STREAM_FILE_H
#define ORXFUNCTIONS_FILES_STREAM_FILE_H

#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/api.h"

namespace orx {

// Writes the file, replacing one that exists. False, and no file, for a matrix without elements; false for a
// path that can't be opened, and for one that can't be written to its end, which is then removed
// (rcEmptyImage, rcFileName, rcFileUnwritable).
//
// The elements are the consecutive 8-byte groups from the matrix's first element on; neither its type nor the
// step of its rows is consulted. Convert other types to CV_64F first, and clone a view of a larger matrix:
// they are written as they lie in memory, with zeros for what lies beyond the end of the buffer. A matrix of
// more than two dimensions counts as -1 x -1, as in OpenCV, with one element. Of the text the first 255 bytes
// are kept.
ORX_API bool image2StreamFile(cv::Mat img, cv::Size size, std::string path, std::string text);

// Reads the file into a CV_64F matrix with 1 channel. The content is not judged: what a short file lacks
// reads as zeros, an empty file as an empty matrix. The text ends at its first NUL, so that at most 254
// characters come back as a text that any reader understands (this one returns 255).
//
// False, with the outputs untouched, for a file that can't be opened, where the disk fails while it is read,
// for negative sizes, and for a matrix that can't be allocated. A matrix above 1 GiB is allocated only if the
// file is long enough to hold it, so that a broken file of a few bytes can't take more memory than that
// (rcFileName, rcFileMissing, rcFileUnreadable, rcFileFormat, rcMemory).
ORX_API bool streamFile2Image(std::string path, cv::Mat& img, cv::Size& size, std::string& text);

}  // namespace orx

#endif
