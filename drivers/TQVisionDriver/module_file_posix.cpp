#include "drivers/TQVisionDriver/module_file.h"

#include <dlfcn.h>

#include <cstdlib>
#include <system_error>

namespace vision {

std::filesystem::path moduleFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&moduleFolder), &info) == 0 || info.dli_fname == nullptr)
        return {};
    std::error_code failed;
    const std::filesystem::path file = std::filesystem::canonical(info.dli_fname, failed);
    return failed ? std::filesystem::path() : file.parent_path();
}

std::filesystem::path pathFromEnvironment(const char* variable) {
    const char* const named = std::getenv(variable);
    return named != nullptr ? std::filesystem::path(named) : std::filesystem::path();
}

void keepModuleLoaded() {}

void atProcessEnd(void (*function)()) { std::atexit(function); }

}  // namespace vision
