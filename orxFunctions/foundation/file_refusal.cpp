#include "orxFunctions/foundation/file_refusal_internal.h"

#include <string>

#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/file_name_internal.h"

namespace orx {
namespace {

namespace fs = std::filesystem;

fs::file_status statusOf(const fs::path& path) {
    std::error_code ignored;
    return fs::status(path, ignored);
}

bool isFolder(const fs::path& path) { return fs::is_directory(statusOf(path)); }

bool refuseEmptyName(const char* function) {
    return refuse(rcFileName, function, "the name is empty, or no text that names a file");
}

}  // namespace

bool refuseToRead(const char* function, const fs::path& file) {
    if (file.empty()) return refuseEmptyName(function);
    const fs::file_status status = statusOf(file);
    const std::string name = platform::shownName(file);
    if (status.type() == fs::file_type::not_found)
        return refuse(rcFileMissing, function, "there is no file %s", name.c_str());
    if (fs::is_directory(status))
        return refuse(rcFileUnreadable, function, "this is a folder: %s", name.c_str());
    if (fs::exists(status) && !fs::is_regular_file(status))
        return refuse(rcFileUnreadable, function, "a pipe, socket or device is not read: %s", name.c_str());
    return refuse(rcFileUnreadable, function, "the file can't be read: %s", name.c_str());
}

bool refuseToWrite(const char* function, const fs::path& file) {
    if (file.empty()) return refuseEmptyName(function);
    const fs::file_status status = statusOf(file);
    const std::string name = platform::shownName(file);
    if (fs::is_directory(status))
        return refuse(rcFileUnwritable, function, "this is a folder: %s", name.c_str());
    if (fs::exists(status) && !fs::is_regular_file(status))
        return refuse(rcFileUnwritable, function, "a pipe, socket or device is not written to: %s",
                      name.c_str());
    const fs::path folder = file.parent_path();
    if (!folder.empty() && !isFolder(folder)) {
        return refuse(rcFileUnwritable, function, "there is no folder %s to write into",
                      platform::shownName(folder).c_str());
    }
    return refuse(rcFileUnwritable, function, "no right or no room to write the file: %s", name.c_str());
}

bool refuseToList(const char* function, const fs::path& folder, const std::error_code& error) {
    if (folder.empty()) return refuseEmptyName(function);
    const fs::file_status status = statusOf(folder);
    const std::string name = platform::shownName(folder);
    if (status.type() == fs::file_type::not_found)
        return refuse(rcFileMissing, function, "there is no folder %s", name.c_str());
    if (fs::exists(status) && !fs::is_directory(status))
        return refuse(rcFileUnreadable, function, "this is no folder: %s", name.c_str());
    return refuse(rcFileUnreadable, function, "the folder, or one in it, can't be read (error %d): %s",
                  error.value(), name.c_str());
}

}  // namespace orx
