#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "core/tracestorage/TraceReader.h"
#include "quill_traceformats/calendar_time.h"

namespace quilltrace {
namespace {
std::string startText(int64_t startNs) {
    if (startNs <= 0) return "unknown";
    const auto epoch = static_cast<uint64_t>(startNs);
    namespace tf = quill::traceformats;
    const tf::CalendarTime time = tf::calendarFromEpoch(epoch, tf::localOffsetSeconds(epoch));
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:03}", time.year, time.month, time.day,
                       time.hour, time.minute, time.second, time.millisecond);
}

double lengthOf(const tracestorage::StoredFile& file) {
    return (static_cast<double>(file.lastNs) - static_cast<double>(file.firstNs)) / 1e9;
}

nlohmann::json toJson(tracestorage::TraceReader& reader, const tracestorage::StoredFile& file) {
    nlohmann::json json = {{"id", file.id},
                           {"path", file.path},
                           {"size", file.size},
                           {"format", file.format},
                           {"start", startText(file.startNs)},
                           {"startNs", file.startNs},
                           {"seconds", lengthOf(file)},
                           {"importedAt", file.importedAt},
                           {"units", file.units},
                           {"frames", file.frames},
                           {"dropped", file.dropped},
                           {"skipped", nlohmann::json::object()},
                           {"losses", nlohmann::json::array()}};
    for (const auto& kind : reader.skipped(file.id)) json["skipped"][kind.kind] = kind.count;
    for (const auto& note : reader.notes(file.id)) {
        json["losses"].push_back({{"position", note.position}, {"text", note.text}});
    }
    return json;
}

void printText(tracestorage::TraceReader& reader, const tracestorage::StoredFile& file) {
    fmt::print("{}  {}\n", file.id, file.path);
    fmt::print("   {} of {} bytes, started {}, {:.3f} s\n", file.format, file.size,
               startText(file.startNs), lengthOf(file));
    fmt::print("   {} frames of {} units, imported {}\n", file.frames, file.units, file.importedAt);
    for (const auto& kind : reader.skipped(file.id)) {
        fmt::print("   skipped {} x {}\n", kind.count, kind.kind);
    }
    if (file.dropped > 0) fmt::print("   dropped {}\n", file.dropped);
    const char* place = file.format == "ASC" ? "line" : "byte";
    for (const auto& note : reader.notes(file.id)) {
        fmt::print("   at {} {}: {}\n", place, note.position, note.text);
    }
}
}  // namespace

ExitStatus runInfo(const CommandLine& line) {
    if (line.operands.size() != 1) {
        fmt::print(stderr, "quilltrace: info needs one database\n");
        return ExitStatus::Usage;
    }
    std::string reason;
    const auto reader = tracestorage::TraceReader::open(line.operands[0], reason);
    if (!reader) {
        fmt::print(stderr, "quilltrace: {}\n", reason);
        return ExitStatus::Refused;
    }
    nlohmann::json list = nlohmann::json::array();
    for (const auto& file : reader->files()) {
        if (line.has("json")) {
            list.push_back(toJson(*reader, file));
        } else {
            printText(*reader, file);
        }
    }
    if (line.has("json")) {
        constexpr auto kReplace = nlohmann::json::error_handler_t::replace;
        fmt::print("{}\n", list.dump(2, ' ', false, kReplace));
    }
    return ExitStatus::Done;
}

}  // namespace quilltrace
