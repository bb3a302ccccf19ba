#include "orxFunctions/platform/file_tree_internal.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "orxFunctions/platform/descriptor_posix_internal.h"
#include "orxFunctions/platform/file_access_internal.h"

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

std::error_code lastError() { return {errno, std::generic_category()}; }

// Gone, or something else in its place.
bool hasVanished(const std::error_code& error) {
    const int number = error.value();
    return number == ENOENT || number == ENOTDIR || number == ELOOP || number == ESTALE;
}

bool isForbidden(const std::error_code& error) { return error.value() == EACCES || error.value() == EPERM; }

struct Name {
    std::string text;
    unsigned char type;  // DT_REG and so on
};

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};

// All at once: a folder that changes while it is read may be read wrongly.
std::error_code namesIn(const Descriptor& folder, std::vector<Name>& names) {
    Descriptor copy(::fcntl(folder.get(), F_DUPFD_CLOEXEC, 0));
    const std::unique_ptr<DIR, CloseDirectory> directory(copy.valid() ? ::fdopendir(copy.get()) : nullptr);
    if (!directory) return lastError();
    copy.release();
    for (;;) {
        errno = 0;
        const dirent* const entry = ::readdir(directory.get());
        if (entry == nullptr) return lastError();
        const std::string text = entry->d_name;
        if (text != "." && text != "..") names.push_back({text, entry->d_type});
    }
}

