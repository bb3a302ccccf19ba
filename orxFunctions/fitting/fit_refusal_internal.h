// The last refusal of functions that tell by a TFitStatus why there is no result.
#ifndef ORXFUNCTIONS_FITTING_FIT_REFUSAL_INTERNAL_H
#define ORXFUNCTIONS_FITTING_FIT_REFUSAL_INTERNAL_H

#include "orxFunctions/fitting/fit_report.h"

namespace orx {

// True for fsOk. Otherwise keeps the refusal in the words of fitStatusText, with the code that fit_report.h
// names, and answers false. `function` is a literal.
bool isFitted(TFitStatus status, const char* function) noexcept;

}  // namespace orx

#endif
