// Names that a host gives, and paths.
//
// A name is a string of bytes: on POSIX those that the file system stores; on Windows code page 936 or UTF-8.
// Which one is seen from the bytes: hundreds of common characters, alone and in words, are valid in both.
// They are read as
// - UTF-8 where that reading has a character of 3 or 4 bytes, as each Chinese one has: in code page 936 only
//   rare characters in a row look like that;
// - code page 936 else, where UTF-8 would give Latin, Greek or Cyrillic letters; unless what that names does
//   not exist and the UTF-8 reading leads to something that does, or to a folder nearer to it.
#ifndef ORXFUNCTIONS_PLATFORM_FILE_NAME_INTERNAL_H
#define ORXFUNCTIONS_PLATFORM_FILE_NAME_INTERNAL_H

#include <filesystem>
#include <string>

namespace orx::platform {

// Empty for bytes that are no text in either encoding.
std::filesystem::path toPath(const std::string& name);

// A name of the path: on Windows in code page 936 where toPath takes that back, else in UTF-8.
std::string toName(const std::filesystem::path& path);

// The path to be shown, in UTF-8: on POSIX bytes that are no UTF-8 are read as code page 936.
std::string shownName(const std::filesystem::path& path);

// Whether one of these ASCII characters is in a name that belongs to no folder: as a character, not as the
// second byte of one in code page 936. True for bytes that are no text in either encoding.
bool hasAnyOf(const std::string& characters, const std::string& name);

}  // namespace orx::platform

#endif
