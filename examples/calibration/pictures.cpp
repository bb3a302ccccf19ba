#include "calibration/pictures.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <set>

#include "support/picture_file.h"

namespace calibration {
namespace {

namespace fs = std::filesystem;

bool isPictureName(const fs::path& path) {
    static const std::set<std::string> kExtensions{".bmp", ".dib", ".jpg", ".jpeg", ".jpe", ".jp2",  ".png",
                                                   ".pbm", ".pgm", ".ppm", ".pnm",  ".tif", ".tiff", ".webp"};
    std::string extension = path.extension().u8string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return kExtensions.count(extension) != 0;
}

orx::TTargetView look(const std::string& file, const orx::TTarget& target) {
    const cv::Mat picture = host::readPicture(fs::u8path(file), cv::IMREAD_ANYDEPTH | cv::IMREAD_GRAYSCALE);
    if (!picture.empty()) return orx::findTarget(picture, target);
    orx::TTargetView view;
    view.problem = "it is no picture";
    return view;
}

}  // namespace

std::vector<std::string> listPictures(const std::string& path) {
    // Not by FileOperator::listFiles, whose names are in code page 936 on Windows.
    std::error_code error;
    const fs::path place = fs::u8path(path);
    if (!fs::is_directory(place, error))
        return fs::exists(place, error) ? std::vector<std::string>{path} : std::vector<std::string>{};
    std::vector<std::string> files;
    for (fs::directory_iterator entry(place, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        if (isPictureName(entry->path())) files.push_back(entry->path().u8string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<Photograph> readPhotographs(const std::vector<std::string>& files, const orx::TTarget& target) {
    std::vector<Photograph> photographs;
    for (const std::string& file : files) photographs.push_back({file, look(file, target)});
    return photographs;
}

std::vector<orx::TTargetView> viewsOf(const std::vector<Photograph>& photographs) {
    std::vector<orx::TTargetView> views;
    for (const Photograph& photograph : photographs) views.push_back(photograph.view);
    return views;
}

}  // namespace calibration
