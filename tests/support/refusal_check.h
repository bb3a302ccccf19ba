// Whether a call was refused for the reason that its header names.
#ifndef ORXFUNCTIONS_TESTS_SUPPORT_REFUSAL_CHECK_H
#define ORXFUNCTIONS_TESTS_SUPPORT_REFUSAL_CHECK_H

#include <gtest/gtest.h>

#include <string>

#include "orxFunctions/foundation/refusal.h"

namespace orx::test {

// Runs the call, which refuses, and looks at what this thread was told:
// EXPECT_TRUE(refusedWith(orx::rcEmptyImage, "thinning", [&] { thinning(none, out, 0); })).
template <class Call>
testing::AssertionResult refusedWith(TRefusalCode code, const std::string& function, Call call) {
    clearLastRefusal();
    call();
    const TRefusal refusal = lastRefusal();
    const bool same =
        refusal.code == code && refusal.function == function && refusal.text.rfind(function + ": ", 0) == 0;
    if (same) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "expected " << function << ": " << refusalCodeText(code) << "; got "
                                       << (refusal.code == rcNone ? "no refusal" : refusal.text) << " ("
                                       << refusalCodeText(refusal.code) << ")";
}

// Whether the call, which is not refused, leaves no refusal behind.
template <class Call>
testing::AssertionResult notRefused(Call call) {
    clearLastRefusal();
    call();
    const TRefusal refusal = lastRefusal();
    if (refusal.code == rcNone) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "refused: " << refusal.text;
}

}  // namespace orx::test

#endif
