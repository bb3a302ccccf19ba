// The analyses of a picture in the JSON report.
#ifndef EXAMPLES_INSPECTION_ANALYSES_JSON_H
#define EXAMPLES_INSPECTION_ANALYSES_JSON_H

#include <json/value.h>

#include "inspection/analyse/analyses.h"

namespace inspection {

// Adds a member for each analysis that was made: "segments", "edges", "calipers", "circleCalipers", "focus".
void addAnalyses(Json::Value& image, const Analyses& analyses);

}  // namespace inspection

#endif