// What a file system leaves open.
unsigned char typeOf(int folder, const Name& name) {
    if (name.type != DT_UNKNOWN) return name.type;
    struct stat info = {};
    if (::fstatat(folder, name.text.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) return DT_UNKNOWN;
    return S_ISDIR(info.st_mode)   ? DT_DIR
           : S_ISLNK(info.st_mode) ? DT_LNK
           : S_ISREG(info.st_mode) ? DT_REG
                                   : DT_CHR;
}

// The way through a tree, folder by folder. Each is opened by its name in the one above, so that a path may
// be longer than the system takes and nobody can put a link into the way. Of a deep tree only the topmost
// folder and the last few are open; the ones between are opened again on the way back, if they are still the
// same.
class TreeVisitor {
  public:
    virtual ~TreeVisitor() = default;
    TreeVisitor(const TreeVisitor&) = delete;
    TreeVisitor& operator=(const TreeVisitor&) = delete;

    // The first error that hinders.
    std::error_code run(const fs::path& folder, int flags) {
        path_ = folder.native();
        const std::error_code error = push("", Descriptor(::open(folder.c_str(), flags | kFolder)));
        if (error) return error;
        while (!levels_.empty()) step();
        return error_;
    }

  protected:
    TreeVisitor() = default;

    // What lies in an open folder; may enter it. And a subfolder that all was visited of.
    virtual void visit(int folder, const Name& name) = 0;
    virtual void leave(int folder, const std::string& name) = 0;

    std::error_code enter(int folder, const std::string& name) {
        return push(name, Descriptor(::openat(folder, name.c_str(), kFolder | O_NOFOLLOW)));
    }
    fs::path pathOf(const std::string& name) const { return fs::path(path_) / name; }
    void keep(const std::error_code& error) {
        if (!error_ && !hasVanished(error)) error_ = error;
    }

  private:
    static constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    static constexpr std::size_t kMostOpen = 16;

    struct Level {
        std::string name;
        std::size_t pathLength;  // of the folder above
        Descriptor handle;
        dev_t device;
        ino_t number;
        std::vector<Name> left;
    };

    std::error_code push(const std::string& name, Descriptor handle) {
        struct stat info = {};
        if (!handle.valid() || ::fstat(handle.get(), &info) != 0) return lastError();
        std::vector<Name> names;
        if (const std::error_code error = namesIn(handle, names)) return error;
        const std::size_t pathLength = path_.size();
        if (!levels_.empty()) path_ = pathOf(name).native();
        levels_.push_back({name, pathLength, std::move(handle), info.st_dev, info.st_ino, std::move(names)});
        closeBefore(levels_.size() - 1);
        return {};
    }

    void step() {
        if (levels_.back().left.empty()) return pop();
        const int folder = handleOf(levels_.size() - 1);
        std::vector<Name>& left = levels_.back().left;
        if (folder < 0) {
            keep(lastError());
            return left.clear();
        }
        const Name name = std::move(left.back());
        left.pop_back();
        visit(folder, name);
    }

    void pop() {
        const std::string name = levels_.back().name;
        path_.resize(levels_.back().pathLength);
        levels_.pop_back();
        if (levels_.empty()) return;
        const int folder = handleOf(levels_.size() - 1);
        if (folder < 0) return keep(lastError());
        leave(folder, name);
    }

    // -1, with errno, for a folder that can't be opened again.
    int handleOf(std::size_t index) {
        std::size_t at = index;
        while (!levels_[at].handle.valid()) --at;  // the topmost is never closed
        for (; at < index; ++at) {
            Level& next = levels_[at + 1];
            next.handle =
                Descriptor(::openat(levels_[at].handle.get(), next.name.c_str(), kFolder | O_NOFOLLOW));
            if (!isSame(next)) {
                next.handle.close();
                return -1;
            }
            closeBefore(at + 1);
        }
        return levels_[index].handle.get();
    }

    static bool isSame(const Level& level) {
        struct stat info = {};
        if (!level.handle.valid() || ::fstat(level.handle.get(), &info) != 0) return false;
        const bool same = info.st_dev == level.device && info.st_ino == level.number;
        if (!same) errno = ENOENT;
        return same;
    }

    void closeBefore(std::size_t index) {
        if (index > kMostOpen) levels_[index - kMostOpen].handle.close();
    }

    std::string path_;
    std::vector<Level> levels_;
    std::error_code error_;
};

class FileVisitor final : public TreeVisitor {
  public:
    FileVisitor(const TreeWalk& walk, const std::function<void(const TreeFile&)>& receive)
        : walk_(walk), receive_(receive) {}

  private:
    void visit(int folder, const Name& name) override {
        switch (typeOf(folder, name)) {
            case DT_DIR:
                if (walk_.recursive) enterIfAllowed(folder, name.text);
                break;
            case DT_LNK:
                handOver(folder, name.text, true);
                break;
            case DT_REG:
                handOver(folder, name.text, false);
                break;
            default:
                break;
        }
    }
    void leave(int /*folder*/, const std::string& /*name*/) override {}

    void enterIfAllowed(int folder, const std::string& name) {
        const std::error_code error = enter(folder, name);
        if (error && !isForbidden(error)) keep(error);
    }

    void handOver(int folder, const std::string& name, bool isLink) {
        TreeFile file{pathOf(name), isLink, 0};
        if (isLink || walk_.withBytes) {
            struct stat info = {};
            if (::fstatat(folder, name.c_str(), &info, 0) != 0 || !S_ISREG(info.st_mode)) return;
            file.bytes = static_cast<std::uint64_t>(info.st_size);
        }
        receive_(file);
    }

    const TreeWalk& walk_;
    const std::function<void(const TreeFile&)>& receive_;
};

class Deletion final : public TreeVisitor {
  private:
    void visit(int folder, const Name& name) override {
        if (typeOf(folder, name) != DT_DIR) {
            remove(folder, name.text, 0);
        } else if (enter(folder, name.text)) {
            leave(folder, name.text);  // what can't be read may be empty
        }
    }
    void leave(int folder, const std::string& name) override { remove(folder, name, AT_REMOVEDIR); }

    void remove(int folder, const std::string& name, int flags) {
        if (::unlinkat(folder, name.c_str(), flags) != 0) keep(lastError());
    }
};

bool copyAll(const Descriptor& from, const Descriptor& to) {
    std::vector<char> block(std::size_t{1} << 20U);
    for (;;) {
        const ssize_t got = ::read(from.get(), block.data(), block.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return got == 0;
        if (!to.writeAll(block.data(), static_cast<std::size_t>(got))) return false;
    }
}

}  // namespace

std::error_code walkFolder(const fs::path& folder, const TreeWalk& walk,
                           const std::function<void(const TreeFile&)>& visit) {
    return FileVisitor(walk, visit).run(folder, 0);
}

bool isLink(const fs::path& path) {
    std::error_code error;
    return fs::is_symlink(path, error);
}

std::error_code copyFile(const fs::path& from, const fs::path& to, bool overwrite) {
    const Descriptor source = openRegularFile(from, O_RDONLY);
    struct stat info = {};
    if (!source.valid() || ::fstat(source.get(), &info) != 0) return lastError();
    const Descriptor target = openRegularFile(to, O_WRONLY | O_CREAT | (overwrite ? 0 : O_EXCL));
    if (!target.valid()) return lastError();
    ::fchmod(target.get(), info.st_mode);  // where the file system has permissions
    if (::ftruncate(target.get(), 0) == 0 && copyAll(source, target)) return {};
    const std::error_code failure = lastError();
    removeUnfinished(to);
    return failure;
}

std::error_code deleteFolder(const fs::path& folder) {
    std::error_code failure = Deletion().run(folder, O_NOFOLLOW);
    if (::rmdir(folder.c_str()) != 0 && !failure) failure = lastError();
    std::error_code ignored;
    if (!fs::exists(fs::symlink_status(folder, ignored))) return {};
    return failure;
}

}  // namespace orx::platform
