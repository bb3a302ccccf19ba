// Taught and found parts in the JSON report.
#ifndef EXAMPLES_INSPECTION_PARTS_PARTS_JSON_H
#define EXAMPLES_INSPECTION_PARTS_PARTS_JSON_H

#include <json/value.h>

#include "inspection/parts/part_search.h"

namespace inspection {

Json::Value partSearchValue(const PartSettings& settings);
Json::Value taughtValue(const TaughtPart& taught);
Json::Value foundValue(const FoundParts& found);

}  // namespace inspection

#endif
