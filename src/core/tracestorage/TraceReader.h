#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/tracestorage/FrameRecord.h"
#include "core/tracestorage/ImportStorage.h"

namespace tracestorage {

class SqliteDatabase;

// A file as the storage lists it.
struct StoredFile {
    int64_t id = 0;
    std::string path;
    uint64_t size = 0;
    std::string format;
    int64_t startNs = 0;  // start of measurement since 1970-01-01, 0 when unknown
    std::string importedAt;
    uint64_t units = 0;
    uint64_t frames = 0;
    uint64_t dropped = 0;
    int64_t firstNs = 0;  // time of the first and the last frame
    int64_t lastNs = 0;
};

// Read-only view of a trace database.
class TraceReader {
public:
    // Answers false to end the walk early.
    using FrameVisitor =
        std::function<bool(const FrameRecord& record, std::span<const uint8_t> payload)>;

    [[nodiscard]] static std::unique_ptr<TraceReader> open(const std::string& utf8Path,
                                                           std::string& reason);
    ~TraceReader();
    TraceReader(const TraceReader&) = delete;
    TraceReader& operator=(const TraceReader&) = delete;

    [[nodiscard]] std::vector<StoredFile> files();
    [[nodiscard]] std::vector<ImportNote> notes(int64_t fileId);
    [[nodiscard]] std::vector<SkippedKind> skipped(int64_t fileId);
    // Frames of one file in the file's own order; false when the database fails.
    [[nodiscard]] bool forEachFrame(int64_t fileId, const FrameVisitor& visit);
    [[nodiscard]] std::string lastError() const;

private:
    explicit TraceReader(std::unique_ptr<SqliteDatabase> database);
    std::unique_ptr<SqliteDatabase> m_database;
};

}  // namespace tracestorage
