#include "core/tracestorage/TraceStorage.h"

#include <filesystem>

#include "core/tracestorage/Schema.h"
#include "quill_os/environment.h"
#include "quill_os/paths.h"

namespace tracestorage {
namespace {
// Up to here dropping and rebuilding the indices is cheaper than keeping them up row by row.
constexpr int64_t kRebuildLimit = 4'000'000;

std::filesystem::path userDataFolder() {
    if (const auto folder = quill::os::getEnvironment("LocalAPPDATA")) {
        return quill::os::pathFromUtf8(*folder) / "RV" / "Quill";
    }
    return std::filesystem::temp_directory_path() / "RV" / "Quill";
}
}  // namespace

TraceStorage::TraceStorage(std::unique_ptr<SqliteDatabase> database)
    : m_database(std::move(database)) {}

TraceStorage::~TraceStorage() { abandonImport(); }

std::unique_ptr<TraceStorage> TraceStorage::open(const std::string& utf8Path, std::string& reason) {
    auto database = SqliteDatabase::open(utf8Path, SqliteDatabase::Mode::ReadWrite, reason);
    if (!database) return nullptr;
    if (!database->execute(kImportSettings)) {
        reason = utf8Path + ": " + database->lastError();
        return nullptr;
    }
    if (!prepareSchema(*database, reason)) {
        reason = utf8Path + ": " + reason;
        return nullptr;
    }
    return std::unique_ptr<TraceStorage>(new TraceStorage(std::move(database)));
}

std::unique_ptr<TraceStorage> TraceStorage::openDefault(std::string& reason) {
    std::error_code error;
    const std::filesystem::path folder = userDataFolder();
    std::filesystem::create_directories(folder, error);
    if (error) {
        reason = quill::os::pathToUtf8(folder) + ": " + error.message();
        return nullptr;
    }
    return open(quill::os::pathToUtf8(folder / "imported.qtrace"), reason);
}

ImportState TraceStorage::lookUp(const FileIdentity& file) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_current && *m_current == file) return m_currentState;
    }
    const std::lock_guard access(m_access);
    Statement query = m_database->prepare(
        "SELECT state FROM file WHERE path=?1 AND size=?2 AND modified_ns=?3 AND hash=?4");
    query.bind(1, file.path).bind(2, static_cast<int64_t>(file.size));
    query.bind(3, file.modifiedNs).bind(4, file.hash);
    if (query.step() != Statement::Step::Row) return ImportState::NotImported;
    return query.integer(0) == static_cast<int64_t>(ImportState::Imported)
               ? ImportState::Imported
               : ImportState::NotImported;
}

bool TraceStorage::refuse(std::string reason) {
    const std::lock_guard lock(m_mutex);
    m_error = std::move(reason);
    return false;
}

bool TraceStorage::beginImport(const FileIdentity& file) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_current) {
            m_error = "an import is under way: " + m_current->path;
            return false;
        }
        m_current = file;
        m_currentState = ImportState::Importing;
    }
    const std::lock_guard access(m_access);
    // The write lock is taken at once, so two processes never import into one database together.
    bool ready = m_database->execute("BEGIN IMMEDIATE");
    const bool rebuild = m_database->queryInteger("SELECT max(id) FROM frame", 0) <= kRebuildLimit;
    ready = ready && removeOlder(file.path) && (!rebuild || m_database->execute(kDropIndices)) &&
            addFile(file);
    if (ready) {
        m_insert = m_database->prepare(kInsertFrame);
        ready = m_insert.valid();
    }
    if (!ready) {
        refuse(m_database->lastError());
        rollBack();
        return false;
    }
    m_stored = 0;
    return true;
}

bool TraceStorage::removeOlder(const std::string& path) {
    Statement query = m_database->prepare("SELECT id FROM file WHERE path=?1");
    query.bind(1, path);
    if (query.step() != Statement::Step::Row) return true;
    const int64_t id = query.integer(0);
    query.reset();
    for (const char* sql :
         {"DELETE FROM frame WHERE file_id=?1", "DELETE FROM note WHERE file_id=?1",
          "DELETE FROM skipped WHERE file_id=?1", "DELETE FROM file WHERE id=?1"}) {
        Statement statement = m_database->prepare(sql);
        if (!statement.bind(1, id).run()) return false;
    }
    return true;
}

