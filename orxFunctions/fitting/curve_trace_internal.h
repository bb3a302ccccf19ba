// The trace lines that the polynomial and the spline curve share.
#ifndef ORXFUNCTIONS_FITTING_CURVE_TRACE_INTERNAL_H
#define ORXFUNCTIONS_FITTING_CURVE_TRACE_INTERNAL_H

#include <cmath>
#include <utility>

#include "orxFunctions/foundation/host_bridge.h"
#include "orxFunctions/foundation/refusal_internal.h"

namespace orx {

// The step of a list with that many decimals, traced. The spline's line carries the polynomial's name too,
// intended.
inline double tracedListStep(int digits) {
    const double step = 1 / std::pow(10.0, digits);
    outPutDebugString("getPloyList step:" + doubleToStr(step, digits));
    return step;
}

// Exchanges bounds that are in the wrong order. False when they are equal, which keeps the refusal. Both are
// traced.
template <class Number>
bool orderedBounds(Number& minX, Number& maxX, const char* function) {
    if (minX > maxX) {
        outPutDebugString(zul::toAnsi("getExtremeValue minX>maxX 已经交换数据"));
        std::swap(minX, maxX);
    }
    if (minX == maxX) {
        outPutDebugString(zul::toAnsi("getExtremeValue minX==maxX 输入参数有误"));
        return refuse(rcOption, function, "both bounds are %g", static_cast<double>(minX));
    }
    return true;
}

}  // namespace orx

#endif
