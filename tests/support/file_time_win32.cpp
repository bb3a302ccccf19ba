#include "tests/support/file_time.h"

#include <windows.h>

#include <cstdint>
#include <filesystem>

namespace test {

bool setModificationTime(const std::string& file, std::time_t seconds) {
    const HANDLE handle = CreateFileW(std::filesystem::path(file).c_str(), FILE_WRITE_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, 0, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return false;
    // 100 ns since 1601-01-01, which is 369 years with 89 leap days before 1970.
    const auto ticks = (static_cast<std::uint64_t>(seconds) + (369 * 365 + 89) * 86400ULL) * 10'000'000;
    const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
    const bool isSet = SetFileTime(handle, nullptr, nullptr, &time) != 0;
    CloseHandle(handle);
    return isSet;
}

}  // namespace test
