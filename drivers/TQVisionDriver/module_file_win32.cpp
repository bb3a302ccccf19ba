#include "drivers/TQVisionDriver/module_file.h"

#include <windows.h>

#include <cstring>
#include <string>

namespace vision {
namespace {

constexpr std::size_t kLongestPath = 32767;  // characters; of an environment variable, too

// Any address inside the module names it.
HMODULE thisModule(DWORD flags) {
    HMODULE module = nullptr;
    const auto* const inside = reinterpret_cast<LPCWSTR>(&moduleFolder);
    return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, inside, &module) != 0 ? module
                                                                                                    : nullptr;
}

}  // namespace

std::filesystem::path moduleFolder() {
    const HMODULE module = thisModule(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
    if (module == nullptr) return {};
    std::wstring file(kLongestPath + 1, L'\0');
    const DWORD length = GetModuleFileNameW(module, file.data(), static_cast<DWORD>(file.size()));
    if (length == 0 || length >= file.size()) return {};
    file.resize(length);
    return std::filesystem::path(file).parent_path();
}

std::filesystem::path pathFromEnvironment(const char* variable) {
    // In place of getenv, whose texts lack what the code page of the process lacks.
    const std::wstring name(variable, variable + std::strlen(variable));
    std::wstring value(kLongestPath + 1, L'\0');
    const DWORD length =
        GetEnvironmentVariableW(name.c_str(), value.data(), static_cast<DWORD>(value.size()));
    value.resize(length < value.size() ? length : 0);
    return value;
}

void keepModuleLoaded() { thisModule(GET_MODULE_HANDLE_EX_FLAG_PIN); }

void atProcessEnd(void (* /*function*/)()) {}

}  // namespace vision
