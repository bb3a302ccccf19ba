// Loading a module and counting what it leaves behind, on each platform.
#ifndef ORX_TESTS_SUPPORT_LOADED_MODULE_H
#define ORX_TESTS_SUPPORT_LOADED_MODULE_H

#include <cstddef>
#include <string>

namespace test {

class LoadedModule {
  public:
    explicit LoadedModule(const std::string& file);
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    bool loaded() const { return handle_ != nullptr; }
    void* function(const char* name) const;

  private:
    void* handle_ = nullptr;
};

// Whether this process has the library loaded.
bool isLoaded(const std::string& file);

// Of this process: its threads, and its open files or handles.
std::ptrdiff_t threads();
std::ptrdiff_t handles();

// Whether a library with work left is still loaded when its last user has unloaded it, and goes later by
// itself.
extern const bool kUnloadsLater;

}  // namespace test

#endif
