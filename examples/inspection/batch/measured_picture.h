// One picture of a batch: read, measured, and written with what was measured.
#ifndef EXAMPLES_INSPECTION_BATCH_MEASURED_PICTURE_H
#define EXAMPLES_INSPECTION_BATCH_MEASURED_PICTURE_H

#include <filesystem>
#include <opencv2/core.hpp>
#include <string>

#include "inspection/batch/batch_options.h"
#include "inspection/batch/picture_record.h"

namespace inspection {

struct MeasuredPicture {
    PictureRecord record;
    std::string line;     // of results.jsonl
    std::string problem;  // why the annotated picture could not be written; else empty
};

// Whatever is wrong with the file is the result's problem. `folder` is that of the annotated pictures. Throws
// nothing. Reentrant, for files of different paths.
MeasuredPicture measurePicture(const PictureFile& file, const orx::TRecipe& recipe,
                               const BatchOptions& options, const std::filesystem::path& folder);

// The same for a picture that is in memory, with its features for drawing; `file` tells its name alone.
MeasuredPicture measurePicture(const cv::Mat& picture, const PictureFile& file, const orx::TRecipe& recipe,
                               const BatchOptions& options, const std::filesystem::path& folder);

}  // namespace inspection

#endif
