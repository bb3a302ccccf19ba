// Lines of text appended to a file.
#ifndef ORXFUNCTIONS_FILES_TEXT_LOG_H
#define ORXFUNCTIONS_FILES_TEXT_LOG_H

#include <string>

#include "orxFunctions/api.h"

namespace orx {

// Appends `text` and a line end to the file, created if missing; before them the time ("YYYY-MM-DD HH:MM:SS
// ") when `noTime` is 0. A file that can't be opened, or is no plain file, is silently ignored; lastRefusal()
// tells of it, and of a line that a full disk cut off (rcFileName, rcFileUnwritable). Thread-safe: lines that
// several threads or processes append to one file stay whole.
ORX_API void save2Txt(std::string path, std::string text, int noTime);

}  // namespace orx

#endif
