// Files under names that a host gives, and the few file operations that Windows and POSIX do differently.
//
// A name is a string of bytes: on POSIX the bytes that the file system stores; on Windows UTF-8 where the
// bytes are valid UTF-8, else code page 936 (short texts in code page 936 that happen to be valid UTF-8 are
// rare, and refusing UTF-8 would shut out names that code page 936 lacks).
#ifndef ORXFUNCTIONS_PLATFORM_FILE_ACCESS_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_FILE_ACCESS_INTERNAL_H

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace orx::platform {

std::filesystem::path toPath(const std::string& name);

// The name of a path that toPath takes back: on Windows code page 936, UTF-8 where that has no counterpart.
std::string toName(const std::filesystem::path& path);

// The name as the C runtime, and with it OpenCV, opens it: on Windows in the process's code page.
std::string toRuntimeName(const std::string& name);

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Opens a binary file for reading, or creates or empties one for writing. Null when that fails, for folders
// too.
File openToRead(const std::string& name);
File openToWrite(const std::string& name);

// Appends text to a file, created if missing, in one operation: texts of several threads or processes never
// mix. Line ends become those of the platform. False when the file can't be opened or written.
bool appendText(const std::string& name, const std::string& text);

// Writes a file that does not exist yet; one that does is never overwritten.
enum class CreateResult { kCreated, kExists, kFailed };
CreateResult createFile(const std::filesystem::path& path, const void* bytes, std::size_t size);

// Hides a file from ordinary listings, and undoes it: an attribute on Windows, a leading point in the name on
// POSIX. On POSIX `path` may be the visible or the hidden name; a file that has the other name already is
// never overwritten. True when the file now is as asked for.
bool hideFile(const std::filesystem::path& path);
bool unhideFile(const std::filesystem::path& path);
bool isHidden(const std::filesystem::path& path);

}  // namespace orx::platform

#endif
