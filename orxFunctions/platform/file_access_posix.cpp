#include "orxFunctions/platform/file_access_internal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kReadableByAll = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool valid() const { return number_ >= 0; }

    // One write call as long as the system takes all bytes at once, which it does for files unless the disk
    // is full.
    bool writeAll(const char* bytes, std::size_t size) const {
        while (size > 0) {
            const ssize_t written = write(number_, bytes, size);
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) return false;
            bytes += written;
            size -= static_cast<std::size_t>(written);
        }
        return true;
    }

    // As long as there is such a file. Its owner is kept where the process may do so; then the rights, which
    // a new owner would take away.
    bool takeRightsOf(const fs::path& path) const {
        struct stat other = {};
        struct stat own = {};
        if (stat(path.c_str(), &other) != 0) return true;
        if (fstat(number_, &own) != 0) return false;
        const bool isOwner = own.st_uid == other.st_uid && own.st_gid == other.st_gid;
        const bool isGiven = isOwner || fchown(number_, other.st_uid, other.st_gid) == 0;
        constexpr mode_t kRights = S_IRWXU | S_IRWXG | S_IRWXO;
        // Rights of a group that it does not get would be those of another one.
        const mode_t kept = other.st_mode & (isGiven ? kRights : kRights & ~S_IRWXG);
        return (own.st_mode & kRights) == kept || fchmod(number_, kept) == 0;
    }

    // Some file systems can't tell; they are believed.
    bool reachesDisk() const { return fsync(number_) == 0 || errno == EINVAL; }

  private:
    int number_;
};

// A regular file opened for reading; -1 for all else. Without waiting: a pipe would, for somebody to write to
// it, and a device need never end.
int openRegularFile(const fs::path& path) {
    const int number = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat info = {};
    if (number < 0 || (fstat(number, &info) == 0 && S_ISREG(info.st_mode))) return number;
    close(number);
    return -1;
}

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

File openToRead(const fs::path& path) {
    const int number = openRegularFile(path);
    if (number < 0) return nullptr;
    File file(fdopen(number, "rb"));
    if (!file) close(number);
    return file;
}

File openToWrite(const fs::path& path) { return File(std::fopen(path.c_str(), "wb")); }

GzipFile openGzip(const fs::path& path, const char* mode) {
    if (mode[0] != 'r') return GzipFile(gzopen(path.c_str(), mode));
    const int number = openRegularFile(path);
    if (number < 0) return nullptr;
    GzipFile file(gzdopen(number, mode));
    if (!file) close(number);
    return file;
}

bool appendText(const std::string& name, const std::string& text) {
    const Descriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kReadableByAll));
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
    return file.valid() && file.takeRightsOf(to) && file.reachesDisk() &&
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
