#include "core/playback/recorder/RecordBuilder.h"

#include <cstring>
#include <new>

#include "quill_traceformats/TraceFrame.h"
#include "rvconverter/Records.h"

namespace playback {

namespace {

constexpr uint32_t kLastStandardId = 0x7FF;

// A record with room for the frame's payload, its head and payload filled.
template <class Record>
Record* makeRecord(RecordArena& arena, const rv::Frame& frame, rv::RecordKind kind) {
    auto* record = ::new (arena.allocate(sizeof(Record) + frame.length)) Record;
    record->head.seconds = frame.seconds;
    record->head.nanoseconds = frame.nanoseconds;
    record->head.length = frame.length;
    record->head.kind = kind;
    record->head.transmitted = frame.direction == rv::Direction::Transmitted ? 1 : 0;
    record->head.channel = frame.channel;
    std::memcpy(record + 1, frame.payload().data(), frame.length);
    return record;
}

template <class Record>
rv::RecordHandle handleOf(Record* record) {
    return {&RecordArena::release, record, sizeof(Record) + record->head.length};
}

// The code on the bus. A sender that fills in data without a code gets the code of its length.
uint8_t dlcOf(const rv::Frame& frame) {
    const uint8_t dlc = frame.can.extend.DLC();
    const bool fd = frame.can.extend.EDL() != 0;
    if (quill::traceformats::lengthFromDlc(dlc, fd) >= frame.length) return dlc;
    return quill::traceformats::dlcFromLength(frame.length);
}

rv::RecordHandle buildCan(RecordArena& arena, const rv::Frame& frame) {
    auto* record = makeRecord<rv::CanRecord>(arena, frame, rv::RecordKind::Can);
    const scripts::CANFrameExtend& extend = frame.can.extend;
    unsigned flags = 0;
    if (extend.EDL() != 0) flags |= rv::CanRecord::kFd;
    if (extend.BRS() != 0) flags |= rv::CanRecord::kBitRateSwitch;
    if (extend.ESI() != 0) flags |= rv::CanRecord::kErrorState;
    if (extend.IDE() != 0 || frame.id > kLastStandardId) flags |= rv::CanRecord::kExtended;
    // CAN FD knows no remote frames.
    if (extend.RTR() != 0 && extend.EDL() == 0) flags |= rv::CanRecord::kRemote;
    record->id = frame.id;
    record->errorFlags = extend.errorFlag();
    record->flags = static_cast<uint8_t>(flags);
    record->dlc = dlcOf(frame);
    return handleOf(record);
}

rv::RecordHandle buildLin(RecordArena& arena, const rv::Frame& frame) {
    auto* record = makeRecord<rv::LinRecord>(arena, frame, rv::RecordKind::Lin);
    record->id = static_cast<uint8_t>(frame.id);
    record->checkMode = frame.lin.checkMode;
    record->checksum = frame.lin.checksum;
    return handleOf(record);
}

rv::RecordHandle buildEthernet(RecordArena& arena, const rv::Frame& frame) {
    return handleOf(makeRecord<rv::EthernetRecord>(arena, frame, rv::RecordKind::Ethernet));
}

rv::RecordHandle buildFlexRay(RecordArena& arena, const rv::Frame& frame) {
    auto* record = makeRecord<rv::FlexRayRecord>(arena, frame, rv::RecordKind::FlexRay);
    record->slot = static_cast<uint16_t>(frame.id);
    record->headerCrc = frame.flexray.headerCrc;
    record->flags = frame.flexray.flags;
    record->cycle = frame.flexray.cycle;
    record->channelMask = frame.flexray.channelMask;
    return handleOf(record);
}

}  // namespace

rv::RecordHandle RecordBuilder::build(const rv::Frame& frame) {
    switch (frame.type) {
        case rv::FrameType::Can:
            return buildCan(m_arena, frame);
        case rv::FrameType::Lin:
            return buildLin(m_arena, frame);
        case rv::FrameType::Ethernet:
            return buildEthernet(m_arena, frame);
        case rv::FrameType::FlexRay:
            return buildFlexRay(m_arena, frame);
        default:
            return {};
    }
}

}  // namespace playback
