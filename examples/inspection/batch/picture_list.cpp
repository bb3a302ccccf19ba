#include "inspection/batch/picture_list.h"

#include <algorithm>
#include <system_error>

#include "inspection/run/image_source.h"

namespace inspection {
namespace {

namespace fs = std::filesystem;

fs::path absoluteOf(const fs::path& path) {
    std::error_code failure;
    const fs::path absolute = fs::absolute(path, failure);
    return (failure ? path : absolute).lexically_normal();
}

PictureFile pictureFile(const fs::path& path) {
    PictureFile file;
    file.path = path;
    file.name = displayName(path);
    const fs::path absolute = absoluteOf(path);
    file.id = hashOf(absolute.u8string());
    std::error_code failure;
    if (!fs::is_regular_file(path, failure)) return file;
    const auto bytes = fs::file_size(path, failure);
    if (failure) return file;
    const auto modified = fs::last_write_time(path, failure);
    if (failure) return file;
    file.bytes = bytes;
    file.modified = static_cast<std::int64_t>(modified.time_since_epoch().count());
    return file;
}

void listRecursively(const fs::path& folder, const fs::path& output, PictureList& list) {
    std::error_code failure;
    std::vector<fs::path> files;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, failure);
    for (; !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure)) {
        std::error_code ignored;
        if (entry->is_directory(ignored)) {
            if (absoluteOf(entry->path()) == output) entry.disable_recursion_pending();
        } else if (isPictureName(entry->path())) {
            files.push_back(entry->path());
        }
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) list.files.push_back(pictureFile(file));
    if (failure) list.problems.push_back(displayName(folder) + ": can't be read: " + failure.message());
    if (files.empty() && !failure) list.problems.push_back(displayName(folder) + ": no picture in it");
}

}  // namespace

PictureList listPictures(const std::vector<std::string>& inputs, bool recursive, const fs::path& output) {
    PictureList list;
    fs::path written = absoluteOf(output);
    if (written.filename().empty()) written = written.parent_path();
    for (const std::string& input : inputs) {
        const fs::path path = fs::u8path(input);
        std::error_code ignored;
        if (recursive && fs::is_directory(path, ignored)) {
            listRecursively(path, written, list);
            continue;
        }
        for (const ImageSource& source : listSources({input})) {
            if (!source.problem.empty())
                list.problems.push_back(displayName(source.path) + ": " + source.problem);
            else
                list.files.push_back(pictureFile(source.path));
        }
    }
    return list;
}

std::uint64_t hashOf(const std::string& bytes, std::uint64_t seed) {
    std::uint64_t hash = seed;
    for (const char byte : bytes) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 1099511628211ULL;
    }
    return hash;
}

std::string hexOf(std::uint64_t number) {
    std::string text(16, '0');
    for (std::size_t i = 16; i-- > 0; number >>= 4U) text[i] = "0123456789abcdef"[number & 15U];
    return text;
}

}  // namespace inspection
