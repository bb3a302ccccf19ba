// The results as a table (RFC 4180): a row each picture, three columns each value.
#ifndef EXAMPLES_INSPECTION_BATCH_RESULTS_CSV_H
#define EXAMPLES_INSPECTION_BATCH_RESULTS_CSV_H

#include <string>

#include "inspection/batch/picture_record.h"

namespace inspection {

std::string csvHeader(const orx::TRecipe& recipe);
std::string csvRow(const PictureRecord& record);

}  // namespace inspection

#endif
