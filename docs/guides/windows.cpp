// The program of docs/guides/windows.md: texts and file names as they cross the interface, on every platform.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

#include "guide.h"
#include "orxFunctions/orxfunctions.h"

namespace {

void passTexts() {
    // [texts]
    orx::APPshowMessage(zul::toAnsi("零件合格: 44.01 mm"), 0);  // our sources are UTF-8
    std::string text;
    std::string utf8;
    int colour = 0;
    while (orx::APPgetMessage(text, colour)) {
        utf8 = zul::toUtf8(text);  // what crosses the interface is code page 936
        std::printf("%s\n", utf8.c_str());
    }
    // [texts end]
    guide::expect(utf8 == "零件合格: 44.01 mm", "a message comes back as it was");
    guide::expect(text.size() == 18, "a Chinese character is two bytes of code page 936");
    guide::expect(zul::toUtf8(zul::toAnsi("Ø 44 ± 0.1")) == "? 44 ± 0.1",
                  "what code page 936 lacks becomes a question mark");
}

void saveBesideOthers(const std::filesystem::path& folder) {
    const cv::Mat image(48, 64, CV_8UC1, cv::Scalar(77));
    // [names]
    const std::string name = folder.u8string() + "/次品 2";  // on Windows in UTF-8 or code page 936
    std::string file;
    if (!FileOperator::saveImage(image, name, "part-", ".png", &file))
        std::printf("%s\n", orx::lastRefusal().text.c_str());
    FileOperator::flush();  // before the process ends: Windows ends its threads first
    // [names end]
    guide::expect(FileOperator::fileExists(file), "the picture is in a folder with a Chinese name");
    guide::expect(FileOperator::listFiles(name, ".png").size() == 1, "and is listed");
}

void refuse() {
    guide::expect(!FileOperator::createFolder("") && orx::lastRefusal().code == orx::rcFileName,
                  "a name that is none is refused");
    guide::expect(orx::lastRefusal().text == "createFolder: \"\" is empty, a root, or ends in . or ..",
                  "and the refusal says so");
}

void work() {
    // A folder of this run's own, removed at the end.
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("orx-guide-" + std::to_string(now));
    passTexts();
    saveBesideOthers(folder);
    refuse();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

}  // namespace

int main(int argc, char** argv) { return guide::run(argc, argv, work); }
