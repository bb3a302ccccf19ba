#include <windows.h>

#include <string>

#include "drivers/TQVisionDriver/module_file.h"

namespace vision {
namespace {

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
    // The longest path that Windows knows has 32,767 characters.
    std::wstring file(32768, L'\0');
    const DWORD length = GetModuleFileNameW(module, file.data(), static_cast<DWORD>(file.size()));
    if (length == 0 || length >= file.size()) return {};
    file.resize(length);
    return std::filesystem::path(file).parent_path();
}

void keepModuleLoaded() { thisModule(GET_MODULE_HANDLE_EX_FLAG_PIN); }

void atProcessEnd(void (* /*function*/)()) {}

}  // namespace vision
