// Why a file or a folder is refused: asked of the file system once it has failed.
#ifndef ORXFUNCTIONS_FOUNDATION_FILE_REFUSAL_INTERNAL_H
#define ORXFUNCTIONS_FOUNDATION_FILE_REFUSAL_INTERNAL_H

#include <filesystem>
#include <system_error>

namespace orx {

// Each keeps a refusal of the public function and answers false.

// A file that can't be opened, or read to its end: rcFileName, rcFileMissing or rcFileUnreadable.
bool refuseToRead(const char* function, const std::filesystem::path& file);
// A file that can't be made, or written to its end: rcFileName or rcFileUnwritable.
bool refuseToWrite(const char* function, const std::filesystem::path& file);
// A folder that can't be read, or not all that is in it, with the system's error: rcFileName, rcFileMissing
// or rcFileUnreadable.
bool refuseToList(const char* function, const std::filesystem::path& folder, const std::error_code& error);

}  // namespace orx

#endif
