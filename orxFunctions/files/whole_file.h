// Files that are never seen half written.
#ifndef ORXFUNCTIONS_FILES_WHOLE_FILE_H
#define ORXFUNCTIONS_FILES_WHOLE_FILE_H

#include <filesystem>
#include <string>

#include "orxFunctions/api.h"

namespace orx {

// Writes the bytes to a file beside the one named, sees them on the disk, and gives it the name: an earlier
// file is there, as it was, until the new one is whole, whatever happens on the way. A process that is killed
// may leave FILE.0.new behind. The new file has the rights of the earlier one, links are followed. What
// results and recipes are worth writing with; each file costs the disk's time of a write (milliseconds).
//
// False, with nothing changed (rcFileName, rcFileUnwritable), for a path that leads to a folder, a device or
// a pipe, a file that may not be written, a folder that is missing or takes no new file, and a disk without
// room. A name in bytes becomes a path by std::filesystem::u8path. Reentrant; of two that write the same file
// at once one wins.
ORX_API bool writeWholeFile(const std::filesystem::path& file, const std::string& bytes);

// Not by itself: on Windows each byte would be taken for a character.
bool writeWholeFile(const std::string& file, const std::string& bytes) = delete;

}  // namespace orx

#endif
