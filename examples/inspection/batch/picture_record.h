// What is kept of one picture of a batch: a line of results.jsonl.
#ifndef EXAMPLES_INSPECTION_BATCH_PICTURE_RECORD_H
#define EXAMPLES_INSPECTION_BATCH_PICTURE_RECORD_H

#include <cstdint>
#include <string>

#include "inspection/batch/picture_list.h"
#include "orxFunctions/orxfunctions.h"

namespace inspection {

struct PictureRecord {
    std::string name;
    std::uint64_t id = 0;
    std::uint64_t bytes = 0;
    std::int64_t modified = 0;
    std::string annotated;      // file name within the folder of the annotated pictures; empty: none
    orx::TRecipeResult result;  // without features
};

inline constexpr const char* kPicturesFolder = "pictures";

// The line, without its end: the library's line of JSON with the file and the annotated picture before it.
std::string lineOf(const PictureRecord& record);

// Reads it back. False for what is no such line, or not of this recipe's values.
bool readLine(const std::string& line, const orx::TRecipe& recipe, PictureRecord& record);

}  // namespace inspection

#endif
