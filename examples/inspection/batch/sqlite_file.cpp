#include "inspection/batch/sqlite_file.h"

#include <sqlite3.h>

#include <chrono>
#include <cmath>

#include "inspection/report/utf8.h"

namespace inspection {
namespace {

// "orxI": marks databases that this program made.
constexpr int kApplication = 0x6f727849;
constexpr std::chrono::seconds kLongestTransaction(1);

constexpr const char* kTables = R"(
PRAGMA application_id = 1869772873;
CREATE TABLE IF NOT EXISTS pictures (
  id INTEGER PRIMARY KEY, path TEXT NOT NULL, bytes INTEGER, verdict TEXT NOT NULL, problem TEXT, annotated TEXT);
CREATE TABLE IF NOT EXISTS "values" (
  picture INTEGER NOT NULL REFERENCES pictures(id), name TEXT NOT NULL, type TEXT, unit TEXT, value REAL,
  deviation REAL, nominal REAL, lower REAL, upper REAL, verdict TEXT NOT NULL, conformity REAL, problem TEXT);
CREATE INDEX IF NOT EXISTS values_of_picture ON "values"(picture);
DELETE FROM "values";
DELETE FROM pictures;
)";
static_assert(kApplication == 1869772873, "the number that kTables has");

void bindText(sqlite3_stmt* statement, int column, const std::string& text) {
    if (text.empty())
        sqlite3_bind_null(statement, column);
    else
        sqlite3_bind_text(statement, column, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void bindNumber(sqlite3_stmt* statement, int column, bool known, double value) {
    if (known && std::isfinite(value))
        sqlite3_bind_double(statement, column, value);
    else
        sqlite3_bind_null(statement, column);
}

bool isHealthy(sqlite3* handle) {
    const int code = sqlite3_errcode(handle);
    return code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE;
}

}  // namespace

struct SqliteFile::Database {
    ~Database() {
        sqlite3_finalize(picture);
        sqlite3_finalize(value);
        sqlite3_close(handle);
    }

    bool run(const char* sql) { return sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK; }

    // The first number of a query's first row; -1 when there is none.
    int ask(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        int answer = -1;
        if (sqlite3_prepare_v2(handle, sql, -1, &statement, nullptr) == SQLITE_OK &&
            sqlite3_step(statement) == SQLITE_ROW)
            answer = sqlite3_column_int(statement, 0);
        sqlite3_finalize(statement);
        return answer;
    }

    bool isOursOrNew() {
        const int tables = ask("SELECT count(*) FROM sqlite_master");
        return tables == 0 || (tables > 0 && ask("PRAGMA application_id") == kApplication);
    }

    bool prepare() {
        return sqlite3_prepare_v2(handle, "INSERT INTO pictures VALUES (NULL, ?, ?, ?, ?, ?)", -1, &picture,
                                  nullptr) == SQLITE_OK &&
               sqlite3_prepare_v2(handle,
                                  "INSERT INTO \"values\" VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)", -1,
                                  &value, nullptr) == SQLITE_OK;
    }

    bool begin() {
        begun = std::chrono::steady_clock::now();
        return run("BEGIN");
    }

    bool add(const PictureRecord& record) {
        sqlite3_reset(picture);
        bindText(picture, 1, record.name);
        sqlite3_bind_int64(picture, 2, static_cast<sqlite3_int64>(record.bytes));
        bindText(picture, 3, orx::verdictText(record.result.verdict));
        bindText(picture, 4, cleanUtf8(record.result.problem));
        bindText(picture, 5,
                 record.annotated.empty() ? "" : std::string(kPicturesFolder) + "/" + record.annotated);
        if (sqlite3_step(picture) != SQLITE_DONE) return false;
        const sqlite3_int64 id = sqlite3_last_insert_rowid(handle);
        for (const orx::TRecipeValue& entry : record.result.values) {
            if (!add(id, entry)) return false;
        }
        if (std::chrono::steady_clock::now() - begun < kLongestTransaction) return true;
        return run("COMMIT") && begin();
    }

    bool add(sqlite3_int64 id, const orx::TRecipeValue& entry) {
        sqlite3_reset(value);
        sqlite3_bind_int64(value, 1, id);
        bindText(value, 2, entry.name);
        bindText(value, 3, entry.type);
        bindText(value, 4, entry.unit);
        bindNumber(value, 5, entry.measured, entry.value);
        bindNumber(value, 6, entry.measured, entry.deviation);
        bindNumber(value, 7, entry.hasNominal, entry.nominal);
        bindNumber(value, 8, true, entry.tolerance.lower);
        bindNumber(value, 9, true, entry.tolerance.upper);
        bindText(value, 10, orx::verdictText(entry.verdict));
        bindNumber(value, 11, entry.measured, entry.conformity);
        bindText(value, 12, cleanUtf8(entry.problem));
        return sqlite3_step(value) == SQLITE_DONE;
    }

    sqlite3* handle = nullptr;
    sqlite3_stmt* picture = nullptr;
    sqlite3_stmt* value = nullptr;
    std::chrono::steady_clock::time_point begun;
};

SqliteFile::SqliteFile() = default;
SqliteFile::~SqliteFile() = default;

bool SqliteFile::open(const std::string& file) {
    database_ = std::make_unique<Database>();
    const bool opened = sqlite3_open(file.c_str(), &database_->handle) == SQLITE_OK;
    const bool ours = opened && database_->isOursOrNew();
    if (ours && database_->run(kTables) && database_->prepare() && database_->begin()) return true;
    problem_ = cleanUtf8(file) + " can't be written: " +
               (opened && !ours && isHealthy(database_->handle)
                    ? "it holds something else than results of this program"
                    : sqlite3_errmsg(database_->handle));
    database_.reset();
    return false;
}

bool SqliteFile::add(const PictureRecord& record) {
    if (!database_) return false;
    if (database_->add(record)) return true;
    problem_ = std::string("the SQLite file can't be written: ") + sqlite3_errmsg(database_->handle);
    database_->run("COMMIT");  // what there is
    database_.reset();
    return false;
}

bool SqliteFile::close() {
    if (!database_) return true;
    const bool written = database_->run("COMMIT");
    if (!written)
        problem_ = std::string("the SQLite file can't be written: ") + sqlite3_errmsg(database_->handle);
    database_.reset();
    return written;
}

}  // namespace inspection
