#include "core/tracestorage/TraceReader.h"

#include "core/tracestorage/Schema.h"
#include "core/tracestorage/SqliteDatabase.h"

namespace tracestorage {

TraceReader::TraceReader(std::unique_ptr<SqliteDatabase> database)
    : m_database(std::move(database)) {}

TraceReader::~TraceReader() = default;

std::unique_ptr<TraceReader> TraceReader::open(const std::string& utf8Path, std::string& reason) {
    auto database = SqliteDatabase::open(utf8Path, SqliteDatabase::Mode::ReadOnly, reason);
    if (!database) return nullptr;
    if (!checkSchema(*database, reason)) {
        reason = utf8Path + ": " + reason;
        return nullptr;
    }
    return std::unique_ptr<TraceReader>(new TraceReader(std::move(database)));
}

std::vector<StoredFile> TraceReader::files() {
    std::vector<StoredFile> result;
    Statement query = m_database->prepare(
        "SELECT id, path, size, format, start_ns, imported_at, units, frames, dropped,"
        " coalesce((SELECT min(time_ns) FROM frame WHERE file_id=file.id), 0),"
        " coalesce((SELECT max(time_ns) FROM frame WHERE file_id=file.id), 0)"
        " FROM file WHERE state=4 ORDER BY id");
    while (query.step() == Statement::Step::Row) {
        StoredFile file;
        file.id = query.integer(0);
        file.path = query.text(1);
        file.size = static_cast<uint64_t>(query.integer(2));
        file.format = query.text(3);
        file.startNs = query.integer(4);
        file.importedAt = query.text(5);
        file.units = static_cast<uint64_t>(query.integer(6));
        file.frames = static_cast<uint64_t>(query.integer(7));
        file.dropped = static_cast<uint64_t>(query.integer(8));
        file.firstNs = query.integer(9);
        file.lastNs = query.integer(10);
        result.push_back(std::move(file));
    }
    return result;
}

std::vector<ImportNote> TraceReader::notes(int64_t fileId) {
    std::vector<ImportNote> result;
    Statement query =
        m_database->prepare("SELECT position, text FROM note WHERE file_id=?1 ORDER BY rowid");
    query.bind(1, fileId);
    while (query.step() == Statement::Step::Row) {
        result.push_back({static_cast<uint64_t>(query.integer(0)), query.text(1)});
    }
    return result;
}

std::vector<SkippedKind> TraceReader::skipped(int64_t fileId) {
    std::vector<SkippedKind> result;
    Statement query = m_database->prepare(
        "SELECT kind, count FROM skipped WHERE file_id=?1 ORDER BY count DESC, kind");
    query.bind(1, fileId);
    while (query.step() == Statement::Step::Row) {
        result.push_back({query.text(0), static_cast<uint64_t>(query.integer(1))});
    }
    return result;
}

bool TraceReader::forEachFrame(int64_t fileId, const FrameVisitor& visit) {
    // The unary plus keeps SQLite from walking an index: rows lie in the file's order already.
    Statement query = m_database->prepare(
        "SELECT time_ns, bus, channel, ident, flags, dlc, detail, data FROM frame"
        " WHERE +file_id=?1 ORDER BY id");
    query.bind(1, fileId);
    while (true) {
        const Statement::Step step = query.step();
        if (step == Statement::Step::Done) return true;
        if (step == Statement::Step::Failed) return false;
        FrameRecord record;
        record.timeNs = query.integer(0);
        record.bus = static_cast<Bus>(query.integer(1));
        record.channel = static_cast<uint16_t>(query.integer(2));
        record.ident = static_cast<uint32_t>(query.integer(3));
        record.flags = static_cast<uint32_t>(query.integer(4));
        record.dlc = static_cast<uint8_t>(query.integer(5));
        record.detail = static_cast<uint32_t>(query.integer(6));
        const auto payload = query.blob(7);
        record.payloadLength = static_cast<uint32_t>(payload.size());
        if (!visit(record, payload)) return true;
    }
}

std::string TraceReader::lastError() const { return m_database->lastError(); }

}  // namespace tracestorage
