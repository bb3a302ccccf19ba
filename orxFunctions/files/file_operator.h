// Files and folders: list, measure, hide, create, delete, copy, move; and images saved in the background.
//
// A name is bytes: on POSIX those of the file system; on Windows code page 936 or UTF-8, seen from the bytes.
// What is valid in both is UTF-8 where that has a character of 3 or 4 bytes (as Chinese ones are), else code
// page 936, unless only the UTF-8 reading exists. Names that come back are in code page 936, or in UTF-8
// where that could not name the file again.
//
// No shell is involved: blanks, quotes and semicolons are ordinary characters of a name. Symbolic links
// inside a folder are never followed. Nothing throws. Every function is thread-safe.
#ifndef ORXFUNCTIONS_FILES_FILE_OPERATOR_H
#define ORXFUNCTIONS_FILES_FILE_OPERATOR_H

#include <cstdint>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "orxFunctions/api.h"

namespace FileOperator {

// The files of a folder in the order of their bytes, each with the folder's name before its own; with
// `recursive` those of its subfolders too. `extension` (".png", "png" or "*.png"; letter case does not count)
// keeps the files that end with it, "" all. A link to a file is listed, a link to a folder is not entered.
// Empty for a folder that can't be read.
ORX_API std::vector<std::string> listFiles(std::string folder, std::string extension = "",
                                           bool recursive = false);

// The bytes of all files in a folder and its subfolders, links not counted. -1 for a folder that can't be
// read.
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
// something in it can't be deleted.
ORX_API bool deleteFolder(std::string path);

// Copies or moves a file; moving works from one file system to another. Where `to` is a folder, the file
// keeps its name in it. False for what is not a file, for a file and itself, and for an existing target
// unless `overwrite`.
ORX_API bool copyFile(std::string from, std::string to, bool overwrite = false);
ORX_API bool moveFile(std::string from, std::string to, bool overwrite = false);

// Saves a copy of the image on a background thread, into `folder` (created if missing) as
// PREFIXyyyymmdd_hhmmss_mmm_nnnnnn.EXT: the time of the call and a running number, so that names sort in the
// order of the calls. `path`, if given, receives the full name. `extension` chooses the format (".png",
// ".bmp", ".jpg",
// ".tif" ...).
//
// Never waits for the disk. At most 64 images wait, of 1 GiB together; one more is refused, with a message
// for the first of a row of refusals. False, and nothing saved, for a full queue, an empty image, an unknown
// format, or an empty folder or one in the prefix. What fails later, on the thread (a full disk, a name that
// exists: it is never overwritten), is reported by a message in colour 1.
//
// Unloading the library, and on POSIX the end of the process, wait for the images still queued. On Windows
// call flush before the process ends: it ends the thread in the middle of its image.
ORX_API bool saveImage(cv::Mat img, std::string folder, std::string prefix = "",
                       std::string extension = ".png", std::string* path = nullptr);

// Waits until the images given to saveImage before this call are written or reported. With `milliseconds` of
// 0 or more it waits no longer than that, and returns false when the time ran out.
ORX_API bool flush(int milliseconds = -1);

}  // namespace FileOperator

#endif
