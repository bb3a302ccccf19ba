#include "orxFunctions/platform/file_tree_internal.h"

#include <system_error>

namespace orx::platform {

namespace fs = std::filesystem;

bool isLink(const fs::path& path) {
    std::error_code error;
    return fs::is_symlink(path, error);
}

bool copyFile(const fs::path& from, const fs::path& to, bool overwrite) {
    std::error_code error;
    const auto option = overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none;
    return fs::copy_file(from, to, option, error) && !error;
}

bool deleteFolder(const fs::path& folder) {
    std::error_code error;
    fs::remove_all(folder, error);
    return !error && !fs::exists(fs::symlink_status(folder, error));
}

}  // namespace orx::platform
