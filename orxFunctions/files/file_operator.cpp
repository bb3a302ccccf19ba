#include "orxFunctions/files/file_operator.h"

#include <exception>
#include <filesystem>
#include <new>
#include <system_error>

#include "orxFunctions/files/file_listing_internal.h"
#include "orxFunctions/foundation/file_refusal_internal.h"
#include "orxFunctions/foundation/refusal_internal.h"
#include "orxFunctions/platform/file_access_internal.h"
#include "orxFunctions/platform/file_tree_internal.h"

namespace FileOperator {
namespace {

namespace fs = std::filesystem;
namespace platform = orx::platform;
using orx::refuse;

// Runs an operation on the file system; what it throws (no memory, names that can't be converted) is a
// refusal of the public function.
template <typename Result, typename Operation>
Result guarded(const char* function, Result failure, Operation operation) {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        refuse(orx::rcMemory, function);
    } catch (const std::exception& error) {
        refuse(orx::rcFailed, function, "%s", error.what());
    }
    return failure;
}

// ".png" for "png", ".png" and "*.png"; "" for "" and "*.*".
std::string wantedExtension(std::string extension) {
    if (!extension.empty() && extension.front() == '*') extension.erase(0, 1);
    if (extension.empty() || extension == ".*") return {};
    return orx::lowerCase(extension.front() == '.' ? extension : "." + extension);
}

fs::path withoutTrailingSeparators(const fs::path& path) {
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

// Neither nothing, nor a root, nor a folder by way of itself.
bool isOrdinaryName(const fs::path& path) {
    const fs::path name = path.filename();
    return path.has_relative_path() && !name.empty() && name != "." && name != "..";
}

bool refuseName(const char* function, const fs::path& path) {
    return refuse(orx::rcFileName, function, "\"%s\" is empty, a root, or ends in . or ..",
                  platform::shownName(path).c_str());
}

bool isThere(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

// Hides a file or shows it, by `change`.
bool changeHidden(const char* function, const std::string& name, bool (*change)(const fs::path&)) {
    return guarded(function, false, [&] {
        const fs::path path = platform::toPath(name);
        if (change(path)) return true;
        if (!isOrdinaryName(path)) return refuseName(function, path);
        const std::string shown = platform::shownName(path);
        if (!isThere(path) && !platform::isHidden(path))
            return refuse(orx::rcFileMissing, function, "there is no file or folder %s", shown.c_str());
        return refuse(orx::rcFileUnwritable, function,
                      "no right to change it, or its other name is taken: %s", shown.c_str());
    });
}

fs::path targetOf(const fs::path& from, const fs::path& to) {
    std::error_code error;
    return fs::is_directory(to, error) ? to / from.filename() : to;
}

// Whether a file may be copied or moved there.
bool takesTarget(const char* function, const fs::path& from, const fs::path& to, bool overwrite) {
    std::error_code error;
    if (!fs::is_regular_file(from, error)) return orx::refuseToRead(function, from);
    if (to.empty()) return orx::refuseToWrite(function, to);
    if (!isThere(to)) return true;
    if (!overwrite) {
        return refuse(orx::rcFileUnwritable, function, "it exists, and overwrite is false: %s",
                      platform::shownName(to).c_str());
    }
    if (fs::equivalent(from, to, error)) {
        return refuse(orx::rcFileUnwritable, function, "this is the file itself: %s",
                      platform::shownName(to).c_str());
    }
    return !error || orx::refuseToWrite(function, to);
}

bool copy(const char* function, const fs::path& from, const fs::path& to, bool overwrite) {
    return !platform::copyFile(from, to, overwrite) || orx::refuseToWrite(function, to);
}

}  // namespace

std::vector<std::string> listFiles(std::string folder, std::string extension, bool recursive) {
    return guarded("listFiles", std::vector<std::string>(), [&] {
        const fs::path path = platform::toPath(folder);
        std::vector<std::string> files;
        const std::error_code error = orx::filesOf(path, {wantedExtension(extension)}, recursive, files);
        if (error) {
            orx::refuseToList("listFiles", path, error);
            files.clear();
        } else if (files.empty()) {
            refuse(orx::rcNoResult, "listFiles", "no file ends with \"%s\" in %s", extension.c_str(),
                   platform::shownName(path).c_str());
        }
        return files;
    });
}

std::int64_t folderSize(std::string folder) {
    return guarded("folderSize", std::int64_t{-1}, [&] {
        const fs::path path = platform::toPath(folder);
        std::int64_t size = 0;
        const std::error_code error =
            platform::walkFolder(path, {true, true}, [&](const platform::TreeFile& file) {
                if (!file.isLink) size += static_cast<std::int64_t>(file.bytes);
            });
        if (!error) return size;
        orx::refuseToList("folderSize", path, error);
        return std::int64_t{-1};
    });
}

bool fileExists(std::string path) {
    return guarded("fileExists", false, [&] { return platform::leadsToFile(platform::toPath(path)); });
}

bool folderExists(std::string path) {
    return guarded("folderExists", false, [&] {
        std::error_code error;
        return fs::is_directory(platform::toPath(path), error);
    });
}

bool hideFile(std::string path) { return changeHidden("hideFile", path, platform::hideFile); }
bool unhideFile(std::string path) { return changeHidden("unhideFile", path, platform::unhideFile); }

bool isHidden(std::string path) {
    return guarded("isHidden", false, [&] { return platform::isHidden(platform::toPath(path)); });
}

bool createFolder(std::string path) {
    return guarded("createFolder", false, [&] {
        const fs::path folder = platform::toPath(path);
        if (!folder.has_relative_path()) return refuseName("createFolder", folder);
        std::error_code error;
        fs::create_directories(folder, error);
        if (fs::is_directory(folder, error)) return true;
        return refuse(orx::rcFileUnwritable, "createFolder",
                      "no right to create it, or there is a file in its place: %s",
                      platform::shownName(folder).c_str());
    });
}

bool deleteFolder(std::string path) {
    return guarded("deleteFolder", false, [&] {
        const fs::path folder = withoutTrailingSeparators(platform::toPath(path));
        std::error_code error;
        if (!isOrdinaryName(folder)) return refuseName("deleteFolder", folder);
        const std::string name = platform::shownName(folder);
        if (!isThere(folder))
            return refuse(orx::rcFileMissing, "deleteFolder", "there is no folder %s", name.c_str());
        if (platform::isLink(folder) || !fs::is_directory(folder, error))
            return refuse(orx::rcFileUnwritable, "deleteFolder", "this is no folder: %s", name.c_str());
        error = platform::deleteFolder(folder);
        return !error || refuse(orx::rcFileUnwritable, "deleteFolder",
                                "not all of it can be deleted (error %d): %s", error.value(), name.c_str());
    });
}

bool copyFile(std::string from, std::string to, bool overwrite) {
    return guarded("copyFile", false, [&] {
        const fs::path source = platform::toPath(from);
        const fs::path target = targetOf(source, platform::toPath(to));
        return takesTarget("copyFile", source, target, overwrite) &&
               copy("copyFile", source, target, overwrite);
    });
}

bool moveFile(std::string from, std::string to, bool overwrite) {
    return guarded("moveFile", false, [&] {
        const fs::path source = platform::toPath(from);
        const fs::path target = targetOf(source, platform::toPath(to));
        if (!takesTarget("moveFile", source, target, overwrite)) return false;
        std::error_code error;
        fs::rename(source, target, error);
        if (error == std::errc::cross_device_link) {
            if (!copy("moveFile", source, target, overwrite)) return false;
            error.clear();
            fs::remove(source, error);
        }
        return !error || refuse(orx::rcFileUnwritable, "moveFile", "no right to move %s",
                                platform::shownName(source).c_str());
    });
}

}  // namespace FileOperator
