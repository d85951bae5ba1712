#include "core/playback/importer/StandardFrameParser.h"

#include <algorithm>
#include <array>

#include "core/log/Log.h"

namespace playback {
namespace tf = quill::traceformats;
namespace flag = tracestorage::flag;

namespace {
constexpr size_t kMostNotes = 1000;
constexpr size_t kMostKinds = 500;
constexpr const char* kLoss = "loss marker";

// Stored flags for every combination of the five CAN flags of a trace frame.
constexpr std::array<uint32_t, 32> makeCanFlags() {
    std::array<uint32_t, 32> table{};
    for (uint32_t flags = 0; flags < table.size(); ++flags) {
        table[flags] = ((flags & tf::kCanExtended) != 0 ? flag::kExtended : 0U) |
                       ((flags & tf::kCanRemote) != 0 ? flag::kRemote : 0U) |
                       ((flags & tf::kCanFd) != 0 ? flag::kFd : 0U) |
                       ((flags & tf::kCanBitRateSwitch) != 0 ? flag::kBitRateSwitch : 0U) |
                       ((flags & tf::kCanErrorState) != 0 ? flag::kErrorState : 0U);
    }
    return table;
}
constexpr std::array<uint32_t, 32> kStoredCanFlags = makeCanFlags();

uint32_t canFlags(uint32_t flags) { return kStoredCanFlags[flags % kStoredCanFlags.size()]; }

tracestorage::FrameRecord recordOf(const tf::TraceFrame& frame, int64_t startNs) {
    tracestorage::FrameRecord record;
    record.timeNs = startNs + static_cast<int64_t>(frame.timeNs);
    record.ident = frame.id;
    record.channel = frame.channel;
    record.dlc = frame.dlc;
    record.flags = frame.direction == tf::FrameDirection::Rx ? 0U : flag::kTransmitted;
    switch (frame.kind) {
        case tf::FrameKind::Can:
            record.bus = tracestorage::Bus::Can;
            record.flags |= canFlags(frame.flags);
            break;
        case tf::FrameKind::CanError:
            record.bus = tracestorage::Bus::Can;
            record.flags |= canFlags(frame.flags) | flag::kError;
            record.detail = frame.errorFlags | uint32_t{frame.errorCode} << 16U |
                            uint32_t{frame.errorPosition} << 24U;
            break;
        case tf::FrameKind::Lin:
            record.bus = tracestorage::Bus::Lin;
            if ((frame.flags & tf::kLinEnhancedChecksum) != 0) {
                record.flags |= flag::kEnhancedChecksum;
            }
            record.dlc = static_cast<uint8_t>(frame.data.size());
            record.detail = frame.checksum;
            break;
        case tf::FrameKind::Ethernet:
            record.bus = tracestorage::Bus::Ethernet;
            break;
        case tf::FrameKind::FlexRay:
            record.bus = tracestorage::Bus::FlexRay;
            record.flags |= (frame.flags & 0xFFFFU) << flag::kFlexRayShift;
            record.detail =
                frame.headerCrc | (frame.cycle & 0x3FU) << 16U | (frame.channelMask & 3U) << 24U;
            break;
        default:
            break;
    }
    return record;
}
}  // namespace

std::string StandardFrameParser::kindText(const char* text, uint32_t number) const {
    return number == 0 ? std::string(text) : std::string(text) + " " + std::to_string(number);
}

void StandardFrameParser::take(const tf::Decoded& decoded, const tf::TraceFrame& frame,
                               int64_t startNs, uint64_t position,
                               tracestorage::FrameBatch& frames) {
    if (decoded.result == tf::Decoded::Result::Frame) {
        if (frame.kind != tf::FrameKind::LossMarker) {
            frames.append(recordOf(frame, startNs), frame.data);
            return;
        }
        // The recorder says how much it lost only when it knows.
        if (frame.lostFrames > 0 && m_notes.size() < kMostNotes) {
            m_notes.push_back({position, "the recorder lost " + std::to_string(frame.lostFrames) +
                                             " frames here"});
        }
        ++m_skipped[{kLoss, 0}];
        return;
    }
    Kind kind{decoded.text, decoded.number};
    // Numbers come from the file: beyond a sane number of kinds they are lumped together.
    if (m_skipped.size() + m_reasons.size() > kMostKinds) kind.second = 0;
    if (decoded.result == tf::Decoded::Result::NoFrame) {
        if (*kind.first != '\0') ++m_skipped[kind];
    } else {
        drop(kind, position);
    }
}

void StandardFrameParser::drop(const Kind& reason, uint64_t position) {
    ++m_dropped;
    const std::string text = kindText(reason.first, reason.second);
    if (++m_reasons[reason] == 1) {
        QUILL_WARN(quill::log::kImporter, "unit at {} dropped: {}", position, text);
    }
    if (m_notes.size() < kMostNotes) m_notes.push_back({position, text});
}

std::vector<tracestorage::SkippedKind> StandardFrameParser::skipped() const {
    std::map<std::string, uint64_t> byText;
    for (const auto& [kind, count] : m_skipped) byText[kindText(kind.first, kind.second)] += count;
    std::vector<tracestorage::SkippedKind> result;
    result.reserve(byText.size());
    for (const auto& [text, count] : byText) result.push_back({text, count});
    std::stable_sort(result.begin(), result.end(),
                     [](const auto& a, const auto& b) { return a.count > b.count; });
    return result;
}

}  // namespace playback
