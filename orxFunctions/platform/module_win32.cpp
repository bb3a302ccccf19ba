#include "orxFunctions/platform/module_internal.h"

#include <windows.h>

#include <string>

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

// Names of modules are ASCII.
std::wstring widen(const char* name) {
    const std::string text = name;
    return {text.begin(), text.end()};
}

// While it lives, a damaged module makes its loading fail instead of opening a dialog that nobody answers.
class NoErrorDialogs {
  public:
    NoErrorDialogs() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &former_); }
    ~NoErrorDialogs() { SetThreadErrorMode(former_, nullptr); }
    NoErrorDialogs(const NoErrorDialogs&) = delete;
    NoErrorDialogs& operator=(const NoErrorDialogs&) = delete;

  private:
    DWORD former_ = 0;
};

}  // namespace

ModuleHandle loadModule(const ModuleName& name, std::string* reason) {
    const NoErrorDialogs quiet;
    const HMODULE module = LoadLibraryW(widen(name.windows).c_str());
    const DWORD error = GetLastError();
    if (module == nullptr && reason != nullptr) {
        *reason = std::string(name.windows) + ": error " + std::to_string(error);
    }
    return module;
}

ModuleHandle loadModuleFrom(const fs::path& folder, const ModuleName& name) {
    const NoErrorDialogs quiet;
    return LoadLibraryW(moduleFileIn(folder, name).c_str());
}

fs::path moduleFileIn(const fs::path& folder, const ModuleName& name) { return folder / widen(name.windows); }

bool setExtraModuleFolder(const fs::path& folder) { return SetDllDirectoryW(folder.c_str()) != 0; }

Procedure findProcedure(ModuleHandle module, const char* name) {
    return reinterpret_cast<Procedure>(GetProcAddress(module, name));
}

void freeModule(ModuleHandle module) { FreeLibrary(module); }

fs::path fileOfModule(ModuleHandle module) {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
        if (length < name.size()) {
            name.resize(length);
            return name;
        }
        name.resize(2 * name.size());
    }
}

// By its wide name: some names in code page 936 read as UTF-8, too.
fs::path programFolder() { return fileOfModule(nullptr).parent_path(); }

bool modificationTime(const fs::path& file, std::int64_t& seconds) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data) == 0) return false;
    // 100 ns since 1601-01-01.
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;
    const std::uint64_t ticks = (std::uint64_t{data.ftLastWriteTime.dwHighDateTime} << 32U) |
                                std::uint64_t{data.ftLastWriteTime.dwLowDateTime};
    seconds = static_cast<std::int64_t>(ticks) / kTicksPerSecond - kSecondsTo1970;
    return true;
}

std::tm localTime(std::time_t moment) {
    std::tm time = {};
    if (localtime_s(&time, &moment) != 0) time = {};
    return time;
}

}  // namespace orx::platform
