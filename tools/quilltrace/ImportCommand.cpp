#include <fmt/format.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>

#include "Commands.h"
#include "Interrupt.h"
#include "ProgressLine.h"
#include "core/playback/TraceFileImporter.h"
#include "core/tracestorage/TraceStorage.h"
#include "quill_os/paths.h"

namespace quilltrace {
namespace {
using playback::ImportResult;
using playback::TraceFileImporter;

constexpr size_t kNotesShown = 20;

// Where the callback leaves its result for the main thread, which shows progress meanwhile.
class ResultBox {
public:
    void put(const ImportResult& result) {
        {
            const std::lock_guard lock(m_mutex);
            m_result = result;
        }
        m_ready.notify_all();
    }
    [[nodiscard]] std::optional<ImportResult> waitFor(std::chrono::milliseconds time) {
        std::unique_lock lock(m_mutex);
        m_ready.wait_for(lock, time, [this] { return m_result.has_value(); });
        return m_result;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ready;
    std::optional<ImportResult> m_result;
};

ExitStatus statusOf(const ImportResult& result) {
    if (result.cancelled) return ExitStatus::Cancelled;
    if (result.success) return ExitStatus::Done;
    switch (result.code) {
        case 0:
            return ExitStatus::Unreadable;
        case 2:
            return ExitStatus::NoParser;
        case 6:
            return ExitStatus::NoFrames;
        default:
            return ExitStatus::Refused;
    }
}

const char* reasonOf(const ImportResult& result) {
    switch (statusOf(result)) {
        case ExitStatus::Done:
            return "imported";
        case ExitStatus::Cancelled:
            return "cancelled, nothing of it is kept";
        case ExitStatus::Unreadable:
            return "cannot be read: missing, occupied or not of its format";
        case ExitStatus::NoParser:
            return "no reader for this extension (.blf .asc .pcap .pcapng)";
        case ExitStatus::NoFrames:
            return "holds a header but no frame";
        default:
            return "the database refuses the import";
    }
}

struct FileReport {
    std::string path;
    ImportResult result;
    bool known = false;  // was imported before
    double seconds = 0;
    tracestorage::ImportSummary summary;
    std::string storageError;
};

std::string defaultDatabase(const std::string& file) {
    auto path = quill::os::pathFromUtf8(file);
    return quill::os::pathToUtf8(path.replace_extension(".qtrace"));
}

FileReport importFile(const std::string& path,
                      const std::shared_ptr<tracestorage::TraceStorage>& storage, bool quiet) {
    std::error_code error;
    const auto size = std::filesystem::file_size(quill::os::pathFromUtf8(path), error);
    FileReport report{.path = path, .result = {}, .summary = {}, .storageError = {}};
    ResultBox box;
    playback::ImportOptions options;
    options.storage = storage;
    TraceFileImporter importer(
        quill::os::wideFromUtf8(path), [&box](const ImportResult& r) { box.put(r); }, options);
    report.known = importer.importState() == 4;
    const auto name = quill::os::pathToUtf8(quill::os::pathFromUtf8(path).filename());
    ProgressLine progress(name, error ? 0 : size, quiet);
    const auto start = std::chrono::steady_clock::now();
    importer.beginAsyncImport();
    std::optional<ImportResult> result;
    while (!(result = box.waitFor(std::chrono::milliseconds(50)))) {
        if (interrupted()) importer.cancelImport();
        const auto now = importer.progress();
        progress.show(now.bytesRead, now.stored);
    }
    importer.wait();
    progress.finish();
    report.result = *result;
    report.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report.summary = importer.summary();
    report.storageError = storage->lastError();
    return report;
}

nlohmann::json toJson(const FileReport& report) {
    nlohmann::json json = {{"file", report.path},
                           {"success", report.result.success},
                           {"status", static_cast<int>(statusOf(report.result))},
                           {"reason", reasonOf(report.result)},
                           {"alreadyImported", report.known},
                           {"frames", report.result.stored},
                           {"seconds", report.seconds},
                           {"format", report.summary.format},
                           {"units", report.summary.units},
                           {"dropped", report.summary.dropped},
                           {"skipped", nlohmann::json::object()},
                           {"losses", nlohmann::json::array()}};
    if (!report.result.success && !report.result.cancelled) json["code"] = report.result.code;
    for (const auto& kind : report.summary.skipped) json["skipped"][kind.kind] = kind.count;
    for (const auto& note : report.summary.notes) {
        json["losses"].push_back({{"position", note.position}, {"text", note.text}});
    }
    return json;
}

void printText(const FileReport& report) {
    if (!report.result.success) {
        fmt::print(stderr, "quilltrace: {}: {}\n", report.path, reasonOf(report.result));
        if (!report.storageError.empty() && report.result.code == 4) {
            fmt::print(stderr, "quilltrace: {}\n", report.storageError);
        }
    } else if (report.known) {
        fmt::print("{}: imported before, nothing to do\n", report.path);
    } else {
        fmt::print("{}: {} frames in {:.2f} s\n", report.path, report.result.stored,
                   report.seconds);
    }
    for (const auto& kind : report.summary.skipped) {
        fmt::print("  skipped {} x {}\n", kind.count, kind.kind);
    }
    if (report.summary.dropped > 0) {
        fmt::print("  dropped {} units that could not be read\n", report.summary.dropped);
    }
    const char* place = report.summary.format == "ASC" ? "line" : "byte";
    size_t shown = 0;
    for (const auto& note : report.summary.notes) {
        if (++shown > kNotesShown) {
            fmt::print("  ... {} more, see the table \"note\"\n",
                       report.summary.notes.size() - kNotesShown);
            break;
        }
        fmt::print("  at {} {}: {}\n", place, note.position, note.text);
    }
}
}  // namespace

ExitStatus runImport(const CommandLine& line) {
    if (line.operands.empty()) {
        fmt::print(stderr,
                   "quilltrace: import needs a trace file (see quilltrace import --help)\n");
        return ExitStatus::Usage;
    }
    const std::string database = line.value("output").value_or(defaultDatabase(line.operands[0]));
    std::string reason;
    std::shared_ptr<tracestorage::TraceStorage> storage =
        tracestorage::TraceStorage::open(database, reason);
    if (!storage) {
        fmt::print(stderr, "quilltrace: {}\n", reason);
        return ExitStatus::Refused;
    }
    catchInterrupt();
    ExitStatus worst = ExitStatus::Done;
    for (const std::string& path : line.operands) {
        const FileReport report = importFile(path, storage, line.has("quiet") || line.has("json"));
        if (line.has("json")) {
            constexpr auto kReplace = nlohmann::json::error_handler_t::replace;
            fmt::print("{}\n", toJson(report).dump(-1, ' ', false, kReplace));
        } else {
            printText(report);
        }
        const bool damaged = !report.summary.notes.empty() && line.has("strict");
        ExitStatus status = statusOf(report.result);
        if (status == ExitStatus::Done && damaged) status = ExitStatus::Damaged;
        if (status != ExitStatus::Done && worst == ExitStatus::Done) worst = status;
        if (status == ExitStatus::Cancelled) return status;
    }
    return worst;
}

}  // namespace quilltrace
