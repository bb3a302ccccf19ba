#include "tests/fake_driver/fake_module.h"

namespace test {

std::string fakeModule(const std::string& variant, const std::string& name) {
    return std::string(FAKE_MODULES) + "/" + variant + "/" + FAKE_PREFIX + name + FAKE_SUFFIX;
}

}  // namespace test
