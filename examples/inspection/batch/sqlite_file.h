// The results as a SQLite database: a table of pictures and one of values (docs/batches.md).
#ifndef EXAMPLES_INSPECTION_BATCH_SQLITE_FILE_H
#define EXAMPLES_INSPECTION_BATCH_SQLITE_FILE_H

#include <memory>
#include <string>

#include "inspection/batch/picture_record.h"

namespace inspection {

// One thread at a time. What fails says so in problem(), and all that follows is left out.
class SqliteFile {
  public:
    SqliteFile();
    ~SqliteFile();
    SqliteFile(const SqliteFile&) = delete;
    SqliteFile& operator=(const SqliteFile&) = delete;

    // Empties the two tables of a database that this program made; another one is left alone.
    bool open(const std::string& file);
    // On the disk a second later at the latest, if pictures follow, or with close().
    bool add(const PictureRecord& record);
    bool close();  // true where nothing is open

    const std::string& problem() const { return problem_; }  // in English; empty: none

  private:
    struct Database;
    std::unique_ptr<Database> database_;
    std::string problem_;
};

}  // namespace inspection

#endif
