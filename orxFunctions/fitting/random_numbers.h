// Random integers from the C runtime's generator, which the whole process shares: searches that must be
// repeatable run on one thread at a time and start from srand().
#ifndef ORXFUNCTIONS_FITTING_RANDOM_NUMBERS_H
#define ORXFUNCTIONS_FITTING_RANDOM_NUMBERS_H

#include "orxFunctions/api.h"

namespace orx {

// lo + rand() % (hi - lo + 1). lo when hi is below it; a number is drawn all the same.
ORX_API int getRandNum(int lo, int hi);

// The same after srand(seed): equal seeds give equal numbers.
ORX_API int getSrandNum(int lo, int hi, int seed);

}  // namespace orx

#endif
