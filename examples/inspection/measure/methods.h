// The threshold methods of the library by the names that users type.
#ifndef EXAMPLES_INSPECTION_METHODS_H
#define EXAMPLES_INSPECTION_METHODS_H

#include <string>
#include <vector>

#include "orxFunctions/foundation/enumerations.h"

namespace inspection {

// All names, in the order of the library's enumeration.
std::vector<std::string> methodNames();

// The method of a name out of methodNames(); Otsu for any other.
orx::TThresholdMethod methodByName(const std::string& name);

}  // namespace inspection

#endif
