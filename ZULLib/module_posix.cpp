// Where a loaded module lies, on POSIX.
#include <link.h>

#include <cstdint>
#include <fstream>
#include <ios>
#include <sstream>
#include <string>

#include "ZULLib/files_posix_internal.h"
#include "ZULLib/zullib.h"

namespace zul {
namespace {

// A handle of dlopen is the address of the module's entry in the loader's list. dlinfo would follow any
// address that it is given, so the list is searched for the handle instead.
struct ModuleSearch {
    const void* handle = nullptr;
    bool found = false;
    std::string name;
    std::uintptr_t address = 0;
};

// dl_iterate_phdr holds the loader's lock on the list during this call.
int findModule(dl_phdr_info* /*info*/, std::size_t /*size*/, void* context) {
    auto& search = *static_cast<ModuleSearch*>(context);
    for (const link_map* module = _r_debug.r_map; module != nullptr; module = module->l_next) {
        if (module != search.handle) continue;
        search.found = true;
        search.name = module->l_name == nullptr ? "" : module->l_name;
        search.address = reinterpret_cast<std::uintptr_t>(module->l_ld);
        break;
    }
    return 1;
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
    ModuleSearch search;
    search.handle = module;
    dl_iterate_phdr(findModule, &search);
    if (!search.found) return {};
    if (search.name.empty()) return extractFilePath(getExeFileName());
    if (search.name.front() == '/') return extractFilePath(search.name);
    return extractFilePath(fileMappedAt(search.address));
}

}  // namespace zul
