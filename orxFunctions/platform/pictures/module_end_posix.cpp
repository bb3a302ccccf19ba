#include "orxFunctions/platform/pictures/module_end_posix.h"

namespace orx::platform {

std::atomic<bool> moduleEnded{false};

namespace {

struct End {
    ~End() { moduleEnded = true; }
};
const End end;

}  // namespace
}  // namespace orx::platform
