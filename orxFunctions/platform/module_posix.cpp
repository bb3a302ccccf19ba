#include "orxFunctions/platform/module_internal.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <system_error>

namespace orx::platform {
namespace {

namespace fs = std::filesystem;

std::string posixName(const ModuleName& name) {
    if (name.posix != nullptr) return name.posix;
    constexpr std::string_view kExtension = ".dll";
    std::string_view stem = name.windows;
    const std::size_t length = stem.size() - std::min(stem.size(), kExtension.size());
    if (stem.substr(length) == kExtension) stem = stem.substr(0, length);
    return "lib" + std::string(stem) + ".so";
}

// All procedures are bound at once: a module that lacks something is refused here, not in the middle of a
// call.
ModuleHandle open(const std::string& file) { return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL); }

ModuleHandle openIn(const fs::path& folder, const ModuleName& name) {
    const fs::path file = moduleFileIn(folder, name);
    std::error_code ignored;
    return fs::exists(file, ignored) ? open(file.string()) : nullptr;
}

}  // namespace

ModuleHandle loadModule(const ModuleName& name, std::string* reason) {
    const fs::path extra = extraModuleFolder.get();
    ModuleHandle module = extra.empty() ? nullptr : openIn(extra, name);
    if (module == nullptr) module = open(posixName(name));
    if (module == nullptr && reason != nullptr) {
        const char* const text = dlerror();
        *reason = text == nullptr ? "" : text;
    }
    return module;
}

ModuleHandle loadModuleFrom(const fs::path& folder, const ModuleName& name) {
    const ModuleHandle module = openIn(folder, name);
    return module != nullptr ? module : loadModule(name);
}

fs::path moduleFileIn(const fs::path& folder, const ModuleName& name) { return folder / posixName(name); }

bool setExtraModuleFolder(const fs::path& folder) {
    extraModuleFolder.set(folder);
    return true;
}

Procedure findProcedure(ModuleHandle module, const char* name) {
    return reinterpret_cast<Procedure>(dlsym(module, name));
}

void freeModule(ModuleHandle module) { dlclose(module); }

fs::path fileOfModule(ModuleHandle module) {
    link_map* entry = nullptr;
    if (dlinfo(module, RTLD_DI_LINKMAP, &entry) != 0 || entry == nullptr) return {};
    std::error_code ignored;
    return fs::absolute(entry->l_name, ignored);
}

fs::path programFolder() { return fs::path(zul::getExeFileName()).parent_path(); }

bool modificationTime(const fs::path& file, std::int64_t& seconds) {
    struct stat info = {};
    if (stat(file.c_str(), &info) != 0) return false;
    seconds = info.st_mtime;
    return true;
}

std::tm localTime(std::time_t moment) {
    std::tm time = {};
    localtime_r(&moment, &time);
    return time;
}

}  // namespace orx::platform
