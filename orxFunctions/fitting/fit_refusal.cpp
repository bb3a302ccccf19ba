#include "orxFunctions/fitting/fit_refusal_internal.h"

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {
namespace {

TRefusalCode codeOf(TFitStatus status) noexcept {
    switch (status) {
        case fsTooFewPoints:
            return rcTooFew;
        case fsNotFinite:
            return rcNotFinite;
        case fsBadOptions:
        case fsBadDeviations:
            return rcOption;
        case fsCoincident:
        case fsCollinear:
            return rcDegenerate;
        case fsTooLarge:
            return rcTooMany;
        case fsOk:
        case fsArcTooShort:
        case fsNotThatShape:
        case fsNotConverged:
        case fsNoConsensus:
            break;
    }
    return rcNoResult;
}

}  // namespace

bool isFitted(TFitStatus status, const char* function) noexcept {
    return status == fsOk || refuse(codeOf(status), function, "%s", fitStatusText(status));
}

}  // namespace orx
