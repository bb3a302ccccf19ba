// Where the fake modules lie.
#ifndef ORX_TESTS_FAKE_DRIVER_FAKE_MODULE_H
#define ORX_TESTS_FAKE_DRIVER_FAKE_MODULE_H

#include <string>

namespace test {

// The file of the module of that name, of one of the variants that the CMakeLists beside this makes.
std::string fakeModule(const std::string& variant, const std::string& name);

}  // namespace test

#endif
