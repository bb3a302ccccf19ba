// Images saved in the background. Names are read as file_operator.h says, which includes this header.
//
// Nothing throws. Every function is thread-safe.
#ifndef ORXFUNCTIONS_FILES_SAVE_IMAGE_H
#define ORXFUNCTIONS_FILES_SAVE_IMAGE_H

#include <opencv2/core.hpp>
#include <string>

#include "orxFunctions/api.h"

namespace FileOperator {

// Saves a copy of the image on a background thread, into `folder` (created if missing) as
// PREFIXyyyymmdd_hhmmss_mmm_nnnnnn.EXT: the time of the call and a running number, so that names sort in the
// order of the calls. `path`, if given, receives the full name. `extension` chooses the format (".png",
// ".bmp", ".jpg", ".tif" ...).
//
// Never waits for the disk. At most 64 images wait, of 1 GiB together; one more is refused, with a message
// for the first of a row of refusals. False, and nothing saved, for a full queue (rcTooMany), an empty image
// (rcEmptyImage) or one of more than two dimensions (rcImageDimensions), an unknown format (rcOption), an
// empty folder or one in the prefix (rcFileName), without memory for the copy (rcMemory), and without the
// thread or the library's module of picture formats (rcFailed). What fails later, on the thread (a full disk,
// a name that exists: it is never overwritten), is reported by a message in colour 1.
//
// Unloading the library, and on POSIX the end of the process, wait for the images still queued. On Windows
// call flush before the process ends: it ends the thread in the middle of its image.
ORX_API bool saveImage(cv::Mat img, std::string folder, std::string prefix = "",
                       std::string extension = ".png", std::string* path = nullptr);

// Waits until the images given to saveImage before this call are written or reported. With `milliseconds` of
// 0 or more it waits no longer than that, and returns false when the time ran out (rcTimeout). Also false, at
// once, where there is no memory to wait with (rcMemory).
ORX_API bool flush(int milliseconds = -1);

}  // namespace FileOperator

#endif
