#include "quill_traceformats/blf_objects.h"

#include <algorithm>
#include <cstring>

#include "quill_traceformats/bytes.h"

namespace quill::traceformats {

namespace {

constexpr size_t kLastChannelOfFd64 = 255;

bool usesFdMessage64(const TraceFrame& frame) { return frame.channel <= kLastChannelOfFd64; }

size_t alignedToFour(size_t size) { return (size + 3U) & ~size_t{3U}; }

// Header and a body of which the first `kCleared` bytes are zeroed; returns the body. That number
// is known when this is compiled, which saves a call for each of millions of objects.
template <size_t kCleared>
uint8_t* beginObject(const TraceFrame& frame, BlfType type, size_t bodySize, uint8_t* out) {
    BlfObjectHeader header;
    header.objectSize = static_cast<uint32_t>(kBlfObjectHeaderSize + bodySize);
    header.type = static_cast<uint32_t>(type);
    header.timestamp = frame.timeNs;
    encodeBlfObjectHeader(header, out);
    uint8_t* body = out + kBlfObjectHeaderSize;
    std::memset(body, 0, kCleared);
    return body;
}

template <size_t kBody>
uint8_t* beginObject(const TraceFrame& frame, BlfType type, uint8_t* out) {
    return beginObject<kBody>(frame, type, kBody, out);
}

void copyData(const TraceFrame& frame, uint8_t* to, size_t limit) {
    const size_t size = std::min(frame.data.size(), limit);
    if (size != 0) std::memcpy(to, frame.data.data(), size);
}

uint32_t fileId(const TraceFrame& frame) {
    return frame.id | ((frame.flags & kCanExtended) != 0 ? kBlfExtendedId : 0U);
}

uint8_t canFlags(const TraceFrame& frame) {
    using Layout = BlfCanMessage2;
    return static_cast<uint8_t>((frame.direction != FrameDirection::Rx ? Layout::kTx : 0U) |
                                ((frame.flags & kCanRemote) != 0 ? Layout::kRemote : 0U));
}

void encodeCan(const TraceFrame& frame, uint8_t* out) {
    using Layout = BlfCanMessage2;
    uint8_t* body = beginObject<Layout::kSize>(frame, BlfType::CanMessage2, out);
    storeU16(body + Layout::kChannel, frame.channel);
    body[Layout::kFlags] = canFlags(frame);
    body[Layout::kDlc] = frame.dlc;
    storeU32(body + Layout::kId, fileId(frame));
    copyData(frame, body + Layout::kData, 8);
}

void encodeFd64(const TraceFrame& frame, uint8_t* out) {
    using Layout = BlfCanFdMessage64;
    const size_t length = frame.data.size();
    const size_t size = Layout::kData + alignedToFour(length);
    uint8_t* body = beginObject<Layout::kData>(frame, BlfType::CanFdMessage64, size, out);
    for (size_t i = length; i < alignedToFour(length); ++i) body[Layout::kData + i] = 0;
    body[Layout::kChannel] = static_cast<uint8_t>(frame.channel);
    body[Layout::kDlc] = frame.dlc;
    body[Layout::kValidBytes] = static_cast<uint8_t>(frame.data.size());
    storeU32(body + Layout::kId, fileId(frame));
    uint32_t flags = Layout::kEdl;
    if ((frame.flags & kCanRemote) != 0) flags |= Layout::kRemote;
    if ((frame.flags & kCanBitRateSwitch) != 0) flags |= Layout::kBrs;
    if ((frame.flags & kCanErrorState) != 0) flags |= Layout::kEsi;
    if (frame.direction == FrameDirection::TxRequest) flags |= Layout::kTxRequest;
    storeU32(body + Layout::kFlags, flags);
    body[Layout::kDirection] = static_cast<uint8_t>(frame.direction);
    copyData(frame, body + Layout::kData, 64);
}

void encodeFd(const TraceFrame& frame, uint8_t* out) {
    using Layout = BlfCanFdMessage;
    uint8_t* body = beginObject<Layout::kSize>(frame, BlfType::CanFdMessage, out);
    storeU16(body + Layout::kChannel, frame.channel);
    body[Layout::kFlags] = canFlags(frame);
    body[Layout::kDlc] = frame.dlc;
    storeU32(body + Layout::kId, fileId(frame));
    unsigned flags = Layout::kEdl;
    if ((frame.flags & kCanBitRateSwitch) != 0) flags |= Layout::kBrs;
    if ((frame.flags & kCanErrorState) != 0) flags |= Layout::kEsi;
    body[Layout::kFdFlags] = static_cast<uint8_t>(flags);
    body[Layout::kValidBytes] = static_cast<uint8_t>(frame.data.size());
    copyData(frame, body + Layout::kData, 64);
}

void encodeCanError(const TraceFrame& frame, uint8_t* out) {
    using Layout = BlfCanErrorExt;
    uint8_t* body = beginObject<Layout::kSize>(frame, BlfType::CanErrorExt, out);
    storeU16(body + Layout::kChannel, frame.channel);
    uint32_t valid = 0;
    if (frame.errorCode != 0) valid |= Layout::kHasCode;
    if (frame.errorFlags != 0) valid |= Layout::kHasFlagsExt;
    if (frame.errorPosition != 0) valid |= Layout::kHasPosition;
    storeU32(body + Layout::kValidFields, valid);
    body[Layout::kCode] = frame.errorCode;
    body[Layout::kPosition] = frame.errorPosition;
    body[Layout::kDlc] = frame.dlc;
    storeU32(body + Layout::kId, fileId(frame));
    storeU16(body + Layout::kFlagsExt, frame.errorFlags);
    copyData(frame, body + Layout::kData, 8);
}

void encodeLin(const TraceFrame& frame, uint8_t* out) {
    using Layout = BlfLinMessage2;
    uint8_t* body = beginObject<Layout::kSize>(frame, BlfType::LinMessage2, out);
    // The checksum model is valid from this object version on.
    storeU16(out + 22, 1);
    storeU16(body + Layout::kChannel, frame.channel);
    body[Layout::kId] = static_cast<uint8_t>(frame.id & 0x3FU);
    body[Layout::kLength] = static_cast<uint8_t>(frame.data.size());
    body[Layout::kChecksumModel] = (frame.flags & kLinEnhancedChecksum) != 0 ? 1 : 0;
    copyData(frame, body + Layout::kData, 8);
    storeU16(body + Layout::kChecksum, frame.checksum);
    body[Layout::kDirection] = static_cast<uint8_t>(frame.direction);
}

void encodeEthernet(const TraceFrame& frame, uint8_t* out) {
    using Layout = BlfEthernetFrameEx;
    const size_t size = Layout::kData + frame.data.size();
    uint8_t* body = beginObject<Layout::kData>(frame, BlfType::EthernetFrameEx, size, out);
    storeU16(body + Layout::kFixedLength, Layout::kFixedBytes);
    storeU16(body + Layout::kChannel, frame.channel);
    storeU16(body + Layout::kDirection, static_cast<uint16_t>(frame.direction));
    storeU16(body + Layout::kFrameLength, static_cast<uint16_t>(frame.data.size()));
    copyData(frame, body + Layout::kData, frame.data.size());
}

void encodeFlexRay(const TraceFrame& frame, uint8_t* out) {
    using Layout = BlfFlexRayReceiveEx;
    const size_t size = Layout::kData + frame.data.size();
    uint8_t* body = beginObject<Layout::kData>(frame, BlfType::FlexRayReceiveEx, size, out);
    storeU16(body + Layout::kChannel, frame.channel);
    storeU16(body + Layout::kVersion, 1);
    storeU16(body + Layout::kChannelMask, frame.channelMask);
    storeU16(body + Layout::kDirection, static_cast<uint16_t>(frame.direction));
    storeU16(body + Layout::kFrameId, static_cast<uint16_t>(frame.id));
    storeU16(body + Layout::kSlotId, static_cast<uint16_t>(frame.id));
    if ((frame.channelMask & 1U) != 0) storeU16(body + Layout::kHeaderCrcA, frame.headerCrc);
    if ((frame.channelMask & 2U) != 0) storeU16(body + Layout::kHeaderCrcB, frame.headerCrc);
    storeU16(body + Layout::kByteCount, static_cast<uint16_t>(frame.data.size()));
    storeU16(body + Layout::kDataCount, static_cast<uint16_t>(frame.data.size()));
    storeU16(body + Layout::kCycle, frame.cycle);
    storeU32(body + Layout::kFrameFlags, frame.flags);
    copyData(frame, body + Layout::kData, 254);
}

void encodeLoss(const TraceFrame& frame, uint8_t* out) {
    using Layout = BlfDataLost;
    TraceFrame begin = frame;
    begin.timeNs = frame.firstLostNs;
    uint8_t* body = beginObject<Layout::kBeginSize>(begin, BlfType::DataLostBegin, out);
    storeU32(body + Layout::kQueue, Layout::kAnalysisQueue);
    uint8_t* end = out + kBlfObjectHeaderSize + Layout::kBeginSize;
    body = beginObject<Layout::kEndSize>(frame, BlfType::DataLostEnd, end);
    storeU32(body + Layout::kQueue, Layout::kAnalysisQueue);
    storeU64(body + Layout::kFirstTime, frame.firstLostNs);
    storeU32(body + Layout::kCount, frame.lostFrames);
}

}  // namespace

size_t blfObjectSize(const TraceFrame& frame) {
    const size_t length = frame.data.size();
    switch (frame.kind) {
        case FrameKind::Can:
            if ((frame.flags & kCanFd) == 0) {
                return length <= 8 ? kBlfObjectHeaderSize + BlfCanMessage2::kSize : 0;
            }
            if (length > 64) return 0;
            if (!usesFdMessage64(frame)) return kBlfObjectHeaderSize + BlfCanFdMessage::kSize;
            return kBlfObjectHeaderSize + BlfCanFdMessage64::kData + alignedToFour(length);
        case FrameKind::CanError:
            return kBlfObjectHeaderSize + BlfCanErrorExt::kSize;
        case FrameKind::Lin:
            return length <= 8 ? kBlfObjectHeaderSize + BlfLinMessage2::kSize : 0;
        case FrameKind::Ethernet:
            if (length > 65535) return 0;
            return kBlfObjectHeaderSize + BlfEthernetFrameEx::kData + length;
        case FrameKind::FlexRay:
            if (length > 254) return 0;
            return kBlfObjectHeaderSize + BlfFlexRayReceiveEx::kData + length;
        case FrameKind::LossMarker:
            return 2 * kBlfObjectHeaderSize + BlfDataLost::kBeginSize + BlfDataLost::kEndSize;
        case FrameKind::None:
            break;
    }
    return 0;
}

void encodeBlfFrame(const TraceFrame& frame, uint8_t* out) {
    switch (frame.kind) {
        case FrameKind::Can:
            if ((frame.flags & kCanFd) == 0) return encodeCan(frame, out);
            return usesFdMessage64(frame) ? encodeFd64(frame, out) : encodeFd(frame, out);
        case FrameKind::CanError:
            return encodeCanError(frame, out);
        case FrameKind::Lin:
            return encodeLin(frame, out);
        case FrameKind::Ethernet:
            return encodeEthernet(frame, out);
        case FrameKind::FlexRay:
            return encodeFlexRay(frame, out);
        case FrameKind::LossMarker:
            return encodeLoss(frame, out);
        case FrameKind::None:
            return;
    }
}

}  // namespace quill::traceformats
