#include <dlfcn.h>

#include "tests/fake_driver/loaded_module.h"

namespace test {

LoadedModule::LoadedModule(const std::string& file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {}

LoadedModule::~LoadedModule() {
    if (handle_ != nullptr) dlclose(handle_);
}

LoadedModule::Procedure LoadedModule::findAny(const char* name) const {
    return reinterpret_cast<Procedure>(dlsym(handle_, name));
}

}  // namespace test
