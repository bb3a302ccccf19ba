// Models of parts in files.
//
// The layout is that of docs/part-model.md: little-endian, with a version and a checksum. A model read back
// is the one that was written, to the last bit; one of a part of 120 pixels takes about 50 KiB. File names
// are bytes as in the library's other file functions: on POSIX those that the file system stores, on Windows
// UTF-8 or code page 936. Reentrant.
#ifndef ORXFUNCTIONS_MATCHING_PART_MODEL_FILE_H
#define ORXFUNCTIONS_MATCHING_PART_MODEL_FILE_H

#include <string>

#include "orxFunctions/api.h"
#include "orxFunctions/matching/part_model.h"

namespace orx {

// Writes the file, replacing one that exists once the new one is whole on the disk: a full disk or the end of
// the process leaves the earlier one (a killed process, perhaps, PATH.0.new beside it). The folder must take
// a new file. msBadModel for a model that is not valid() (rcNotReady); msUnwritable for a path that leads to
// no regular file, that may not be written, or on whose disk there is no room (rcFileName, rcFileUnwritable).
// Nothing changes then.
ORX_API TMatchStatus writePartModel(const std::string& path, const TPartModel& model);

// Reads what writePartModel wrote. A model that is not valid(), of the status msUnreadable, for a file that
// can't be opened (rcFileName, rcFileMissing, rcFileUnreadable), that is cut or changed in any byte, of
// another version, or that holds what no model can (rcFileFormat): every number is checked, and sizes before
// memory is taken for them.
ORX_API TPartModel readPartModel(const std::string& path);

// The bytes of that file, for a recipe or a database that holds the model; none for one that is not valid()
// (rcNotReady).
ORX_API std::string partModelToBytes(const TPartModel& model);

// The model in such bytes, refused like a file (rcFileFormat).
ORX_API TPartModel partModelFromBytes(const std::string& bytes);

}  // namespace orx

#endif
