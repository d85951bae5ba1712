#pragma once

#include <string>

namespace tracestorage {

class SqliteDatabase;

// Version of the tables, kept in the database's user_version. Readers refuse a newer one.
inline constexpr int kSchemaVersion = 1;

inline constexpr const char* kInsertFrame =
    "INSERT INTO frame(file_id, time_ns, bus, channel, ident, flags, dlc, detail, data) "
    "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)";

inline constexpr const char* kCreateIndices =
    "CREATE INDEX IF NOT EXISTS frame_by_time ON frame(file_id, time_ns);"
    "CREATE INDEX IF NOT EXISTS frame_by_ident ON frame(file_id, bus, channel, ident);";

inline constexpr const char* kDropIndices =
    "DROP INDEX IF EXISTS frame_by_time;"
    "DROP INDEX IF EXISTS frame_by_ident;";

// Settings of a connection that imports: one large transaction, safe against a killed process, a
// bounded cache so that memory does not follow the size of the file.
inline constexpr const char* kImportSettings =
    "PRAGMA page_size=8192;"
    "PRAGMA journal_mode=DELETE;"
    "PRAGMA synchronous=NORMAL;"
    "PRAGMA cache_size=-32768;"
    "PRAGMA foreign_keys=OFF;";

// Makes the tables in an empty database and checks those of an existing one. False with a reason
// when the file holds other data or a newer schema.
[[nodiscard]] bool prepareSchema(SqliteDatabase& database, std::string& reason);
// The check alone, for a database that is only read.
[[nodiscard]] bool checkSchema(SqliteDatabase& database, std::string& reason);

}  // namespace tracestorage
