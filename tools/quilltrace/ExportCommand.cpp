#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Interrupt.h"
#include "TraceExport.h"
#include "core/tracestorage/TraceReader.h"
#include "quill_os/paths.h"

namespace quilltrace {
namespace {
namespace tf = quill::traceformats;
namespace flag = tracestorage::flag;
using tracestorage::FrameRecord;

uint32_t canFlags(uint32_t flags) {
    return ((flags & flag::kExtended) != 0 ? tf::kCanExtended : 0U) |
           ((flags & flag::kRemote) != 0 ? tf::kCanRemote : 0U) |
           ((flags & flag::kFd) != 0 ? tf::kCanFd : 0U) |
           ((flags & flag::kBitRateSwitch) != 0 ? tf::kCanBitRateSwitch : 0U) |
           ((flags & flag::kErrorState) != 0 ? tf::kCanErrorState : 0U);
}

tf::TraceFrame frameOf(const FrameRecord& record, std::span<const uint8_t> payload,
                       int64_t startNs) {
    tf::TraceFrame frame;
    frame.timeNs = static_cast<uint64_t>(std::max<int64_t>(record.timeNs - startNs, 0));
    frame.kind = static_cast<tf::FrameKind>(record.bus);
    frame.direction =
        (record.flags & flag::kTransmitted) != 0 ? tf::FrameDirection::Tx : tf::FrameDirection::Rx;
    frame.channel = record.channel;
    frame.id = record.ident;
    frame.dlc = record.dlc;
    frame.data = payload;
    switch (record.bus) {
        case tracestorage::Bus::Can:
            frame.flags = canFlags(record.flags);
            if ((record.flags & flag::kError) != 0) {
                frame.kind = tf::FrameKind::CanError;
                frame.errorFlags = static_cast<uint16_t>(record.detail);
                frame.errorCode = static_cast<uint8_t>(record.detail >> 16U);
                frame.errorPosition = static_cast<uint8_t>(record.detail >> 24U);
            }
            break;
        case tracestorage::Bus::Lin:
            frame.checksum = static_cast<uint16_t>(record.detail);
            if ((record.flags & flag::kEnhancedChecksum) != 0) {
                frame.flags = tf::kLinEnhancedChecksum;
            }
            break;
        case tracestorage::Bus::FlexRay:
            frame.flags = record.flags >> flag::kFlexRayShift;
            frame.headerCrc = static_cast<uint16_t>(record.detail);
            frame.cycle = (record.detail >> 16U) & 0x3FU;
            frame.channelMask = (record.detail >> 24U) & 3U;
            break;
        default:
            break;
    }
    return frame;
}

std::string lowerExtension(const std::string& path) {
    std::string extension = quill::os::pathToUtf8(quill::os::pathFromUtf8(path).extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return extension;
}

std::unique_ptr<TraceExport> exportFor(const std::string& path) {
    const std::string extension = lowerExtension(path);
    if (extension == ".blf") return makeBlfExport();
    if (extension == ".asc") return makeAscExport();
    return nullptr;
}

// Start of measurement to write: whole milliseconds, as the formats' dates hold no more, and not
// behind the first frame, since times in a file count up from it.
int64_t startOf(const tracestorage::StoredFile& file) {
    constexpr int64_t kMillisecond = 1'000'000;
    const int64_t start = file.startNs == 0 ? file.firstNs : std::min(file.startNs, file.firstNs);
    return std::max<int64_t>(start, 0) / kMillisecond * kMillisecond;
}

const tracestorage::StoredFile* chosenFile(const std::vector<tracestorage::StoredFile>& files,
                                           const CommandLine& line) {
    if (!line.value("file")) return files.size() == 1 ? &files.front() : nullptr;
    const auto id = static_cast<int64_t>(line.number("file", 0).value_or(0));
    const auto found =
        std::find_if(files.begin(), files.end(), [id](const auto& file) { return file.id == id; });
    return found == files.end() ? nullptr : &*found;
}

struct ExportRun {
    uint64_t frames = 0;
    bool written = true;
    bool read = true;
};

ExportRun copyFrames(tracestorage::TraceReader& reader, const tracestorage::StoredFile& file,
                     TraceExport& target) {
    ExportRun run;
    const int64_t start = startOf(file);
    run.read = reader.forEachFrame(file.id, [&](const FrameRecord& record, auto payload) {
        run.written = target.write(frameOf(record, payload, start));
        ++run.frames;
        return run.written && !interrupted();
    });
    run.written = run.written && target.close();
    return run;
}

ExitStatus exportTo(const std::string& path, tracestorage::TraceReader& reader,
                    const tracestorage::StoredFile& file, const CommandLine& line) {
    const auto target = exportFor(path);
    catchInterrupt();
    if (!target->open(path, static_cast<uint64_t>(startOf(file)))) {
        fmt::print(stderr, "quilltrace: {}: {}\n", path, target->errorText());
        return ExitStatus::WriteFailed;
    }
    const ExportRun run = copyFrames(reader, file, *target);
    if (interrupted() || !run.read || !run.written) {
        std::error_code error;
        std::filesystem::remove(quill::os::pathFromUtf8(path), error);
        if (interrupted()) return ExitStatus::Cancelled;
        fmt::print(stderr, "quilltrace: {}: {}\n", path,
                   run.read ? target->errorText() : reader.lastError());
        return run.read ? ExitStatus::WriteFailed : ExitStatus::Refused;
    }
    const uint64_t written = run.frames - target->leftOut();
    if (line.has("json")) {
        const nlohmann::json json = {
            {"file", path}, {"frames", written}, {"leftOut", target->leftOut()}};
        fmt::print("{}\n", json.dump());
    } else {
        fmt::print("{}: {} frames\n", path, written);
        if (target->leftOut() > 0) {
            fmt::print("  {} frames have no form in this format\n", target->leftOut());
        }
    }
    return ExitStatus::Done;
}
}  // namespace

ExitStatus runExport(const CommandLine& line) {
    const auto path = line.value("output");
    if (line.operands.size() != 1 || !path || !exportFor(*path)) {
        fmt::print(stderr, "quilltrace: export needs one database and -o FILE.blf or FILE.asc\n");
        return ExitStatus::Usage;
    }
    std::error_code error;
    if (!line.has("force") && std::filesystem::exists(quill::os::pathFromUtf8(*path), error)) {
        fmt::print(stderr, "quilltrace: {} exists; --force writes over it\n", *path);
        return ExitStatus::WriteFailed;
    }
    std::string reason;
    const auto reader = tracestorage::TraceReader::open(line.operands[0], reason);
    if (!reader) {
        fmt::print(stderr, "quilltrace: {}\n", reason);
        return ExitStatus::Refused;
    }
    const auto files = reader->files();
    const auto* file = chosenFile(files, line);
    if (file == nullptr) {
        fmt::print(stderr, "quilltrace: the database holds {} files, choose one with --file ID\n",
                   files.size());
        return ExitStatus::Usage;
    }
    return exportTo(*path, *reader, *file, line);
}

}  // namespace quilltrace
