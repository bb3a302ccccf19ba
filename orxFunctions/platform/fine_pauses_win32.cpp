#include "orxFunctions/platform/fine_pauses_internal.h"

#include <windows.h>

#include <timeapi.h>

namespace orx::platform {
namespace {

constexpr UINT kTickMs = 1;

}  // namespace

// The system counts the requests of a process, so that threads need not know of each other.
FinePauses::FinePauses() { timeBeginPeriod(kTickMs); }
FinePauses::~FinePauses() { timeEndPeriod(kTickMs); }

}  // namespace orx::platform
