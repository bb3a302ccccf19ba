#include "support/picture_file.h"

#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

#include "orxFunctions/orxfunctions.h"

namespace host {

cv::Mat readPicture(const std::filesystem::path& file, int flags) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) return {};
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();  // fails, and throws nothing, where the file can't be read to its end
    if (!content) return {};
    const std::string bytes = content.str();
    return bytes.empty() ? cv::Mat()
                         : orx::decodePicture(std::vector<unsigned char>(bytes.begin(), bytes.end()), flags);
}

bool writePicture(const std::filesystem::path& file, const cv::Mat& picture,
                  const std::vector<int>& parameters) {
    std::error_code ignored;
    // A pipe could be waited for without end.
    if (std::filesystem::exists(file, ignored) && !std::filesystem::is_regular_file(file, ignored))
        return false;
    std::vector<uchar> bytes;
    if (!orx::encodePicture(file.extension().u8string(), picture, bytes, parameters)) return false;
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream.fail()) return true;
    std::filesystem::remove(file, ignored);  // half a picture helps nobody
    return false;
}

}  // namespace host
