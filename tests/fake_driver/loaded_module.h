// A module that a test has loaded. The library, which looks for a module of that name, then finds this one.
#ifndef ORX_TESTS_FAKE_DRIVER_LOADED_MODULE_H
#define ORX_TESTS_FAKE_DRIVER_LOADED_MODULE_H

#include <string>

namespace test {

class LoadedModule {
  public:
    explicit LoadedModule(const std::string& file);
    ~LoadedModule();
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    bool isLoaded() const { return handle_ != nullptr; }

    template <typename Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(findAny(name));
    }

  private:
    using Procedure = void (*)();
    Procedure findAny(const char* name) const;

    void* handle_;
};

}  // namespace test

#endif
