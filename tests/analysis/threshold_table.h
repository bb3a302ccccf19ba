// The table "method x image without a choice -> level", which docs/threshold-degenerate.md shows.
#ifndef ORXFUNCTIONS_TESTS_ANALYSIS_THRESHOLD_TABLE_H
#define ORXFUNCTIONS_TESTS_ANALYSIS_THRESHOLD_TABLE_H

#include <string>

// The whole page, in Markdown.
std::string thresholdTable();

#endif
