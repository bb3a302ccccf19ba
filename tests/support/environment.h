// The environment of this process.
#ifndef ORX_TESTS_SUPPORT_ENVIRONMENT_H
#define ORX_TESTS_SUPPORT_ENVIRONMENT_H

#include <cstdlib>
#include <filesystem>
#include <string>

namespace test {

// Nothing is left of a variable that is set to "".
inline void setEnvironment(const std::string& name, const std::string& value) {
#if defined(_WIN32)
    _putenv_s(name.c_str(), value.c_str());
#else
    if (value.empty()) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value.c_str(), 1);
    }
#endif
}

// The same with a path, whatever letters it has.
inline void setVariable(const std::string& name, const std::filesystem::path& value) {
    if (value.empty()) return setEnvironment(name, "");
#if defined(_WIN32)
    _wputenv_s(std::filesystem::path(name).c_str(), value.c_str());
#else
    setEnvironment(name, value.string());
#endif
}

}  // namespace test

#endif
