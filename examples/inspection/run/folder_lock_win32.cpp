#include "inspection/run/folder_lock.h"

#include <windows.h>

namespace inspection {

FolderLock::~FolderLock() {
    if (handle_ != -1) CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

bool FolderLock::take(const std::filesystem::path& folder) {
    // Nobody else may open the file, and Windows removes it when it is closed.
    const HANDLE file = CreateFileW((folder / "run.lock").c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    handle_ = reinterpret_cast<std::intptr_t>(file);  // -1 where there is none
    return file != INVALID_HANDLE_VALUE || GetLastError() != ERROR_SHARING_VIOLATION;
}

}  // namespace inspection
