#include "orxFunctions/platform/file_access_internal.h"

#include <fstream>

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;
constexpr int kMostBeside = 100;
constexpr std::size_t kLongestStem = 200;

// What the path leads to at last, there or not: the link stays, and leads to the new file.
fs::path endOfLinks(fs::path path) {
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(path, error); ++i) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / next;
    }
    return path;
}

// In the same folder, so that the name alone has to change. A name as long as a file system takes has no room
// for more.
fs::path besideOf(const fs::path& path, int number) {
    fs::path name(path.filename().native().substr(0, kLongestStem));
    name += "." + std::to_string(number) + ".new";
    return path.parent_path() / name;
}

// Nothing is there, or a regular file that may be written.
bool canBeReplaced(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) return true;
    return fs::is_regular_file(status) &&
           std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).is_open();
}

}  // namespace

ReplaceResult replaceFile(const fs::path& path, const std::string& bytes) {
    const fs::path target = endOfLinks(path);
    if (target.filename().empty() || !canBeReplaced(target)) return ReplaceResult::kRefused;
    for (int number = 0; number < kMostBeside; ++number) {
        const fs::path beside = besideOf(target, number);
        const CreateResult result = createFile(beside, bytes.data(), bytes.size());
        if (result == CreateResult::kExists) continue;  // another one writes, or was killed
        if (result != CreateResult::kCreated)
            return result == CreateResult::kCut ? ReplaceResult::kCut : ReplaceResult::kRefused;
        if (takePlaceOf(beside, target)) return ReplaceResult::kReplaced;
        std::error_code ignored;
        fs::remove(beside, ignored);
        return ReplaceResult::kCut;
    }
    return ReplaceResult::kRefused;
}

}  // namespace orx::platform
