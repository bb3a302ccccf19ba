// The few file operations that Windows and POSIX do differently. Names of hosts become paths by toPath.
#ifndef ORXFUNCTIONS_PLATFORM_FILE_ACCESS_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_FILE_ACCESS_INTERNAL_H

#include <zlib.h>

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "orxFunctions/platform/file_name_internal.h"

namespace orx::platform {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Opens a binary file for reading, or creates or empties one for writing. Null when that fails, for folders
// too. Only regular files are opened, by all functions here: a pipe or a device could be waited for without
// end.
File openToRead(const std::filesystem::path& path);
File openToWrite(const std::filesystem::path& path);

// A name must not become a path by itself, which on Windows would take each byte for a character.
File openToRead(const std::string& name) = delete;
File openToWrite(const std::string& name) = delete;

// Half a file is worse than none: a reader may take it for a whole one.
inline void removeUnfinished(const std::filesystem::path& path) {
    std::error_code ignored;
    std::filesystem::remove(std::filesystem::canonical(path, ignored), ignored);
}

// Closes a file that was written to. False, and the file is removed, unless it was `written` and the system
// takes the last bytes, too.
inline bool closeWritten(File file, const std::filesystem::path& path, bool written) {
    if (std::fclose(file.release()) == 0 && written) return true;
    removeUnfinished(path);
    return false;
}

// Whether the path leads to something that is no folder.
inline bool leadsToFile(const std::filesystem::path& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
}

struct GzipCloser {
    void operator()(gzFile file) const { gzclose(file); }
};
using GzipFile = std::unique_ptr<gzFile_s, GzipCloser>;

// Opens a file to read that may be compressed. Null when it can't be opened.
GzipFile openGzip(const std::filesystem::path& path);

// Appends text to a file, created if missing, in one operation: texts of several threads or processes never
// mix. Line ends become those of the platform. False when the file can't be opened or written.
bool appendText(const std::string& name, const std::string& text);

// Writes a file that does not exist yet; one that does is never overwritten. kCut: there was no room for all
// of it, and it is removed again.
enum class CreateResult { kCreated, kExists, kFailed, kCut };
CreateResult createFile(const std::filesystem::path& path, const void* bytes, std::size_t size);

// Writes a file whole, in place of one that exists: beside it first, as NAME.0.new (or the next number that
// is free), then on the disk, then under its name. Until then the earlier file stays, whatever happens; a
// process that is killed leaves at most the one beside it. The new file has the rights of the one that it
// replaces, and its owner where the process may give it away. Links are followed. kRefused, and nothing is
// written: for what is there and no regular file or may not be written, for a folder that is not there or
// takes no new file. kCut: there was no room for all of it.
enum class ReplaceResult { kReplaced, kRefused, kCut };
ReplaceResult replaceFile(const std::filesystem::path& path, const std::string& bytes);
ReplaceResult replaceFile(const std::string& name, const std::string& bytes) = delete;

// The end of that: puts what a file holds on the disk, gives it the rights of another one, and its name.
bool takePlaceOf(const std::filesystem::path& from, const std::filesystem::path& to);

// A text with the line ends of the platform.
std::string withPlatformLineEnds(const std::string& text);

// Hides a file from ordinary listings, and undoes it: an attribute on Windows, a leading point in the name on
// POSIX. On POSIX `path` may be the visible or the hidden name; a file that has the other name already is
// never overwritten. True when the file now is as asked for.
bool hideFile(const std::filesystem::path& path);
bool unhideFile(const std::filesystem::path& path);
bool isHidden(const std::filesystem::path& path);

}  // namespace orx::platform

#endif
