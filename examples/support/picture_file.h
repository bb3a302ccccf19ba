// Pictures in files whose names have any characters; cv::imread and cv::imwrite take only those of the
// process's code page on Windows.
#ifndef EXAMPLES_SUPPORT_PICTURE_FILE_H
#define EXAMPLES_SUPPORT_PICTURE_FILE_H

#include <filesystem>
#include <opencv2/core.hpp>
#include <vector>

namespace host {

// `flags` and `parameters` are those of cv::imread and cv::imwrite. Empty for what is no picture; false for
// what can't be written, and for an extension that stands for no format.
cv::Mat readPicture(const std::filesystem::path& file, int flags);
bool writePicture(const std::filesystem::path& file, const cv::Mat& picture,
                  const std::vector<int>& parameters = {});

}  // namespace host

#endif
