#include "orxFunctions/platform/fine_pauses_internal.h"

namespace orx::platform {

FinePauses::FinePauses() = default;
FinePauses::~FinePauses() = default;

}  // namespace orx::platform
