#include "orxFunctions/platform/file_tree_internal.h"

#include <windows.h>

#include <system_error>
#include <utility>
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

std::error_code lastError() { return {static_cast<int>(GetLastError()), std::system_category()}; }

bool hasVanished(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

// Listed before anything is deleted: a folder that changes while it is read may be read wrongly.
std::error_code entriesOf(const fs::path& folder, std::vector<fs::directory_entry>& entries) {
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        entries.push_back(*at);
    }
    return error;
}

std::error_code deleteEntry(const fs::path& path) {
    const DWORD attributes = attributesOf(path);
    const bool isFolder = has(attributes, FILE_ATTRIBUTE_DIRECTORY);
    if (isFolder && !has(attributes, FILE_ATTRIBUTE_REPARSE_POINT)) return deleteFolder(path);
    makeWritable(path, attributes);
    // A link to a folder is deleted like an empty folder.
    const BOOL deleted = isFolder ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str());
    return deleted || attributesOf(path) == INVALID_FILE_ATTRIBUTES ? std::error_code() : lastError();
}

void handOver(const fs::directory_entry& entry, bool withBytes,
              const std::function<void(const TreeFile&)>& visit) {
    std::error_code error;
    if (!entry.is_regular_file(error)) return;
    TreeFile file{entry.path(), isLink(entry.path()), 0};
    if (withBytes) file.bytes = entry.file_size(error);
    if (!error) visit(file);
}

}  // namespace

std::error_code walkFolder(const fs::path& folder, const TreeWalk& walk,
                           const std::function<void(const TreeFile&)>& visit) {
    std::error_code first;
    std::vector<fs::path> folders = {folder};
    for (bool isTop = true; !folders.empty(); isTop = false) {
        const fs::path next = std::move(folders.back());
        folders.pop_back();
        std::vector<fs::directory_entry> entries;
        const std::error_code error = entriesOf(next, entries);
        const bool isPassedOver = hasVanished(error) || error == std::errc::permission_denied;
        if (error && !first && (isTop || !isPassedOver)) first = error;
        for (const fs::directory_entry& entry : entries) {
            std::error_code ignored;
            if (!entry.is_directory(ignored))
                handOver(entry, walk.withBytes, visit);
            else if (walk.recursive && !isLink(entry.path()))
                folders.push_back(entry.path());
        }
    }
    return first;
}

bool isLink(const fs::path& path) { return has(attributesOf(path), FILE_ATTRIBUTE_REPARSE_POINT); }

std::error_code copyFile(const fs::path& from, const fs::path& to, bool overwrite) {
    if (CopyFileW(from.c_str(), to.c_str(), overwrite ? FALSE : TRUE)) return {};
    return lastError();
}

std::error_code deleteFolder(const fs::path& folder) {
    makeWritable(folder, attributesOf(folder));
    std::vector<fs::directory_entry> entries;
    std::error_code first = entriesOf(folder, entries);
    for (const fs::directory_entry& entry : entries) {
        const std::error_code error = deleteEntry(entry.path());
        if (!first) first = error;
    }
    if (!RemoveDirectoryW(folder.c_str()) && !first) first = lastError();
    return attributesOf(folder) == INVALID_FILE_ATTRIBUTES ? std::error_code() : first;
}

}  // namespace orx::platform
