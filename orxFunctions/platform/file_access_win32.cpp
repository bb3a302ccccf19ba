#include "orxFunctions/platform/file_access_internal.h"

#include <io.h>
#include <windows.h>

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

class Handle {
  public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() {
        if (valid()) CloseHandle(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }

    bool writeAll(const char* bytes, std::size_t size) const {
        constexpr std::size_t kMostAtOnce = 1U << 30;
        while (size > 0) {
            DWORD written = 0;
            const DWORD part = static_cast<DWORD>(size < kMostAtOnce ? size : kMostAtOnce);
            if (!WriteFile(handle_, bytes, part, &written, nullptr) || written == 0) return false;
            bytes += written;
            size -= written;
        }
        return true;
    }
    HANDLE get() const { return handle_; }

  private:
    HANDLE handle_;
};

// One appends at a time, of all threads and processes that append so. The system alone promises that for
// local files only. What is locked is a byte that no file reaches, since a locked one could not be read.
class AppendTurn {
  public:
    explicit AppendTurn(const Handle& file) : file_(file.get()) {
        place_.OffsetHigh = 0x7FFFFFFF;
        isLocked_ = LockFileEx(file_, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &place_) != 0;
    }
    ~AppendTurn() {
        if (isLocked_) UnlockFileEx(file_, 0, 1, 0, &place_);
    }
    AppendTurn(const AppendTurn&) = delete;
    AppendTurn& operator=(const AppendTurn&) = delete;

  private:
    HANDLE file_;
    OVERLAPPED place_ = {};
    bool isLocked_ = false;  // a file system without locks
};

DWORD attributes(const fs::path& path) { return GetFileAttributesW(path.c_str()); }

// Neither nothing, nor a root, nor a folder by way of itself.
bool isOrdinaryName(const fs::path& path) {
    const fs::path name = path.filename();
    return !name.empty() && name != "." && name != "..";
}

bool setHidden(const fs::path& path, bool hidden) {
    if (!isOrdinaryName(path)) return false;
    const DWORD now = attributes(path);
    if (now == INVALID_FILE_ATTRIBUTES) return false;
    DWORD wanted = hidden ? now | FILE_ATTRIBUTE_HIDDEN : now & ~static_cast<DWORD>(FILE_ATTRIBUTE_HIDDEN);
    if (wanted == 0) wanted = FILE_ATTRIBUTE_NORMAL;
    return wanted == now || SetFileAttributesW(path.c_str(), wanted) != 0;
}

bool isOnDisk(HANDLE file) { return GetFileType(file) == FILE_TYPE_DISK; }

// Neither a pipe nor a device.
File openOnDisk(const fs::path& path, const wchar_t* mode) {
    File file(_wfopen(path.c_str(), mode));
    if (file && !isOnDisk(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file.get()))))) return nullptr;
    return file;
}

}  // namespace

File openToRead(const fs::path& path) { return openOnDisk(path, L"rb"); }
File openToWrite(const fs::path& path) { return openOnDisk(path, L"wb"); }

GzipFile openGzip(const fs::path& path) {
    if (!openToRead(path)) return nullptr;
    return GzipFile(gzopen_w(path.c_str(), "rb"));
}

bool appendText(const std::string& name, const std::string& text) {
    // Opened for appending alone, each write goes to the end of the file, wherever that is by then. Reading
    // is for the lock.
    const Handle file(CreateFileW(toPath(name).c_str(), FILE_APPEND_DATA | FILE_READ_DATA,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid() || !isOnDisk(file.get())) return false;
    const AppendTurn turn(file);
    const std::string bytes = withPlatformLineEnds(text);
    return file.writeAll(bytes.data(), bytes.size());
}

CreateResult createFile(const fs::path& path, const void* bytes, std::size_t size) {
    bool complete = false;
    {
        const Handle file(
            CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file.valid()) {
            return GetLastError() == ERROR_FILE_EXISTS ? CreateResult::kExists : CreateResult::kFailed;
        }
        complete = file.writeAll(static_cast<const char*>(bytes), size);
    }
    if (complete) return CreateResult::kCreated;
    DeleteFileW(path.c_str());  // half an image is worse than none
    return CreateResult::kCut;
}

bool takePlaceOf(const fs::path& from, const fs::path& to) {
    {
        const Handle file(CreateFileW(from.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file.valid() || !FlushFileBuffers(file.get())) return false;
    }
    // The new file takes over the rights and attributes of the earlier one.
    if (attributes(to) != INVALID_FILE_ATTRIBUTES &&
        ReplaceFileW(to.c_str(), from.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr)) {
        return true;
    }
    return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
}

std::string withPlatformLineEnds(const std::string& text) {
    std::string result;
    result.reserve(text.size() + 2);
    for (const char c : text) {
        if (c == '\n') result += '\r';
        result += c;
    }
    return result;
}

bool hideFile(const fs::path& path) { return setHidden(path, true); }
bool unhideFile(const fs::path& path) { return setHidden(path, false); }

bool isHidden(const fs::path& path) {
    const DWORD now = attributes(path);
    return now != INVALID_FILE_ATTRIBUTES && (now & FILE_ATTRIBUTE_HIDDEN) != 0;
}

}  // namespace orx::platform
