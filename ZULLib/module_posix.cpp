// Where a loaded module lies, on POSIX.
#include "ZULLib/zullib.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <ios>
#include <sstream>
#include <string>
#include <vector>

namespace zul {
namespace {

struct LoadedModule {
    std::string name;  // as it was loaded; empty for the program
    std::uintptr_t address = 0;
};

int collectModule(dl_phdr_info* info, std::size_t /*size*/, void* context) {
    const auto* const end = info->dlpi_phdr + info->dlpi_phnum;
    const auto* const segment =
        std::find_if(info->dlpi_phdr, end, [](const auto& s) { return s.p_type == PT_LOAD; });
    if (segment == end) return 0;
    const char* const name = info->dlpi_name == nullptr ? "" : info->dlpi_name;
    static_cast<std::vector<LoadedModule>*>(context)->push_back({name, info->dlpi_addr + segment->p_vaddr});
    return 0;
}

// The loader's entry of the module at an address, whose own address is the module's handle.
const void* handleOf(const LoadedModule& module) {
    Dl_info info = {};
    void* entry = nullptr;
    return dladdr1(reinterpret_cast<void*>(module.address), &info, &entry, RTLD_DL_LINKMAP) == 0 ? nullptr
                                                                                                 : entry;
}

// The file that is mapped at an address: a module that was loaded by a relative name stays where it was when
// the working folder changes.
std::string fileMappedAt(std::uintptr_t address) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::uintptr_t first = 0;
        std::uintptr_t last = 0;
        char dash = 0;
        if (!(fields >> std::hex >> first >> dash >> last) || address < first || address >= last) continue;
        const std::size_t path = line.find('/');
        return path == std::string::npos ? std::string() : line.substr(path);
    }
    return {};
}

}  // namespace

std::string getDllPath(TModuleHandle module) {
    if (module == nullptr) return extractFilePath(getExeFileName());
    // dlinfo would follow any address that it is given, so the handle is looked for among the right ones.
    std::vector<LoadedModule> modules;
    dl_iterate_phdr(collectModule, &modules);
    const auto found = std::find_if(modules.begin(), modules.end(), [&](const LoadedModule& candidate) {
        return handleOf(candidate) == module;
    });
    if (found == modules.end()) return {};
    if (found->name.empty()) return extractFilePath(getExeFileName());
    return extractFilePath(found->name.front() == '/' ? found->name : fileMappedAt(found->address));
}

}  // namespace zul
