#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tracestorage {

// A prepared statement. An invalid one (bad SQL, closed database) answers every step with an error.
class Statement {
public:
    enum class Step { Row, Done, Failed };

    Statement() = default;
    explicit Statement(sqlite3_stmt* statement) : m_statement(statement) {}

    [[nodiscard]] bool valid() const { return m_statement != nullptr; }
    // Parameters count from 1. Text and blobs must live until the next step.
    Statement& bind(int index, int64_t value);
    Statement& bind(int index, std::string_view text);
    Statement& bindBlob(int index, std::span<const uint8_t> bytes);
    Statement& bindNull(int index);
    [[nodiscard]] Step step();
    // Steps a statement without rows to its end and makes it ready again.
    [[nodiscard]] bool run();
    void reset();

    // Columns count from 0 and are valid until the next step.
    [[nodiscard]] int64_t integer(int column) const;
    [[nodiscard]] std::string text(int column) const;
    [[nodiscard]] std::span<const uint8_t> blob(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const noexcept;
    };
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

// One connection to an SQLite database file. Used by one thread at a time, except interrupt:
// SQLite's own lock would be taken four times for every row.
class SqliteDatabase {
public:
    enum class Mode { ReadWrite, ReadOnly };

    // Null with a reason when the file cannot be opened or is no database.
    [[nodiscard]] static std::unique_ptr<SqliteDatabase> open(const std::string& path, Mode mode,
                                                              std::string& reason);

    [[nodiscard]] Statement prepare(std::string_view sql);
    // Runs one or more statements without results.
    [[nodiscard]] bool execute(const char* sql);
    [[nodiscard]] int64_t queryInteger(std::string_view sql, int64_t otherwise);
    void interrupt();
    [[nodiscard]] bool inTransaction() const;
    [[nodiscard]] int64_t lastRowId() const;
    [[nodiscard]] std::string lastError() const;

private:
    struct Close {
        void operator()(sqlite3* database) const noexcept;
    };
    explicit SqliteDatabase(sqlite3* database) : m_database(database) {}
    std::unique_ptr<sqlite3, Close> m_database;
};

}  // namespace tracestorage
