// Folders with links in them: what the standard library does well on POSIX and not on every Windows. (That of
// GCC sees no links there and would delete what they lead to.)
#ifndef ORXFUNCTIONS_PLATFORM_FILE_TREE_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_FILE_TREE_INTERNAL_H

#include <filesystem>

namespace orx::platform {

// A symbolic link; on Windows also a junction.
bool isLink(const std::filesystem::path& path);

// Copies a file; an existing target is replaced only with `overwrite`. The two must differ.
bool copyFile(const std::filesystem::path& from, const std::filesystem::path& to, bool overwrite);

// Deletes a folder with all that is in it; of links themselves, not what they lead to. True when it is gone.
bool deleteFolder(const std::filesystem::path& folder);

}  // namespace orx::platform

#endif
