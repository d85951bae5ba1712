#include "InsertFloor.h"

#include <sqlite3.h>

#include <filesystem>

#include "core/tracestorage/Schema.h"

namespace quill::bench {

double insertRows(const std::string& path, const tracestorage::FrameBatch& rows) {
    std::filesystem::remove(path);
    sqlite3* database = nullptr;
    sqlite3_open(path.c_str(), &database);
    sqlite3_exec(database, tracestorage::kImportSettings, nullptr, nullptr, nullptr);
    sqlite3_exec(database,
                 "CREATE TABLE frame(id INTEGER PRIMARY KEY, file_id INTEGER NOT NULL, time_ns "
                 "INTEGER NOT NULL, bus INTEGER NOT NULL, channel INTEGER NOT NULL, ident INTEGER "
                 "NOT NULL, flags INTEGER NOT NULL, dlc INTEGER NOT NULL, detail INTEGER NOT NULL, "
                 "data BLOB NOT NULL); BEGIN",
                 nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(database, tracestorage::kInsertFrame, -1, &insert, nullptr);
    for (const auto& row : rows.frames()) {
        const auto payload = rows.payload(row);
        sqlite3_bind_int64(insert, 1, 1);
        sqlite3_bind_int64(insert, 2, row.timeNs);
        sqlite3_bind_int64(insert, 3, static_cast<int64_t>(row.bus));
        sqlite3_bind_int64(insert, 4, row.channel);
        sqlite3_bind_int64(insert, 5, row.ident);
        sqlite3_bind_int64(insert, 6, row.flags);
        sqlite3_bind_int64(insert, 7, row.dlc);
        sqlite3_bind_int64(insert, 8, row.detail);
        sqlite3_bind_blob(insert, 9, payload.data(), static_cast<int>(payload.size()),
                          SQLITE_STATIC);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(database, tracestorage::kCreateIndices, nullptr, nullptr, nullptr);
    sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(database);
    return static_cast<double>(rows.size());
}

}  // namespace quill::bench
