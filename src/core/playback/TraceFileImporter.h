#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/playback/importer/BatchRing.h"
#include "core/playback/importer/StandardFrameParser.h"
#include "core/playback/importer/TraceFileParser.h"
#include "core/tracestorage/ImportStorage.h"

namespace playback {

// Kind of a trace file by its extension. 3 is reserved: no extension yields it.
enum class TraceFileType : uint8_t {
    Asc = 0,
    Blf = 1,
    Pcap = 2,
    Reserved = 3,
    Pcapng = 4,
    None = 255
};

// Codes of a failed import.
enum class ImportFailure : uint32_t {
    Unreadable = 0,  // header could not be read: file missing, occupied or not of the format
    NoParser = 2,    // no parser for the file's type
    Refused = 4,     // an import is under way already, or the storage refused
    NoFrames = 6     // the file holds a header but no frame
};

// What the completion callback is told. A cancelled import is no success and has no failure code.
struct ImportResult {
    bool success = false;
    bool cancelled = false;
    uint32_t code = 0;    // ImportFailure when neither success nor cancelled
    uint64_t stored = 0;  // frames in the storage; 0 unless success
};

struct ImportProgress {
    uint64_t bytesRead = 0;
    uint64_t units = 0;
    uint64_t frames = 0;
    uint64_t stored = 0;
};

struct ImportOptions {
    // Null opens the storage in the user's data folder.
    std::shared_ptr<tracestorage::ImportStorage> storage;
    // Units per batch, 0 for the default.
    uint32_t ascOption = 0;
    uint32_t blfOption = 0;
    uint32_t pcapOption = 0;
};

// Loads a trace file into the trace storage: one thread reads units, one turns them into frames,
// one stores them. All operations but the callback run on the owner's thread; the callback comes
// from a stage thread (or from beginAsyncImport itself), exactly once per import, and must not
// destroy the importer.
class TraceFileImporter {
public:
    using Callback = std::function<void(const ImportResult&)>;

    TraceFileImporter(std::wstring path, Callback callback, ImportOptions options = {});
    // Cancels what still runs and waits for its threads.
    virtual ~TraceFileImporter();
    TraceFileImporter(const TraceFileImporter&) = delete;
    TraceFileImporter& operator=(const TraceFileImporter&) = delete;

    void beginAsyncImport();
    // Returns when the stages have ended; nothing of the import is left unless it was done before.
    void cancelImport();
    void importFail(uint32_t code);
    void importSuccess();
    // Returns when the stages of a running import have ended.
    void wait();

    [[nodiscard]] static TraceFileType classify(const std::wstring& path);
    [[nodiscard]] std::shared_ptr<TraceFileParser> createTraceFileParser(TraceFileType type) const;
    [[nodiscard]] static std::shared_ptr<StandardFrameParser> createStandardFrameParser(
        TraceFileType type);

    [[nodiscard]] TraceFileType fileType() const { return m_type; }
    [[nodiscard]] uint32_t importState() const { return m_state; }
    [[nodiscard]] ImportProgress progress() const;
    // What was kept, skipped and lost; complete when the callback has come.
    [[nodiscard]] const tracestorage::ImportSummary& summary() const { return m_summary; }

private:
    void prepare();
    void startStages();
    void stopStages();
    void parseFile();
    void parseFrame();
    void storeFrame();
    [[nodiscard]] bool storeBatches();
    [[nodiscard]] bool waitForFrames();
    void collectSummary();
    void giveUpStoring();
    void report(const ImportResult& result);
    [[nodiscard]] bool stopped() const { return m_cancelled || m_finished; }
    [[nodiscard]] bool onStageThread() const;

    std::wstring m_path;
    TraceFileType m_type;
    Callback m_callback;
    ImportOptions m_options;
    std::optional<tracestorage::FileIdentity> m_identity;
    std::shared_ptr<TraceFileParser> m_fileParser;
    std::shared_ptr<StandardFrameParser> m_frameParser;
    bool m_readable = false;  // the header was read
    bool m_used = false;      // the parsers were run and must be made anew for another import
    int64_t m_startNs = 0;
    BatchRing<quill::traceformats::UnitBatch> m_units;
    BatchRing<tracestorage::FrameBatch> m_frames;
    std::atomic<uint64_t> m_unitCount{0};
    std::atomic<uint64_t> m_frameCount{0};
    std::atomic<uint64_t> m_storedCount{0};
    std::atomic<uint32_t> m_state{0};
    std::atomic<bool> m_finished{false};
    std::atomic<bool> m_cancelled{false};
    std::atomic<bool> m_reported{false};
    std::atomic<bool> m_storing{false};       // a transaction of this import is open
    std::atomic<bool> m_fileParsed{false};    // stage 1 has ended
    std::atomic<bool> m_framesParsed{false};  // stage 2 has ended
    tracestorage::ImportSummary m_summary;
    std::vector<std::future<void>> m_stages;
};

}  // namespace playback
