#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "core/tracestorage/ImportStorage.h"
#include "core/tracestorage/SqliteDatabase.h"

namespace tracestorage {

// Trace storage in one SQLite file. An import is one transaction: until finishImport has answered
// true no other connection sees a row of it, and a process that dies leaves nothing behind.
class TraceStorage final : public ImportStorage {
public:
    // Opens or creates the database; null with a reason when it cannot be used.
    [[nodiscard]] static std::unique_ptr<TraceStorage> open(const std::string& utf8Path,
                                                            std::string& reason);
    // The database in the user's data folder, for callers that name none.
    [[nodiscard]] static std::unique_ptr<TraceStorage> openDefault(std::string& reason);
    ~TraceStorage() override;

    [[nodiscard]] ImportState lookUp(const FileIdentity& file) override;
    [[nodiscard]] bool beginImport(const FileIdentity& file) override;
    [[nodiscard]] bool insertFrames(const FrameBatch& batch) override;
    [[nodiscard]] bool finishImport(const ImportSummary& summary) override;
    void abandonImport() override;
    void interrupt() override;
    [[nodiscard]] std::string lastError() const override;

private:
    explicit TraceStorage(std::unique_ptr<SqliteDatabase> database);
    void rollBack();
    [[nodiscard]] bool removeOlder(const std::string& path);
    [[nodiscard]] bool addFile(const FileIdentity& file);
    [[nodiscard]] bool writeSummary(const ImportSummary& summary);
    bool refuse(std::string reason);

    std::mutex m_access;  // held for whole operations on the connection, a batch of rows at a time
    std::unique_ptr<SqliteDatabase> m_database;
    Statement m_insert;
    mutable std::mutex m_mutex;  // guards the three below: lookUp may come from another thread
    std::optional<FileIdentity> m_current;
    ImportState m_currentState = ImportState::NotImported;
    std::string m_error;
    int64_t m_fileId = 0;
    uint64_t m_stored = 0;
};

}  // namespace tracestorage
