// Folders with links in them: what the standard library does well on POSIX and not on every Windows. (That of
// GCC sees no links there and would delete what they lead to.)
#ifndef ORXFUNCTIONS_PLATFORM_FILE_TREE_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_FILE_TREE_INTERNAL_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <system_error>

namespace orx::platform {

// A regular file, or a link to one.
struct TreeFile {
    std::filesystem::path path;
    bool isLink = false;
    std::uint64_t bytes = 0;  // only where they were asked for
};

struct TreeWalk {
    bool recursive = false;
    bool withBytes = false;
};

// Hands over the files of a folder, and with `recursive` those of its subfolders, but not of folders behind
// links. What vanishes meanwhile, and subfolders that may not be read, are passed over. The system's error
// where the folder or a subfolder can't be read for another reason; none where all was handed over. Folders
// may lie as deep as they like: only a few are open at a time.
std::error_code walkFolder(const std::filesystem::path& folder, const TreeWalk& walk,
                           const std::function<void(const TreeFile&)>& visit);

// A symbolic link; on Windows also a junction.
bool isLink(const std::filesystem::path& path);

// Copies a file; an existing target is replaced only with `overwrite`. The two must differ.
// What was copied in part, as on a full disk, is removed.
std::error_code copyFile(const std::filesystem::path& from, const std::filesystem::path& to, bool overwrite);

// Deletes a folder with all that is in it; of links themselves, not what they lead to. No error when it is
// gone, else that of the first thing that can't be deleted; the rest is deleted all the same.
std::error_code deleteFolder(const std::filesystem::path& folder);

}  // namespace orx::platform

#endif
