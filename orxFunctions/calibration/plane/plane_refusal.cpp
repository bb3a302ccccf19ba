#include "orxFunctions/calibration/plane/plane_refusal.h"

#include "orxFunctions/foundation/refusal_internal.h"

namespace orx::plane {
namespace {

TRefusalCode codeOf(TPlaneStatus status) {
    switch (status) {
        case plTooFewViews:
            return rcTooFew;
        case plMixedSizes:
            return rcSizesDiffer;
        case plBadOptions:
            return rcOption;
        case plBadViews:
            return rcDegenerate;
        case plUnreadable:
            return rcFileFormat;
        case plUnwritable:
            return rcFileUnwritable;
        default:
            return rcNoResult;
    }
}

}  // namespace

bool refuseStatus(TPlaneStatus status, const std::string& problem, const char* function) {
    return refuse(codeOf(status), function, "%s%s%s", planeStatusText(status), problem.empty() ? "" : ": ",
                  problem.c_str());
}

bool tellResult(const TPlaneCalibration& result, const char* function) {
    return result.valid() || refuseStatus(result.status, result.problem, function);
}

bool takesCalibration(const TPlaneCalibration& calibration, const char* function) {
    return calibration.valid() || refuse(rcNotReady, function, "the calibration is not valid: %s",
                                         planeStatusText(calibration.status));
}

bool refusePlace(const TPlaneCalibration& calibration, const char* function) {
    return takesCalibration(calibration, function) &&
           refuse(rcNoResult, function, "a point that no line of sight joins to the other side");
}

}  // namespace orx::plane
