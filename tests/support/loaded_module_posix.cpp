#include "tests/support/loaded_module.h"

#include <dlfcn.h>

#include <filesystem>
#include <iterator>

namespace test {
namespace {

std::ptrdiff_t entries(const char* folder) {
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

}  // namespace

LoadedModule::LoadedModule(const std::string& file) : handle_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {}

LoadedModule::~LoadedModule() {
    if (handle_ != nullptr) dlclose(handle_);
}

void* LoadedModule::function(const char* name) const { return dlsym(handle_, name); }

bool isLoaded(const std::string& file) {
    void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr && dlclose(library) == 0;
}

std::ptrdiff_t threads() { return entries("/proc/self/task"); }
std::ptrdiff_t handles() { return entries("/proc/self/fd"); }

const bool kUnloadsLater = false;

}  // namespace test
