#include "core/hardware/boxdev/FrameConversion.h"

#include <algorithm>
#include <cstring>

namespace RV::BoxDev {
namespace {

template <class Record>
rv::FrameHolder makeFrom(const Record& record, rv::FrameType type) {
    const auto length = static_cast<uint32_t>(std::min<size_t>(record.length, sizeof record.data));
    rv::FrameHolder frame = rv::makeFrame(length);
    frame->seconds = record.seconds;
    frame->nanoseconds = record.nanoseconds;
    frame->type = type;
    frame->channel = record.channel;
    frame->direction = record.direction == kRvDirTransmitted ? rv::Direction::Transmitted
                                                             : rv::Direction::Received;
    std::memcpy(frame->payload().data(), record.data, length);
    return frame;
}

}  // namespace

rv::FrameHolder fromLibrary(const RvCanFrame& record) {
    rv::FrameHolder frame = makeFrom(record, rv::FrameType::Can);
    frame->id = record.id;
    std::memcpy(&frame->can.extend, record.extend, sizeof record.extend);
    return frame;
}

rv::FrameHolder fromLibrary(const RvLinFrame& record) {
    rv::FrameHolder frame = makeFrom(record, rv::FrameType::Lin);
    frame->id = record.id;
    frame->lin = {record.checkMode, record.checksum};
    return frame;
}

rv::FrameHolder fromLibrary(const RvEthFrame& record) {
    return makeFrom(record, rv::FrameType::Ethernet);
}

rv::FrameHolder fromLibrary(const RvFlexRayFrame& record) {
    rv::FrameHolder frame = makeFrom(record, rv::FrameType::FlexRay);
    frame->id = record.slot;
    frame->flexray = {record.channelMask, record.cycle, record.headerCrc, record.flags};
    return frame;
}

RvCanFrame toLibrary(const rv::CanSendFrame& frame) {
    RvCanFrame record;
    record.id = frame.id;
    record.channel = frame.channel;
    std::memcpy(record.extend, &frame.extend, sizeof record.extend);
    record.length = static_cast<uint8_t>(std::min(frame.data.size(), sizeof record.data));
    std::copy_n(frame.data.begin(), record.length, record.data);
    return record;
}

}  // namespace RV::BoxDev
