#include "tests/support/loaded_module.h"

#include <windows.h>

#include <tlhelp32.h>

#include <filesystem>
#include <opencv2/highgui.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "ZULLib/zullib.h"

namespace test {

// A program loads the libraries that it refers to, and only those: they must stay when the tested one goes.
extern const void* const kKeptLoaded[];
const void* const kKeptLoaded[] = {reinterpret_cast<const void*>(&cv::getTickCount),
                                   reinterpret_cast<const void*>(&cv::getGaborKernel),
                                   reinterpret_cast<const void*>(&cv::haveImageReader),
                                   reinterpret_cast<const void*>(&cv::destroyAllWindows),
                                   reinterpret_cast<const void*>(&zul::getExeFileName)};

LoadedModule::LoadedModule(const std::string& file)
    : handle_(LoadLibraryW(std::filesystem::absolute(file).make_preferred().c_str())) {}

LoadedModule::~LoadedModule() {
    if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
}

void* LoadedModule::function(const char* name) const {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

bool isLoaded(const std::string& file) {
    return GetModuleHandleW(std::filesystem::path(file).filename().c_str()) != nullptr;
}

std::ptrdiff_t threads() {
    const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    std::ptrdiff_t count = 0;
    for (BOOL more = Thread32First(all, &entry); more != FALSE; more = Thread32Next(all, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    }
    CloseHandle(all);
    return count;
}

std::ptrdiff_t handles() {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return static_cast<std::ptrdiff_t>(count);
}

const bool kUnloadsLater = true;

}  // namespace test
