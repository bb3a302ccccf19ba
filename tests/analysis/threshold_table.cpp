#include "threshold_table.h"

#include <functional>
#include <sstream>
#include <vector>

#include "orxFunctions/orxfunctions.h"

namespace {

struct Scene {
    std::string name;
    cv::Mat image;
};

// 12 pixels, the first `ofFirst` of one level and the rest of another.
cv::Mat twoLevels(int first, int second, int ofFirst = 6) {
    cv::Mat image(3, 4, CV_8UC1, cv::Scalar(second));
    for (int i = 0; i < ofFirst; ++i) image.data[i] = static_cast<uchar>(first);
    return image;
}

cv::Mat everyLevelOnce() {
    cv::Mat image(16, 16, CV_8UC1);
    for (int i = 0; i < 256; ++i) image.data[i] = static_cast<uchar>(i);
    return image;
}

std::vector<Scene> scenes() {
    return {{"empty", cv::Mat()},
            {"one pixel of 7", cv::Mat(1, 1, CV_8UC1, cv::Scalar(7))},
            {"all 0", twoLevels(0, 0)},
            {"all 128", twoLevels(128, 128)},
            {"all 254", twoLevels(254, 254)},
            {"all 255", twoLevels(255, 255)},
            {"0 and 255", twoLevels(0, 255)},
            {"254 and 255", twoLevels(254, 255)},
            {"100 and 101", twoLevels(100, 101)},
            {"100 (9 of 12) and 200", twoLevels(100, 200, 9)},
            {"every level once", everyLevelOnce()},
            {"three channels", cv::Mat(3, 4, CV_8UC3, cv::Scalar(10, 100, 200))}};
}

struct Method {
    std::string name;
    std::function<int(cv::Mat&)> level;
};

std::vector<Method> methods() {
    const std::pair<const char*, orx::TThresholdMethod> named[] = {
        {"tmOtsu", orx::tmOtsu},         {"tmTriangle", orx::tmTriangle},
        {"tmMinimum", orx::tmMinimum},   {"tmIntermodes", orx::tmIntermodes},
        {"tmHuang", orx::tmHuang},       {"tmIterative", orx::tmIterative},
        {"tmReserved", orx::tmReserved}, {"tmMaxEntropy", orx::tmMaxEntropy},
        {"tmIsoData", orx::tmIsoData},   {"tmMoments", orx::tmMoments},
        {"tmMinError", orx::tmMinError}, {"tmShanbhag", orx::tmShanbhag}};
    std::vector<Method> all;
    for (const auto& [name, method] : named) {
        all.push_back({name, [m = method](cv::Mat& image) { return orx::getThresholdValue(image, m); }});
    }
    all.push_back({"required number 0",
                   [](cv::Mat& image) { return orx::getThresholdValueByRequiredNumber(image, 0); }});
    return all;
}

}  // namespace

std::string thresholdTable() {
    std::ostringstream page;
    page
        << "# Thresholds of images that leave nothing to choose\n\n"
           "What each method of `getThresholdValue`, and `getThresholdValueByRequiredNumber`, answers where\n"
           "there are not two classes to tell apart. -1 means that the method finds no level. The program\n"
           "`threshold_table` of the test build prints this page; a test compares it with what is kept "
           "here.\n\n";
    std::vector<Scene> columns = scenes();
    page << "| method |";
    for (const Scene& scene : columns) page << ' ' << scene.name << " |";
    page << "\n|---|";
    for (std::size_t i = 0; i < columns.size(); ++i) page << "---:|";
    page << '\n';
    for (const Method& method : methods()) {
        page << "| " << method.name << " |";
        for (Scene& scene : columns) page << ' ' << method.level(scene.image) << " |";
        page << '\n';
    }
    return page.str();
}
