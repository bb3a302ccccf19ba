#include "inspection/run/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace inspection {

FolderLock::~FolderLock() {
    if (handle_ >= 0) close(static_cast<int>(handle_));
}

bool FolderLock::take(const std::filesystem::path& folder) {
    const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    handle_ = file;
    return file < 0 || flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

}  // namespace inspection
