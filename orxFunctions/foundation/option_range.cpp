#include "orxFunctions/foundation/option_range_internal.h"

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

bool takesOptions(const char* function, std::initializer_list<TOptionRange> options) noexcept {
    for (const TOptionRange& option : options) {
        const bool enough = option.above ? option.value > option.low : option.value >= option.low;
        if (enough && option.value <= option.high) continue;
        return refuse(rcOption, function, "%s is %g; %s%g to %g is taken", option.name, option.value,
                      option.above ? "above " : "", option.low, option.high);
    }
    return true;
}

}  // namespace orx
