#include "orxFunctions/files/file_operator.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <system_error>

#include "orxFunctions/platform/file_access_internal.h"
#include "orxFunctions/platform/file_tree_internal.h"

namespace FileOperator {
namespace {

namespace fs = std::filesystem;
namespace platform = orx::platform;

// Runs an operation on the file system; what it throws (no memory, names that can't be converted) is a
// failure.
template <typename Result, typename Operation>
Result guarded(Result failure, Operation operation) {
    try {
        return operation();
    } catch (const std::exception&) {
        return failure;
    }
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

// ".png" for "png", ".png" and "*.png"; "" for "" and "*.*".
std::string wantedExtension(std::string extension) {
    if (!extension.empty() && extension.front() == '*') extension.erase(0, 1);
    if (extension.empty() || extension == ".*") return {};
    return lowerCase(extension.front() == '.' ? extension : "." + extension);
}

bool hasExtension(const std::string& name, const std::string& extension) {
    return name.size() >= extension.size() &&
           lowerCase(name.substr(name.size() - extension.size())) == extension;
}

fs::path withoutTrailingSeparators(const fs::path& path) {
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

// A folder that may be created or deleted: neither nothing nor a root.
bool isOrdinaryFolderName(const fs::path& path) {
    const fs::path name = path.filename();
    return path.has_relative_path() && !name.empty() && name != "." && name != "..";
}

fs::path targetOf(const fs::path& from, const fs::path& to) {
    std::error_code error;
    return fs::is_directory(to, error) ? to / from.filename() : to;
}

bool mayWrite(const fs::path& from, const fs::path& to, bool overwrite) {
    std::error_code error;
    if (!fs::is_regular_file(from, error) || to.empty()) return false;
    if (!fs::exists(fs::symlink_status(to, error))) return true;
    return overwrite && !fs::equivalent(from, to, error) && !error;
}

}  // namespace

std::vector<std::string> listFiles(std::string folder, std::string extension, bool recursive) {
    return guarded(std::vector<std::string>(), [&] {
        std::vector<std::string> files;
        const std::string wanted = wantedExtension(extension);
        const std::error_code error = platform::walkFolder(
            platform::toPath(folder), {recursive, false}, [&](const platform::TreeFile& file) {
                const std::string name = platform::toName(file.path);
                if (hasExtension(name, wanted)) files.push_back(name);
            });
        if (error) return std::vector<std::string>();
        std::sort(files.begin(), files.end());
        return files;
    });
}

std::int64_t folderSize(std::string folder) {
    return guarded(std::int64_t{-1}, [&] {
        std::int64_t size = 0;
        const std::error_code error =
            platform::walkFolder(platform::toPath(folder), {true, true}, [&](const platform::TreeFile& file) {
                if (!file.isLink) size += static_cast<std::int64_t>(file.bytes);
            });
        return error ? std::int64_t{-1} : size;
    });
}

bool fileExists(std::string path) {
    return guarded(false, [&] { return platform::leadsToFile(platform::toPath(path)); });
}

bool folderExists(std::string path) {
    return guarded(false, [&] {
        std::error_code error;
        return fs::is_directory(platform::toPath(path), error);
    });
}

bool hideFile(std::string path) {
    return guarded(false, [&] { return platform::hideFile(platform::toPath(path)); });
}

bool unhideFile(std::string path) {
    return guarded(false, [&] { return platform::unhideFile(platform::toPath(path)); });
}

bool isHidden(std::string path) {
    return guarded(false, [&] { return platform::isHidden(platform::toPath(path)); });
}

bool createFolder(std::string path) {
    return guarded(false, [&] {
        const fs::path folder = platform::toPath(path);
        if (!folder.has_relative_path()) return false;
        std::error_code error;
        fs::create_directories(folder, error);
        return fs::is_directory(folder, error);
    });
}

bool deleteFolder(std::string path) {
    return guarded(false, [&] {
        const fs::path folder = withoutTrailingSeparators(platform::toPath(path));
        std::error_code error;
        if (!isOrdinaryFolderName(folder) || platform::isLink(folder) || !fs::is_directory(folder, error))
            return false;
        return !platform::deleteFolder(folder);
    });
}

bool copyFile(std::string from, std::string to, bool overwrite) {
    return guarded(false, [&] {
        const fs::path source = platform::toPath(from);
        const fs::path target = targetOf(source, platform::toPath(to));
        return mayWrite(source, target, overwrite) && !platform::copyFile(source, target, overwrite);
    });
}

bool moveFile(std::string from, std::string to, bool overwrite) {
    return guarded(false, [&] {
        const fs::path source = platform::toPath(from);
        const fs::path target = targetOf(source, platform::toPath(to));
        if (!mayWrite(source, target, overwrite)) return false;
        std::error_code error;
        fs::rename(source, target, error);
        if (error == std::errc::cross_device_link) {
            error.clear();
            return !platform::copyFile(source, target, overwrite) && fs::remove(source, error);
        }
        return !error;
    });
}

}  // namespace FileOperator
