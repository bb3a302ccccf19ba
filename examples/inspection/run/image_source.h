// Which pictures are measured, and reading them.
#ifndef EXAMPLES_INSPECTION_IMAGE_SOURCE_H
#define EXAMPLES_INSPECTION_IMAGE_SOURCE_H

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

namespace inspection {

struct ImageSource {
    std::filesystem::path path;
    std::string problem;  // why there is nothing to read; "" when there may be
};

// Files stay in the order given, whatever their extension. A folder stands for the pictures in it (by
// extension, not in its sub-folders), sorted by name; one without pictures is a source with a problem.
std::vector<ImageSource> listSources(const std::vector<std::string>& inputs);

// The picture in 8-bit grey, turned upright as its file says. Empty when it can't be read, with the reason
// in `problem`: missing, a folder, not a regular file, no permission, empty, not an image, too large.
cv::Mat readGrey(const std::filesystem::path& path, std::string& problem);

// The same, with 16 bits where the file has them.
cv::Mat readDeepGrey(const std::filesystem::path& path, std::string& problem);

// The same, as cv::imread gives it for these flags.
cv::Mat readPicture(const std::filesystem::path& path, int flags, std::string& problem);

// By its extension.
bool isPictureName(const std::filesystem::path& path);

// The path as UTF-8 without control characters and without bytes that are not UTF-8, which become U+FFFD.
std::string displayName(const std::filesystem::path& path);

}  // namespace inspection

#endif
