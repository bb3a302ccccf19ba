// Reading files on POSIX.
#ifndef ZULLIB_FILES_POSIX_INTERNAL_H
#define ZULLIB_FILES_POSIX_INTERNAL_H

#include <dirent.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace zul::posix {

// A regular file, opened for reading. Its size is that at opening; a file that shrinks later reads as
// damaged.
class InputFile {
  public:
    explicit InputFile(const std::string& name);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // False for what can't be opened or is no regular file (a pipe would block, a device may act).
    bool isOpen() const { return descriptor_ >= 0; }
    std::uint64_t size() const { return size_; }

    // Reads `count` bytes from `offset`. False when the file does not hold them all.
    bool read(std::uint64_t offset, void* to, std::size_t count) const;

  private:
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

// The content of a regular file; "" when it can't be read.
std::string contentOf(const std::string& name);
// The content of a file of /proc, whose size is not known before; "" when it can't be read.
std::string contentOfProc(const std::string& name);

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};
// Null when the folder can't be opened.
using Directory = std::unique_ptr<DIR, CloseDirectory>;
inline Directory openDirectory(const char* path) { return Directory(opendir(path)); }

// What a symbolic link holds; "" when it can't be read.
std::string linkTarget(const std::string& link);
// The executable of a process ("self" or a number), without the system's mark of a deleted file; "" when the
// process is gone, has none (a thread of the kernel) or belongs to somebody else.
std::string executableOf(const std::string& process);

// The path without symbolic links; "" when it does not exist.
std::string realPath(const std::string& path);

}  // namespace zul::posix

#endif
