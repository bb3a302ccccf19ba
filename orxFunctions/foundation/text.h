// Cutting texts at separators. Positions are bytes, separators are searched from the start, and a missing
// separator gives "", never an error. Reentrant.
#ifndef ORXFUNCTIONS_FOUNDATION_TEXT_H
#define ORXFUNCTIONS_FOUNDATION_TEXT_H

#include <string>

#include "orxFunctions/api.h"

namespace orx {

// The text before the first `sep`.
ORX_API std::string getStartStr(std::string text, std::string sep);

// The text after the first `sep`.
ORX_API std::string getEndStr(std::string text, std::string sep);

// The text between the first `startSep` and the first `endSep`. Each is searched from the start of the text
// on its own; when the first `endSep` stands before the end of the first `startSep`, everything after
// `startSep` is returned. Both are intended: "]ab[cd" with "[" and "]" gives "cd".
ORX_API std::string getMiddleStr(std::string text, std::string startSep, std::string endSep);

}  // namespace orx

#endif
