// An open file of POSIX.
#ifndef ORXFUNCTIONS_PLATFORM_DESCRIPTOR_POSIX_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_DESCRIPTOR_POSIX_INTERNAL_H

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <utility>

namespace orx::platform {

// What new files may be, less what the process's mask takes away.
constexpr mode_t kReadableByAll = 0666;

class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool valid() const { return number_ >= 0; }
    int get() const { return number_; }
    int release() { return std::exchange(number_, -1); }
    void close() {
        const int former = errno;
        if (valid()) ::close(release());
        errno = former;
    }

    // One write call as long as the system takes all bytes at once, which it does for files unless the disk
    // is full.
    bool writeAll(const char* bytes, std::size_t size) const {
        while (size > 0) {
            const ssize_t written = ::write(number_, bytes, size);
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) return false;
            bytes += written;
            size -= static_cast<std::size_t>(written);
        }
        return true;
    }

  private:
    int number_;
};

// Opens a regular file with those flags of open(); not valid, with errno, for all else: a pipe or a device
// could be waited for without end, or act. Never empties a file.
Descriptor openRegularFile(const std::filesystem::path& path, int flags);

}  // namespace orx::platform

#endif
