#include <algorithm>

#include "quill_traceformats/blf_objects.h"
#include "quill_traceformats/bytes.h"

namespace quill::traceformats {

namespace {

using Bytes = std::span<const uint8_t>;

FrameDirection directionOf(unsigned value) {
    return value <= 2 ? static_cast<FrameDirection>(value) : FrameDirection::Rx;
}

// Up to `count` bytes at `offset`; fewer when the body ends before.
Bytes cut(Bytes body, size_t offset, size_t count) {
    if (offset >= body.size()) return {};
    return body.subspan(offset, std::min(count, body.size() - offset));
}

void setCanId(TraceFrame& frame, uint32_t fileId) {
    frame.id = fileId & kBlfIdMask;
    if ((fileId & kBlfExtendedId) != 0) frame.flags |= kCanExtended;
}

bool decodeCan(Bytes body, TraceFrame& frame) {
    using Layout = BlfCanMessage2;
    if (body.size() < Layout::kOldSize) return false;
    const uint8_t flags = body[Layout::kFlags];
    frame.kind = FrameKind::Can;
    frame.channel = loadU16(&body[Layout::kChannel]);
    setCanId(frame, loadU32(&body[Layout::kId]));
    if ((flags & Layout::kTx) != 0) frame.direction = FrameDirection::Tx;
    if ((flags & Layout::kRemote) != 0) frame.flags |= kCanRemote;
    frame.dlc = body[Layout::kDlc];
    if ((flags & Layout::kRemote) == 0) {
        frame.data = cut(body, Layout::kData, lengthFromDlc(frame.dlc, false));
    }
    return true;
}

bool decodeFd(Bytes body, TraceFrame& frame) {
    using Layout = BlfCanFdMessage;
    if (body.size() < Layout::kMinimum) return false;
    const uint8_t flags = body[Layout::kFlags];
    const uint8_t fdFlags = body[Layout::kFdFlags];
    frame.kind = FrameKind::Can;
    frame.channel = loadU16(&body[Layout::kChannel]);
    setCanId(frame, loadU32(&body[Layout::kId]));
    if ((flags & BlfCanMessage2::kTx) != 0) frame.direction = FrameDirection::Tx;
    if ((flags & BlfCanMessage2::kRemote) != 0) frame.flags |= kCanRemote;
    if ((fdFlags & Layout::kEdl) != 0) frame.flags |= kCanFd;
    if ((fdFlags & Layout::kBrs) != 0) frame.flags |= kCanBitRateSwitch;
    if ((fdFlags & Layout::kEsi) != 0) frame.flags |= kCanErrorState;
    frame.dlc = body[Layout::kDlc];
    frame.data = cut(body, Layout::kData, std::min<size_t>(body[Layout::kValidBytes], 64));
    return true;
}

bool decodeFd64(const BlfObjectHeader& header, Bytes body, TraceFrame& frame) {
    using Layout = BlfCanFdMessage64;
    if (body.size() < Layout::kData) return false;
    const uint32_t flags = loadU32(&body[Layout::kFlags]);
    frame.kind = FrameKind::Can;
    frame.channel = body[Layout::kChannel];
    setCanId(frame, loadU32(&body[Layout::kId]));
    if ((flags & Layout::kRemote) != 0) frame.flags |= kCanRemote;
    if ((flags & Layout::kEdl) != 0) frame.flags |= kCanFd;
    if ((flags & Layout::kBrs) != 0) frame.flags |= kCanBitRateSwitch;
    if ((flags & Layout::kEsi) != 0) frame.flags |= kCanErrorState;
    frame.dlc = body[Layout::kDlc];
    frame.direction = directionOf(body[Layout::kDirection]);
    // The extension block, if there is one, ends the data; its offset counts from the object.
    const size_t extension = body[Layout::kExtOffset];
    Bytes whole = body;
    if (extension >= header.headerSize + Layout::kData) {
        whole = body.first(std::min(body.size(), extension - header.headerSize));
    }
    frame.data = cut(whole, Layout::kData, std::min<size_t>(body[Layout::kValidBytes], 64));
    return true;
}

bool decodeCanError(Bytes body, TraceFrame& frame) {
    using Layout = BlfCanErrorExt;
    if (body.size() < Layout::kData) return false;
    frame.kind = FrameKind::CanError;
    frame.channel = loadU16(&body[Layout::kChannel]);
    setCanId(frame, loadU32(&body[Layout::kId]));
    frame.dlc = body[Layout::kDlc] & 0x0FU;
    frame.errorCode = body[Layout::kCode];
    frame.errorPosition = body[Layout::kPosition];
    frame.errorFlags = loadU16(&body[Layout::kFlagsExt]);
    frame.data = cut(body, Layout::kData, lengthFromDlc(frame.dlc, false));
    return true;
}

bool decodeLin(const BlfObjectHeader& header, Bytes body, TraceFrame& frame) {
    using Layout = BlfLinMessage2;
    if (body.size() < Layout::kMinimum) return false;
    frame.kind = FrameKind::Lin;
    frame.channel = loadU16(&body[Layout::kChannel]);
    frame.id = body[Layout::kId] & 0x3FU;
    frame.data = cut(body, Layout::kData, std::min<size_t>(body[Layout::kLength], 8));
    frame.dlc = static_cast<uint8_t>(frame.data.size());
    if (header.objectVersion >= 1 && body[Layout::kChecksumModel] == 1) {
        frame.flags |= kLinEnhancedChecksum;
    }
    frame.checksum = loadU16(&body[Layout::kChecksum]);
    frame.direction = directionOf(body[Layout::kDirection]);
    return true;
}

bool decodeEthernet(Bytes body, TraceFrame& frame) {
    using Layout = BlfEthernetFrameEx;
    if (body.size() < Layout::kData) return false;
    frame.kind = FrameKind::Ethernet;
    frame.channel = loadU16(&body[Layout::kChannel]);
    frame.direction = directionOf(loadU16(&body[Layout::kDirection]));
    frame.data = cut(body, Layout::kData, loadU16(&body[Layout::kFrameLength]));
    return true;
}

bool decodeFlexRay(Bytes body, TraceFrame& frame) {
    using Layout = BlfFlexRayReceiveEx;
    if (body.size() < Layout::kData) return false;
    frame.kind = FrameKind::FlexRay;
    frame.channel = loadU16(&body[Layout::kChannel]);
    frame.channelMask = static_cast<uint8_t>(loadU16(&body[Layout::kChannelMask]));
    frame.direction = directionOf(loadU16(&body[Layout::kDirection]));
    frame.id = loadU16(&body[Layout::kFrameId]);
    const bool onlyB = (frame.channelMask & 1U) == 0;
    frame.headerCrc = loadU16(&body[onlyB ? Layout::kHeaderCrcB : Layout::kHeaderCrcA]);
    frame.cycle = static_cast<uint8_t>(loadU16(&body[Layout::kCycle]));
    frame.flags = loadU32(&body[Layout::kFrameFlags]);
    frame.data = cut(body, Layout::kData, loadU16(&body[Layout::kDataCount]));
    return true;
}

bool decodeLoss(BlfType type, Bytes body, TraceFrame& frame) {
    using Layout = BlfDataLost;
    frame.kind = FrameKind::LossMarker;
    frame.firstLostNs = frame.timeNs;
    if (type == BlfType::DataLostBegin) return body.size() >= Layout::kBeginSize;
    if (body.size() < Layout::kEndSize) return false;
    frame.firstLostNs = loadU64(&body[Layout::kFirstTime]);
    frame.lostFrames = loadU32(&body[Layout::kCount]);
    return true;
}

bool decodeBody(const BlfObjectHeader& header, Bytes body, TraceFrame& frame) {
    const auto type = static_cast<BlfType>(header.type);
    switch (type) {
        case BlfType::CanMessage:
        case BlfType::CanMessage2:
            return decodeCan(body, frame);
        case BlfType::CanFdMessage:
            return decodeFd(body, frame);
        case BlfType::CanFdMessage64:
            return decodeFd64(header, body, frame);
        case BlfType::CanErrorExt:
            return decodeCanError(body, frame);
        case BlfType::LinMessage2:
            return decodeLin(header, body, frame);
        case BlfType::EthernetFrameEx:
        case BlfType::EthernetFrameForwarded:
            return decodeEthernet(body, frame);
        case BlfType::FlexRayReceiveEx:
            return decodeFlexRay(body, frame);
        case BlfType::DataLostBegin:
        case BlfType::DataLostEnd:
            return decodeLoss(type, body, frame);
        default:
            return false;
    }
}

}  // namespace

bool decodeBlfFrame(const BlfObjectHeader& header, std::span<const uint8_t> object,
                    TraceFrame& frame) {
    if (header.headerSize < kBlfObjectHeaderSize || object.size() < header.headerSize) return false;
    frame = TraceFrame{};
    frame.timeNs = header.timeNs();
    return decodeBody(header, object.subspan(header.headerSize), frame);
}

std::optional<TraceFrame> decodeBlfFrame(const BlfObjectHeader& header,
                                         std::span<const uint8_t> object) {
    std::optional<TraceFrame> frame(std::in_place);
    if (!decodeBlfFrame(header, object, *frame)) frame.reset();
    return frame;
}

}  // namespace quill::traceformats
