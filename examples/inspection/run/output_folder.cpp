#include "inspection/run/output_folder.h"

#include <system_error>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace inspection {
namespace fs = std::filesystem;

bool OutputFolder::create(std::string& problem) const {
    std::error_code failure;
    fs::create_directories(path_, failure);
    if (failure) {
        problem = failure.message();
        return false;
    }
    if (!fs::is_directory(path_, failure)) problem = "it is not a folder";
    return problem.empty();
}

fs::path OutputFolder::pictureFor(const fs::path& source, const std::string& suffix) {
    const fs::path stem = source.stem();
    for (int count = 1;; ++count) {
        fs::path name = stem;
        name += suffix + (count == 1 ? ".png" : "-" + std::to_string(count) + ".png");
        if (taken_.insert(name).second) return path_ / name;
    }
}

bool writeWholePicture(const fs::path& path, const cv::Mat& picture) {
    std::vector<unsigned char> bytes;
    if (!orx::encodePicture(path.extension().u8string(), picture, bytes)) return false;
    return writeWholePicture(path, bytes);
}

bool writeWholePicture(const fs::path& path, const std::vector<unsigned char>& bytes) {
    return orx::writeWholeFile(path, std::string(bytes.begin(), bytes.end()));
}

}  // namespace inspection
