// Files and folders: list, measure, hide, create, delete, copy, move; and images saved in the background,
// which save_image.h declares.
//
// A name is bytes: on POSIX those of the file system; on Windows code page 936 or UTF-8, seen from the bytes.
// What is valid in both is UTF-8 where that has a character of 3 or 4 bytes (as Chinese ones are), else code
// page 936, unless only the UTF-8 reading exists. Names that come back are in code page 936, or in UTF-8
// where that could not name the file again.
//
// No shell is involved: blanks, quotes and semicolons are ordinary characters of a name. Symbolic links
// inside a folder are never followed. Folders may lie thousands deep. Nothing throws. Every function is
// thread-safe.
//
// What refuses keeps the reason for lastRefusal(): rcFileName for a name that is empty or not fit for it,
// rcFileMissing, rcFileUnreadable for what can't be read or is of another kind, rcFileUnwritable for what
// can't be made, changed or deleted, rcMemory and rcFailed for what the system reports. fileExists,
// folderExists and isHidden refuse nothing.
#ifndef ORXFUNCTIONS_FILES_FILE_OPERATOR_H
#define ORXFUNCTIONS_FILES_FILE_OPERATOR_H

#include <cstdint>
#include <string>
#include <vector>

#include "orxFunctions/api.h"
#include "orxFunctions/files/save_image.h"

namespace FileOperator {

// The files of a folder in the order of their bytes, each with the folder's name before its own; with
// `recursive` those of its subfolders too. `extension` (".png", "png" or "*.png"; letter case does not count)
// keeps the files that end with it, "" all. A link to a file is listed, a link to a folder is not entered.
// What others delete meanwhile, and subfolders that may not be read, are passed over. Empty for a folder that
// can't be read, and where the reading fails further down; rcNoResult where there is no such file.
ORX_API std::vector<std::string> listFiles(std::string folder, std::string extension = "",
                                           bool recursive = false);

// The bytes of all files in a folder and its subfolders, links not counted; else as for listFiles. -1 where
// that is empty because of a folder that can't be read.
ORX_API std::int64_t folderSize(std::string folder);

// True for an existing file (a folder is none) and an existing folder; links count as what they lead to.
ORX_API bool fileExists(std::string path);
ORX_API bool folderExists(std::string path);

// Hides a file or folder from ordinary listings, and shows it again: by its attribute on Windows; on POSIX by
// a point before its name ("a.png" becomes ".a.png"). Both take either name, so that a host need not know
// which platform it is on. True when it now is as asked for; false when it does not exist or the other name
// is taken.
ORX_API bool hideFile(std::string path);
ORX_API bool unhideFile(std::string path);
ORX_API bool isHidden(std::string path);

// Creates a folder, with the folders above it where they are missing. True when it exists afterwards. Refuses
// "" and the root of the file system or of a drive.
ORX_API bool createFolder(std::string path);

// Deletes a folder with all that is in it; links inside are deleted, not what they lead to. False for what is
// not a folder (a link to one is not), and for "", a root, and names that end in "." or ".."; also when
// something in it can't be deleted, but the rest then is.
ORX_API bool deleteFolder(std::string path);

// Copies or moves a file; moving works from one file system to another. Where `to` is a folder, the file
// keeps its name in it. False for what is not a plain file, for a file and itself, and for an existing target
// unless `overwrite`. A copy that can't be finished (a full disk) is removed.
ORX_API bool copyFile(std::string from, std::string to, bool overwrite = false);
ORX_API bool moveFile(std::string from, std::string to, bool overwrite = false);

}  // namespace FileOperator

#endif
