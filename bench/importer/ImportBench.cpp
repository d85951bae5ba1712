#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <span>
#include <string>

#include "Benches.h"
#include "InsertFloor.h"
#include "Rounds.h"
#include "TableRow.h"
#include "core/playback/TraceFileImporter.h"
#include "core/tracestorage/TraceReader.h"
#include "core/tracestorage/TraceStorage.h"
#include "quill_os/paths.h"

namespace quill::bench {
namespace {

double importFile(const std::string& path, const std::string& database) {
    std::filesystem::remove(database);
    std::string reason;
    playback::ImportOptions options;
    options.storage = tracestorage::TraceStorage::open(database, reason);
    uint64_t stored = 0;
    playback::TraceFileImporter importer(
        os::wideFromUtf8(path), [&](const playback::ImportResult& r) { stored = r.stored; },
        options);
    importer.beginAsyncImport();
    importer.wait();
    return static_cast<double>(stored);
}

// The rows that the file's import stored, for the floor to store again.
tracestorage::FrameBatch rowsOf(const std::string& path, const std::string& database) {
    (void)importFile(path, database);
    tracestorage::FrameBatch rows;
    std::string reason;
    const auto reader = tracestorage::TraceReader::open(database, reason);
    (void)reader->forEachFrame(reader->files().at(0).id, [&](const auto& record, auto payload) {
        rows.append(record, payload);
        return true;
    });
    return rows;
}

// Largest resident memory of the process so far in MiB; 0 where the system does not tell.
double peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kibibytes = 0;
        if (word == "VmHWM:" && status >> kibibytes) return kibibytes / 1024;
    }
    return 0;
}
}  // namespace

void runImportBenches(const TraceFiles& files, int rounds) {
    const std::string database = files.path("import.qtrace");
    const std::string floor = files.path("floor.sqlite");
    for (const char* name : {"can.blf", "fd.blf", "can.asc", "fd.asc", "can.pcap", "can.pcapng"}) {
        const std::string path = files.path(name);
        const tracestorage::FrameBatch rows = rowsOf(path, database);
        const auto rates =
            compare(fmt::format("import of {} into SQLite", name),
                    {{"ours: file to database", [&] { return importFile(path, database); }},
                     {"floor: bare insert loop", [&] { return insertRows(floor, rows); }}},
                    rounds);
        printRatio("ours / floor", rates[0], rates[1], 0.75);
        ::bench::printRow({.what = fmt::format("import of {} into SQLite", name).c_str(),
                           .unit = "rows/s",
                           .ours = rates[0],
                           .floor = rates[1],
                           .wanted = "0.75 x floor"});
    }
}

void runMemoryBench(const TraceFiles& files, std::span<const uint64_t> frameCounts) {
    const std::string path = files.path("large.blf");
    const std::string database = files.path("large.qtrace");
    fmt::print("memory while importing\n");
    for (const uint64_t frames : frameCounts) {
        makeLargeBlf(path, frames);
        // What came before has raised the peak; the system resets it on request.
        std::ofstream("/proc/self/clear_refs") << "5";
        (void)importFile(path, database);
        fmt::print("  {:>8.0f} MB file: {:.0f} MiB\n",
                   static_cast<double>(std::filesystem::file_size(path)) / 1e6, peakMemory());
        std::filesystem::remove(path);
        std::filesystem::remove(database);
    }
}

}  // namespace quill::bench
