#include "record_frame.h"

#include "rvconverter/Records.h"

namespace rv {

namespace {

using quill::traceformats::FrameDirection;
using quill::traceformats::FrameKind;
using quill::traceformats::TraceFrame;

// The record behind a handle if it is whole, with its payload as the frame's data.
template <class Record>
const Record* wholeRecord(const RecordHandle& handle, TraceFrame& frame) {
    if (handle.size() < sizeof(Record)) return nullptr;
    const auto* record = static_cast<const Record*>(handle.record());
    if (handle.size() - sizeof(Record) < record->head.length) return nullptr;
    frame.data = {static_cast<const uint8_t*>(handle.record()) + sizeof(Record),
                  record->head.length};
    return record;
}

bool fillCan(const RecordHandle& handle, TraceFrame& frame) {
    namespace tf = quill::traceformats;
    const auto* record = wholeRecord<CanRecord>(handle, frame);
    if (record == nullptr) return false;
    frame.kind = record->errorFlags != 0 ? FrameKind::CanError : FrameKind::Can;
    frame.id = record->id;
    frame.dlc = record->dlc;
    frame.errorFlags = record->errorFlags;
    if ((record->flags & CanRecord::kFd) != 0) frame.flags |= tf::kCanFd;
    if ((record->flags & CanRecord::kBitRateSwitch) != 0) frame.flags |= tf::kCanBitRateSwitch;
    if ((record->flags & CanRecord::kErrorState) != 0) frame.flags |= tf::kCanErrorState;
    if ((record->flags & CanRecord::kExtended) != 0) frame.flags |= tf::kCanExtended;
    if ((record->flags & CanRecord::kRemote) != 0) frame.flags |= tf::kCanRemote;
    return true;
}

bool fillLin(const RecordHandle& handle, TraceFrame& frame) {
    const auto* record = wholeRecord<LinRecord>(handle, frame);
    if (record == nullptr) return false;
    frame.kind = FrameKind::Lin;
    frame.id = record->id;
    frame.checksum = record->checksum;
    if (record->checkMode == 1) frame.flags = quill::traceformats::kLinEnhancedChecksum;
    return true;
}

bool fillEthernet(const RecordHandle& handle, TraceFrame& frame) {
    if (wholeRecord<EthernetRecord>(handle, frame) == nullptr) return false;
    frame.kind = FrameKind::Ethernet;
    return true;
}

bool fillFlexRay(const RecordHandle& handle, TraceFrame& frame) {
    const auto* record = wholeRecord<FlexRayRecord>(handle, frame);
    if (record == nullptr) return false;
    frame.kind = FrameKind::FlexRay;
    frame.id = record->slot;
    frame.flags = record->flags;
    frame.headerCrc = record->headerCrc;
    frame.cycle = record->cycle;
    frame.channelMask = record->channelMask;
    return true;
}

uint64_t timeNs(const RecordHead& head) {
    return uint64_t{head.seconds} * 1'000'000'000U + head.nanoseconds;
}

}  // namespace

bool frameFromRecord(const RecordHandle& handle, TraceFrame& frame) {
    if (!handle || handle.size() < sizeof(RecordHead)) return false;
    const auto& head = *static_cast<const RecordHead*>(handle.record());
    frame = TraceFrame{};
    frame.timeNs = timeNs(head);
    frame.direction = head.transmitted != 0 ? FrameDirection::Tx : FrameDirection::Rx;
    frame.channel = static_cast<uint16_t>(head.channel + 1);
    switch (head.kind) {
        case RecordKind::Can:
            return fillCan(handle, frame);
        case RecordKind::Lin:
            return fillLin(handle, frame);
        case RecordKind::Ethernet:
            return fillEthernet(handle, frame);
        case RecordKind::FlexRay:
            return fillFlexRay(handle, frame);
    }
    return false;
}

uint64_t recordTimeNs(const RecordHandle& handle) {
    if (!handle || handle.size() < sizeof(RecordHead)) return 0;
    return timeNs(*static_cast<const RecordHead*>(handle.record()));
}

}  // namespace rv
