#include "orxFunctions/platform/fine_pauses_internal.h"

namespace orx::platform {

FinePauses::FinePauses() { /* exact as they are */
}
FinePauses::~FinePauses() { /* nothing to take back */
}

}  // namespace orx::platform
