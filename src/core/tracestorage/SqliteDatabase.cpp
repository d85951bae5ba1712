#include "core/tracestorage/SqliteDatabase.h"

#include <sqlite3.h>

namespace tracestorage {

void Statement::Finalize::operator()(sqlite3_stmt* statement) const noexcept {
    sqlite3_finalize(statement);
}

Statement& Statement::bind(int index, int64_t value) {
    sqlite3_bind_int64(m_statement.get(), index, value);
    return *this;
}

Statement& Statement::bind(int index, std::string_view text) {
    sqlite3_bind_text(m_statement.get(), index, text.data(), static_cast<int>(text.size()),
                      SQLITE_STATIC);
    return *this;
}

Statement& Statement::bindBlob(int index, std::span<const uint8_t> bytes) {
    // A null pointer would store NULL, and an empty payload is not an unknown one.
    static constexpr uint8_t kNothing = 0;
    sqlite3_bind_blob(m_statement.get(), index, bytes.empty() ? &kNothing : bytes.data(),
                      static_cast<int>(bytes.size()), SQLITE_STATIC);
    return *this;
}

Statement& Statement::bindNull(int index) {
    sqlite3_bind_null(m_statement.get(), index);
    return *this;
}

Statement::Step Statement::step() {
    if (!m_statement) return Step::Failed;
    switch (sqlite3_step(m_statement.get())) {
        case SQLITE_ROW:
            return Step::Row;
        case SQLITE_DONE:
            return Step::Done;
        default:
            return Step::Failed;
    }
}

bool Statement::run() {
    const bool done = step() == Step::Done;
    reset();
    return done;
}

void Statement::reset() { sqlite3_reset(m_statement.get()); }

int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(m_statement.get(), column);
}

std::string Statement::text(int column) const {
    const auto* text = sqlite3_column_text(m_statement.get(), column);
    const int bytes = sqlite3_column_bytes(m_statement.get(), column);
    if (text == nullptr) return {};
    return {reinterpret_cast<const char*>(text), static_cast<size_t>(bytes)};
}

std::span<const uint8_t> Statement::blob(int column) const {
    const void* bytes = sqlite3_column_blob(m_statement.get(), column);
    const int count = sqlite3_column_bytes(m_statement.get(), column);
    if (bytes == nullptr) return {};
    return {static_cast<const uint8_t*>(bytes), static_cast<size_t>(count)};
}

void SqliteDatabase::Close::operator()(sqlite3* database) const noexcept {
    sqlite3_close_v2(database);
}

std::unique_ptr<SqliteDatabase> SqliteDatabase::open(const std::string& path, Mode mode,
                                                     std::string& reason) {
    const int access =
        mode == Mode::ReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* raw = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &raw, access | SQLITE_OPEN_NOMUTEX, nullptr);
    std::unique_ptr<SqliteDatabase> database(new SqliteDatabase(raw));
    if (code != SQLITE_OK) {
        reason = path + ": " + (raw == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(raw));
        return nullptr;
    }
    sqlite3_extended_result_codes(raw, 1);
    return database;
}

Statement SqliteDatabase::prepare(std::string_view sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(m_database.get(), sql.data(), static_cast<int>(sql.size()),
                       SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    return Statement(statement);
}

bool SqliteDatabase::execute(const char* sql) {
    return sqlite3_exec(m_database.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

int64_t SqliteDatabase::queryInteger(std::string_view sql, int64_t otherwise) {
    Statement statement = prepare(sql);
    return statement.step() == Statement::Step::Row ? statement.integer(0) : otherwise;
}

void SqliteDatabase::interrupt() { sqlite3_interrupt(m_database.get()); }

bool SqliteDatabase::inTransaction() const { return sqlite3_get_autocommit(m_database.get()) == 0; }

int64_t SqliteDatabase::lastRowId() const { return sqlite3_last_insert_rowid(m_database.get()); }

std::string SqliteDatabase::lastError() const { return sqlite3_errmsg(m_database.get()); }

}  // namespace tracestorage