bool TraceStorage::addFile(const FileIdentity& file) {
    Statement statement = m_database->prepare(
        "INSERT INTO file(path, size, modified_ns, hash, state, imported_at) "
        "VALUES(?1, ?2, ?3, ?4, ?5, strftime('%Y-%m-%dT%H:%M:%SZ','now'))");
    statement.bind(1, file.path).bind(2, static_cast<int64_t>(file.size));
    statement.bind(3, file.modifiedNs).bind(4, file.hash);
    statement.bind(5, static_cast<int64_t>(ImportState::Importing));
    if (!statement.run()) return false;
    m_fileId = m_database->lastRowId();
    return true;
}

bool TraceStorage::insertFrames(const FrameBatch& batch) {
    const std::lock_guard access(m_access);
    m_insert.bind(1, m_fileId);
    for (const FrameRecord& record : batch.frames()) {
        m_insert.bind(2, record.timeNs)
            .bind(3, static_cast<int64_t>(record.bus))
            .bind(4, int64_t{record.channel})
            .bind(5, int64_t{record.ident})
            .bind(6, int64_t{record.flags})
            .bind(7, int64_t{record.dlc})
            .bind(8, int64_t{record.detail})
            .bindBlob(9, batch.payload(record));
        if (!m_insert.run()) return refuse(m_database->lastError());
    }
    m_stored += batch.size();
    return true;
}

bool TraceStorage::writeSummary(const ImportSummary& summary) {
    Statement update = m_database->prepare(
        "UPDATE file SET state=?2, format=?3, start_ns=?4, units=?5, frames=?6, dropped=?7 "
        "WHERE id=?1");
    update.bind(1, m_fileId).bind(2, static_cast<int64_t>(ImportState::Imported));
    update.bind(3, summary.format).bind(4, summary.startNs);
    update.bind(5, static_cast<int64_t>(summary.units)).bind(6, static_cast<int64_t>(m_stored));
    update.bind(7, static_cast<int64_t>(summary.dropped));
    if (!update.run()) return false;
    Statement note = m_database->prepare("INSERT INTO note VALUES(?1, ?2, ?3)");
    for (const ImportNote& item : summary.notes) {
        note.bind(1, m_fileId).bind(2, static_cast<int64_t>(item.position)).bind(3, item.text);
        if (!note.run()) return false;
    }
    Statement skipped = m_database->prepare("INSERT INTO skipped VALUES(?1, ?2, ?3)");
    for (const SkippedKind& item : summary.skipped) {
        skipped.bind(1, m_fileId).bind(2, item.kind).bind(3, static_cast<int64_t>(item.count));
        if (!skipped.run()) return false;
    }
    return true;
}

bool TraceStorage::finishImport(const ImportSummary& summary) {
    {
        const std::lock_guard lock(m_mutex);
        m_currentState = ImportState::Ending;
    }
    const std::lock_guard access(m_access);
    if (!m_database->execute(kCreateIndices) || !writeSummary(summary) ||
        !m_database->execute("COMMIT")) {
        refuse(m_database->lastError());
        rollBack();
        return false;
    }
    m_insert = Statement();
    const std::lock_guard lock(m_mutex);
    m_current.reset();
    return true;
}

void TraceStorage::abandonImport() {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_current) return;
    }
    const std::lock_guard access(m_access);
    rollBack();
}

// Ends the import of the open transaction; the caller has the connection.
void TraceStorage::rollBack() {
    m_insert = Statement();
    if (m_database->inTransaction()) (void)m_database->execute("ROLLBACK");
    const std::lock_guard lock(m_mutex);
    m_current.reset();
}

void TraceStorage::interrupt() { m_database->interrupt(); }

std::string TraceStorage::lastError() const {
    const std::lock_guard lock(m_mutex);
    return m_error;
}

}  // namespace tracestorage
