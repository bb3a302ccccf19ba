// Of a build without SQLite.
#include "inspection/batch/sqlite_file.h"

namespace inspection {

struct SqliteFile::Database {};

SqliteFile::SqliteFile() = default;
SqliteFile::~SqliteFile() = default;

bool SqliteFile::open(const std::string& file) {
    problem_ = file + ": this build has no SQLite";
    return false;
}
bool SqliteFile::add(const PictureRecord&) { return false; }
bool SqliteFile::close() { return true; }

}  // namespace inspection
