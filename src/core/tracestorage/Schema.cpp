#include "core/tracestorage/Schema.h"

#include "core/tracestorage/SqliteDatabase.h"

namespace tracestorage {
namespace {
// "QTRC": marks the file as a trace database for tools such as file(1).
constexpr int64_t kApplicationId = 0x51545243;

constexpr const char* kCreateTables = R"sql(
CREATE TABLE file(
    id          INTEGER PRIMARY KEY,
    path        TEXT    NOT NULL,
    size        INTEGER NOT NULL,
    modified_ns INTEGER NOT NULL,
    hash        TEXT    NOT NULL,
    state       INTEGER NOT NULL,
    format      TEXT    NOT NULL DEFAULT '',
    start_ns    INTEGER NOT NULL DEFAULT 0,
    imported_at TEXT    NOT NULL,
    units       INTEGER NOT NULL DEFAULT 0,
    frames      INTEGER NOT NULL DEFAULT 0,
    dropped     INTEGER NOT NULL DEFAULT 0);
CREATE UNIQUE INDEX file_by_path ON file(path);
CREATE TABLE frame(
    id      INTEGER PRIMARY KEY,
    file_id INTEGER NOT NULL,
    time_ns INTEGER NOT NULL,
    bus     INTEGER NOT NULL,
    channel INTEGER NOT NULL,
    ident   INTEGER NOT NULL,
    flags   INTEGER NOT NULL,
    dlc     INTEGER NOT NULL,
    detail  INTEGER NOT NULL,
    data    BLOB    NOT NULL);
CREATE TABLE note(
    file_id  INTEGER NOT NULL,
    position INTEGER NOT NULL,
    text     TEXT    NOT NULL);
CREATE TABLE skipped(
    file_id INTEGER NOT NULL,
    kind    TEXT    NOT NULL,
    count   INTEGER NOT NULL);
)sql";

constexpr const char* kCreateViews = R"sql(
CREATE VIEW can_frame AS
    SELECT f.id, f.file_id, (f.time_ns - file.start_ns) / 1e9 AS seconds, f.time_ns, f.channel,
           f.ident, printf('%X', f.ident) AS hex_ident, f.flags & 1 AS transmitted,
           (f.flags >> 1) & 1 AS extended, (f.flags >> 2) & 1 AS remote, (f.flags >> 3) & 1 AS fd,
           (f.flags >> 4) & 1 AS brs, (f.flags >> 5) & 1 AS esi, (f.flags >> 6) & 1 AS error,
           f.dlc, length(f.data) AS length, f.data
    FROM frame f JOIN file ON file.id = f.file_id WHERE f.bus = 1;
CREATE VIEW lin_frame AS
    SELECT f.id, f.file_id, (f.time_ns - file.start_ns) / 1e9 AS seconds, f.time_ns, f.channel,
           f.ident, f.flags & 1 AS transmitted, (f.flags >> 6) & 1 AS error,
           (f.flags >> 8) & 1 AS enhanced, f.detail AS checksum, length(f.data) AS length, f.data
    FROM frame f JOIN file ON file.id = f.file_id WHERE f.bus = 2;
CREATE VIEW ethernet_frame AS
    SELECT f.id, f.file_id, (f.time_ns - file.start_ns) / 1e9 AS seconds, f.time_ns, f.channel,
           f.flags & 1 AS transmitted, hex(substr(f.data, 1, 6)) AS destination,
           hex(substr(f.data, 7, 6)) AS source, hex(substr(f.data, 13, 2)) AS ethertype,
           length(f.data) AS length, f.data
    FROM frame f JOIN file ON file.id = f.file_id WHERE f.bus = 3;
CREATE VIEW flexray_frame AS
    SELECT f.id, f.file_id, (f.time_ns - file.start_ns) / 1e9 AS seconds, f.time_ns, f.channel,
           f.ident AS slot, (f.detail >> 16) & 255 AS cycle, (f.detail >> 24) & 3 AS channel_mask,
           f.detail & 65535 AS header_crc, f.flags & 1 AS transmitted,
           (f.flags >> 16) & 1 AS null_frame, length(f.data) AS length, f.data
    FROM frame f JOIN file ON file.id = f.file_id WHERE f.bus = 5;
)sql";

bool createSchema(SqliteDatabase& database) {
    const std::string marks = "PRAGMA application_id=" + std::to_string(kApplicationId) +
                              ";PRAGMA user_version=" + std::to_string(kSchemaVersion) + ";";
    return database.execute("BEGIN IMMEDIATE") && database.execute(kCreateTables) &&
           database.execute(kCreateViews) && database.execute(marks.c_str()) &&
           database.execute("COMMIT");
}
}  // namespace

bool checkSchema(SqliteDatabase& database, std::string& reason) {
    if (database.queryInteger("PRAGMA application_id", -1) != kApplicationId) {
        reason = "not a trace database";
        return false;
    }
    const int64_t version = database.queryInteger("PRAGMA user_version", -1);
    if (version != kSchemaVersion) {
        reason = "trace database of version " + std::to_string(version) + ", this program reads " +
                 std::to_string(kSchemaVersion);
        return false;
    }
    return true;
}

bool prepareSchema(SqliteDatabase& database, std::string& reason) {
    const int64_t objects = database.queryInteger("SELECT count(*) FROM sqlite_master", -1);
    if (objects < 0) {
        reason = database.lastError();
        return false;
    }
    if (objects > 0) return checkSchema(database, reason);
    if (createSchema(database)) return true;
    reason = database.lastError();
    if (database.inTransaction()) (void)database.execute("ROLLBACK");
    // Another process may have made the tables in between.
    return checkSchema(database, reason);
}

}  // namespace tracestorage
