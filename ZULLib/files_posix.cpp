#include "ZULLib/files_posix_internal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>

namespace zul::posix {

InputFile::InputFile(const std::string& name)
    : descriptor_(::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
    if (!isOpen()) return;
    struct stat info = {};
    if (fstat(descriptor_, &info) == 0 && S_ISREG(info.st_mode) && info.st_size >= 0) {
        size_ = static_cast<std::uint64_t>(info.st_size);
        return;
    }
    ::close(descriptor_);
    descriptor_ = -1;
}

InputFile::~InputFile() {
    if (isOpen()) ::close(descriptor_);
}

bool InputFile::read(std::uint64_t offset, void* to, std::size_t count) const {
    if (!isOpen() || offset > size_ || count > size_ - offset) return false;
    auto* target = static_cast<char*>(to);
    while (count > 0) {
        const ssize_t got = pread(descriptor_, target, count, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        const auto step = static_cast<std::size_t>(got);
        target += step;
        offset += step;
        count -= step;
    }
    return true;
}

std::string contentOf(const std::string& name) {
    const InputFile file(name);
    std::string content(file.size(), '\0');
    return file.read(0, content.data(), content.size()) ? content : std::string();
}

// A process may end between the opening and the reading, which then fails.
std::string contentOfProc(const std::string& name) {
    const int file = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return {};
    std::string content;
    char block[4096];
    ssize_t got = 0;
    while ((got = ::read(file, block, sizeof block)) > 0 || (got < 0 && errno == EINTR)) {
        if (got > 0) content.append(block, static_cast<std::size_t>(got));
    }
    ::close(file);
    return got < 0 ? std::string() : content;
}

std::string linkTarget(const std::string& link) {
    std::string target(256, '\0');
    for (;;) {
        const ssize_t length = readlink(link.c_str(), target.data(), target.size());
        if (length <= 0) return {};
        const auto size = static_cast<std::size_t>(length);
        if (size < target.size()) {
            target.resize(size);
            return target;
        }
        target.resize(2 * target.size());
    }
}

std::string executableOf(const std::string& process) {
    static const std::string kDeleted = " (deleted)";
    std::string file = linkTarget("/proc/" + process + "/exe");
    const std::size_t size = file.size();
    const bool marked = size > kDeleted.size() && file.compare(size - kDeleted.size(), size, kDeleted) == 0;
    if (marked && access(file.c_str(), F_OK) != 0) file.resize(size - kDeleted.size());
    return file;
}

std::string realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : std::string();
}

}  // namespace zul::posix
