#include "guide.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

#include "support/picture_file.h"

namespace guide {
namespace {

std::filesystem::path folder;
bool failed = false;

}  // namespace

int run(int argc, char** argv, const std::function<void()>& make) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER    writes the pictures of its page there\n", argv[0]);
        return 2;
    }
    folder = std::filesystem::u8path(argv[1]);
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);  // what is wrong with it is told by save
    make();
    return failed ? 1 : 0;
}

void save(const std::string& name, const cv::Mat& picture) {
    const std::filesystem::path file = folder / (name + ".png");
    expect(host::writePicture(file, picture), file.u8string() + " can be written");
}

void expect(bool holds, const std::string& what) {
    if (holds) return;
    std::fprintf(stderr, "this is not so: %s\n", what.c_str());
    failed = true;
}

}  // namespace guide
