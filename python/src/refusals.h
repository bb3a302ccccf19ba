// What the library refuses, as exceptions of Python.
#ifndef ORXFUNCTIONS_PYTHON_REFUSALS_H
#define ORXFUNCTIONS_PYTHON_REFUSALS_H

#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <utility>

#include "orxFunctions/foundation/refusal.h"

namespace orxpy {

// Runs `call` without Python's lock, so that other threads go on; no object of Python may be touched or
// destroyed in it. A refusal of an earlier call is forgotten before.
template <typename Call>
auto unlocked(Call&& call) {
    const pybind11::gil_scoped_release released;
    orx::clearLastRefusal();
    return std::forward<Call>(call)();
}

// The last refusal of this thread as an exception: TypeError for images of another type, ValueError for
// everything else that was handed in, OSError and its kinds for files. Names of options are written as Python
// has them.
[[noreturn]] void raiseRefusal();

// For calls that have answered with what they say for refused input: returns where the input was sound and
// there is nothing to be found (rcNoResult), which is None or an empty array in Python; raises in every other
// case.
void raiseUnlessNothingFound();
// The same, with what None is made of: `return nothingFound();`.
std::nullopt_t nothingFound();

// Words such as "minPoints" as "min_points"; "MiB" stays.
std::string pythonName(const std::string& text);

}  // namespace orxpy

#endif
