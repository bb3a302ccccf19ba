// Random integers from the C runtime's generator, which the whole process shares (on Windows: the thread).
#ifndef ORXFUNCTIONS_FITTING_RANDOM_NUMBERS_H
#define ORXFUNCTIONS_FITTING_RANDOM_NUMBERS_H

#include "orxFunctions/api.h"

namespace orx {

// lo + rand() % (hi - lo + 1). lo when hi is below it; a number is drawn all the same. Draws that must be
// repeatable start from srand(), while no other thread calls rand() or srand(). Thread-safe.
ORX_API int getRandNum(int lo, int hi);

// The same after srand(seed): equal seeds give equal numbers, whatever other threads draw. The runtime's
// generator is left where srand(seed) and one rand() leave it. Thread-safe.
ORX_API int getSrandNum(int lo, int hi, int seed);

}  // namespace orx

#endif
