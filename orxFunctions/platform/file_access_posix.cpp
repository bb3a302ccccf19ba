#include "orxFunctions/platform/file_access_internal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "orxFunctions/platform/descriptor_posix_internal.h"

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

// An emptied or a new file.
Descriptor openEmptied(const fs::path& path) {
    Descriptor file = openRegularFile(path, O_WRONLY | O_CREAT);
    if (file.valid() && ::ftruncate(file.get(), 0) != 0) file.close();
    return file;
}

File asStream(Descriptor descriptor, const char* mode) {
    File file(descriptor.valid() ? ::fdopen(descriptor.get(), mode) : nullptr);
    if (file) descriptor.release();
    return file;
}

// As long as there is such a file. Its owner is kept where the process may do so; then the rights, which a
// new owner would take away.
bool takeRightsOf(const fs::path& path, const Descriptor& file) {
    struct stat other = {};
    struct stat own = {};
    if (stat(path.c_str(), &other) != 0) return true;
    if (fstat(file.get(), &own) != 0) return false;
    const bool isOwner = own.st_uid == other.st_uid && own.st_gid == other.st_gid;
    const bool isGiven = isOwner || fchown(file.get(), other.st_uid, other.st_gid) == 0;
    constexpr mode_t kRights = S_IRWXU | S_IRWXG | S_IRWXO;
    // Rights of a group that it does not get would be those of another one.
    const mode_t kept = other.st_mode & (isGiven ? kRights : kRights & ~S_IRWXG);
    return (own.st_mode & kRights) == kept || fchmod(file.get(), kept) == 0;
}

// Some file systems can't tell; they are believed.
bool reachesDisk(const Descriptor& file) { return fsync(file.get()) == 0 || errno == EINVAL; }

bool hasHiddenName(const fs::path& path) {
    const std::string name = path.filename().string();
    return name.size() > 1 && name.front() == '.' && name != "..";
}

fs::path hiddenPath(const fs::path& path) {
    return hasHiddenName(path) ? path : path.parent_path() / ("." + path.filename().string());
}

fs::path visiblePath(const fs::path& path) {
    return hasHiddenName(path) ? path.parent_path() / path.filename().string().substr(1) : path;
}

bool isPresent(const fs::path& path) {
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

// Gives the file its other name, unless it has it already or another file has.
bool giveName(const fs::path& from, const fs::path& to) {
    if (to.filename().empty() || to.filename() == ".." || to.filename() == ".") return false;
    if (!isPresent(from)) return isPresent(to);
    if (isPresent(to)) return false;
    std::error_code error;
    fs::rename(from, to, error);
    return !error;
}

}  // namespace

Descriptor openRegularFile(const fs::path& path, int flags) {
    const auto isOther = [](const struct stat& info) {
        if (S_ISREG(info.st_mode)) return false;
        errno = S_ISDIR(info.st_mode) ? EISDIR : ENXIO;
        return true;
    };
    struct stat info = {};
    if (::stat(path.c_str(), &info) == 0 && isOther(info)) return Descriptor();
    // Looked at again, and opened without waiting: it may have become another one since.
    Descriptor file(::open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, kReadableByAll));
    if (file.valid() && (::fstat(file.get(), &info) != 0 || isOther(info))) file.close();
    return file;
}

File openToRead(const fs::path& path) { return asStream(openRegularFile(path, O_RDONLY), "rb"); }
File openToWrite(const fs::path& path) { return asStream(openEmptied(path), "wb"); }

GzipFile openGzip(const fs::path& path) {
    Descriptor descriptor = openRegularFile(path, O_RDONLY);
    GzipFile file(descriptor.valid() ? gzdopen(descriptor.get(), "rb") : nullptr);
    if (file) descriptor.release();
    return file;
}

bool appendText(const std::string& name, const std::string& text) {
    const Descriptor file = openRegularFile(name, O_WRONLY | O_CREAT | O_APPEND);
    return file.valid() && file.writeAll(text.data(), text.size());
}

CreateResult createFile(const fs::path& path, const void* bytes, std::size_t size) {
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kReadableByAll));
    if (!file.valid()) return errno == EEXIST ? CreateResult::kExists : CreateResult::kFailed;
    if (file.writeAll(static_cast<const char*>(bytes), size)) return CreateResult::kCreated;
    unlink(path.c_str());  // half an image is worse than none
    return CreateResult::kCut;
}

bool takePlaceOf(const fs::path& from, const fs::path& to) {
    const Descriptor file(::open(from.c_str(), O_WRONLY | O_CLOEXEC));
    return file.valid() && takeRightsOf(to, file) && reachesDisk(file) &&
           std::rename(from.c_str(), to.c_str()) == 0;
}

std::string withPlatformLineEnds(const std::string& text) { return text; }

bool hideFile(const fs::path& path) { return giveName(visiblePath(path), hiddenPath(path)); }
bool unhideFile(const fs::path& path) { return giveName(hiddenPath(path), visiblePath(path)); }
bool isHidden(const fs::path& path) {
    const fs::path hidden = hiddenPath(path);
    return hasHiddenName(hidden) && isPresent(hidden) && !isPresent(visiblePath(path));
}

}  // namespace orx::platform
