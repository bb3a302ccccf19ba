// Pictures in files whose names have any characters; cv::imread and cv::imwrite take only those of the
// process's code page on Windows.
#ifndef EXAMPLES_SUPPORT_PICTURE_FILE_H
#define EXAMPLES_SUPPORT_PICTURE_FILE_H

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <opencv2/core.hpp>
#include <vector>

namespace host {

// `flags` and `parameters` are those of cv::imread and cv::imwrite. Empty for what is no picture; false for
// what can't be written, and for an extension that stands for no format.
cv::Mat readPicture(const std::filesystem::path& file, int flags);
bool writePicture(const std::filesystem::path& file, const cv::Mat& picture,
                  const std::vector<int>& parameters = {});

// What is left of a stream, to its end: about `expected` bytes, or more or fewer when that is not so. Takes
// memory for no more than 64 MiB before they are there.
std::vector<unsigned char> bytesOf(std::istream& stream, std::uintmax_t expected);

}  // namespace host

#endif
