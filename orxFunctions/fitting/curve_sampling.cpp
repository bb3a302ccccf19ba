#include "orxFunctions/fitting/curve_sampling_internal.h"

namespace orx {

// A function of its own, where the sum waits in a register: beside a visit it would wait in memory.
SampleRun sampleRun(double first, double high, double step, double* x) {
    double at = first;
    for (std::size_t count = 0; count < kSamplesAtOnce;) {
        x[count++] = at;
        const double next = at + step;
        if (!(next > at) || !(next <= high)) return {count, next, true};
        at = next;
    }
    return {kSamplesAtOnce, at, false};
}

}  // namespace orx
