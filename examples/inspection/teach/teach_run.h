// A recipe proposed from a picture.
#ifndef EXAMPLES_INSPECTION_TEACH_TEACH_RUN_H
#define EXAMPLES_INSPECTION_TEACH_TEACH_RUN_H

#include <ostream>

#include "inspection/run/options.h"

namespace inspection {

// Writes recipe.json, features.png and, unless the part is found otherwise, recipe.part into the output
// folder, and prints what is measured. A recipe that is there already is kept, unless the options say
// "again": it may have been edited.
//
// Exit code: 0 when the recipe was written and measures the picture that it was taught from, else 1. One
// thread at a time.
int runTeach(const Options& options, std::ostream& out, std::ostream& log);

}  // namespace inspection

#endif
