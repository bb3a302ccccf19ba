// Setting an environment variable of this process.
#ifndef ORX_TESTS_SUPPORT_ENVIRONMENT_H
#define ORX_TESTS_SUPPORT_ENVIRONMENT_H

#include <cstdlib>
#include <filesystem>
#include <string>

namespace test {

inline void setVariable(const std::string& name, const std::filesystem::path& value) {
#if defined(_WIN32)
    _wputenv_s(std::filesystem::path(name).c_str(), value.c_str());
#else
    setenv(name.c_str(), value.c_str(), 1);
#endif
}

}  // namespace test

#endif
