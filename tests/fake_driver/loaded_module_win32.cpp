#include <windows.h>

#include "tests/fake_driver/loaded_module.h"

namespace test {

LoadedModule::LoadedModule(const std::string& file) : handle_(LoadLibraryA(file.c_str())) {}

LoadedModule::~LoadedModule() {
    if (handle_ != nullptr) FreeLibrary(static_cast<HMODULE>(handle_));
}

LoadedModule::Procedure LoadedModule::findAny(const char* name) const {
    return reinterpret_cast<Procedure>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

}  // namespace test
