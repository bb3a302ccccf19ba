#include "orxFunctions/platform/file_tree_internal.h"

#include <windows.h>

#include <system_error>
#include <vector>

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

DWORD attributesOf(const fs::path& path) { return GetFileAttributesW(path.c_str()); }

bool has(DWORD attributes, DWORD attribute) {
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

// Files and folders that may not be written can't be deleted either, unless that is changed first.
void makeWritable(const fs::path& path, DWORD attributes) {
    if (has(attributes, FILE_ATTRIBUTE_READONLY)) SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

bool deleteEntry(const fs::path& path) {
    const DWORD attributes = attributesOf(path);
    const bool isFolder = has(attributes, FILE_ATTRIBUTE_DIRECTORY);
    if (isFolder && !has(attributes, FILE_ATTRIBUTE_REPARSE_POINT)) return deleteFolder(path);
    makeWritable(path, attributes);
    // A link to a folder is deleted like an empty folder.
    return (isFolder ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str())) != FALSE;
}

// Listed before anything is deleted: a folder that changes while it is read may be read wrongly.
std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        entries.push_back(at->path());
    }
    return entries;
}

}  // namespace

bool isLink(const fs::path& path) { return has(attributesOf(path), FILE_ATTRIBUTE_REPARSE_POINT); }

bool copyFile(const fs::path& from, const fs::path& to, bool overwrite) {
    return CopyFileW(from.c_str(), to.c_str(), overwrite ? FALSE : TRUE) != FALSE;
}

bool deleteFolder(const fs::path& folder) {
    makeWritable(folder, attributesOf(folder));
    bool complete = true;
    for (const fs::path& entry : entriesOf(folder)) complete = deleteEntry(entry) && complete;
    return complete && RemoveDirectoryW(folder.c_str()) != FALSE;
}

}  // namespace orx::platform
