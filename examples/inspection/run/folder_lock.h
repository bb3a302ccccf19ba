// One run at a time in a folder.
#ifndef EXAMPLES_INSPECTION_RUN_FOLDER_LOCK_H
#define EXAMPLES_INSPECTION_RUN_FOLDER_LOCK_H

#include <cstdint>
#include <filesystem>

namespace inspection {

// Held until its end, and that of the process, however that comes: a killed run leaves no lock behind.
class FolderLock {
  public:
    FolderLock() = default;
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    FolderLock(FolderLock&&) = delete;
    FolderLock& operator=(FolderLock&&) = delete;
    ~FolderLock();

    // False when another process, or another lock of this one, holds the folder. True also where file systems
    // know no locks. To be called once.
    bool take(const std::filesystem::path& folder);

  private:
    std::intptr_t handle_ = -1;
};

}  // namespace inspection

#endif
