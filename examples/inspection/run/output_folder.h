// Where a run puts its files.
#ifndef EXAMPLES_INSPECTION_OUTPUT_FOLDER_H
#define EXAMPLES_INSPECTION_OUTPUT_FOLDER_H

#include <filesystem>
#include <opencv2/core.hpp>
#include <set>
#include <string>

namespace inspection {

class OutputFolder {
  public:
    explicit OutputFolder(std::filesystem::path path) : path_(std::move(path)) {}

    // Creates the folder where it is missing. False, with the reason in `problem`, when it can't be used.
    bool create(std::string& problem) const;

    // A file that this run has not handed out before: with the suffix "-measured" name-measured.png for
    // name.jpg, name-measured-2.png for the next one of that name.
    std::filesystem::path pictureFor(const std::filesystem::path& source, const std::string& suffix);

    std::filesystem::path file(const std::string& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
    std::set<std::filesystem::path> taken_;
};

// Encoded as the file's extension says; as orx::writeWholeFile else.
bool writeWholePicture(const std::filesystem::path& path, const cv::Mat& picture);
bool writeWholePicture(const std::filesystem::path& path, const std::vector<unsigned char>& encoded);

}  // namespace inspection

#endif
