#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "quill_traceformats/TraceFrame.h"
#include "quill_traceformats/blf_layout.h"

// Bodies of the bus events that are written, between bytes and TraceFrame. Offsets count from the
// start of the body (behind the object header, 32 or 40 bytes).
namespace quill::traceformats {

// CAN_MESSAGE (1) has the first 16 bytes only.
struct BlfCanMessage2 {
    static constexpr size_t kChannel = 0, kFlags = 2, kDlc = 3, kId = 4, kData = 8;
    static constexpr size_t kDuration = 16, kBitCount = 20, kSize = 24, kOldSize = 16;
    static constexpr uint8_t kTx = 0x01, kRemote = 0x80;
};

struct BlfCanFdMessage {
    static constexpr size_t kChannel = 0, kFlags = 2, kDlc = 3, kId = 4, kDuration = 8;
    static constexpr size_t kBitCount = 12, kFdFlags = 13, kValidBytes = 14, kData = 20;
    static constexpr size_t kSize = 88, kMinimum = 20;
    static constexpr uint8_t kEdl = 0x01, kBrs = 0x02, kEsi = 0x04;
};

struct BlfCanFdMessage64 {
    static constexpr size_t kChannel = 0, kDlc = 1, kValidBytes = 2, kTxCount = 3, kId = 4;
    static constexpr size_t kDuration = 8, kFlags = 12, kBitCount = 32, kDirection = 34;
    static constexpr size_t kExtOffset = 35, kCrc = 36, kData = 40;
    static constexpr uint32_t kRemote = 0x10, kTxRequest = 0x80, kEdl = 0x1000, kBrs = 0x2000;
    static constexpr uint32_t kEsi = 0x4000;
};

struct BlfCanErrorExt {
    static constexpr size_t kChannel = 0, kLength = 2, kValidFields = 4, kCode = 8, kPosition = 9;
    static constexpr size_t kDlc = 10, kFrameLength = 12, kId = 16, kFlagsExt = 20, kData = 24;
    static constexpr size_t kSize = 32;
    static constexpr uint32_t kHasCode = 1, kHasFlagsExt = 2, kHasPosition = 4;
};

struct BlfLinMessage2 {
    static constexpr size_t kStartOfFrame = 0, kBitRate = 8, kChannel = 12, kId = 37, kLength = 38;
    static constexpr size_t kChecksumModel = 39, kData = 112, kChecksum = 120, kDirection = 122;
    static constexpr size_t kSimulated = 123, kSize = 152, kMinimum = 123;
};

struct BlfEthernetFrameEx {
    static constexpr size_t kFixedLength = 0, kValidFields = 2, kChannel = 4, kHwChannel = 6;
    static constexpr size_t kDirection = 20, kFrameLength = 22, kData = 32;
    static constexpr uint16_t kFixedBytes = 30;
};

struct BlfFlexRayReceiveEx {
    static constexpr size_t kChannel = 0, kVersion = 2, kChannelMask = 4, kDirection = 6;
    static constexpr size_t kFrameId = 16, kHeaderCrcA = 18, kHeaderCrcB = 20, kByteCount = 22;
    static constexpr size_t kDataCount = 24, kCycle = 26, kFrameFlags = 36, kSlotId = 52;
    static constexpr size_t kData = 84;
};

// DATA_LOST_BEGIN: u32 queue. DATA_LOST_END: u32 queue, u64 time of the first lost event, u32
// count.
struct BlfDataLost {
    static constexpr size_t kQueue = 0, kFirstTime = 4, kCount = 12;
    static constexpr size_t kBeginSize = 4, kEndSize = 16;
    static constexpr uint32_t kAnalysisQueue = 1;
};

// Largest object that encodeBlfFrame writes: an Ethernet frame of 65535 bytes.
inline constexpr size_t kBlfLargestObject =
    kBlfObjectHeaderSize + BlfEthernetFrameEx::kData + 65535;

// Bytes that the frame's object takes (for a loss marker its two objects); 0 when no object can
// hold it: a kind that is not written, or a payload beyond the field that counts it.
[[nodiscard]] size_t blfObjectSize(const TraceFrame& frame);

// Number of objects that encodeBlfFrame writes for it: 2 for a loss marker, else 1.
[[nodiscard]] constexpr uint32_t blfObjectsOf(const TraceFrame& frame) {
    return frame.kind == FrameKind::LossMarker ? 2 : 1;
}

// Writes the object, header included, to `out`, which has room for blfObjectSize(frame) bytes (not
// 0). The frame's timeNs counts from the start of measurement. Classic frames become CAN_MESSAGE2,
// FD frames CAN_FD_MESSAGE_64 (CAN_FD_MESSAGE on channels above 255, which the former cannot hold),
// error frames CAN_ERROR_EXT, then LIN_MESSAGE2, ETHERNET_FRAME_EX, FLEXRAY_VFR_RECEIVEMSG_EX and
// DATA_LOST_BEGIN with DATA_LOST_END.
void encodeBlfFrame(const TraceFrame& frame, uint8_t* out);

// Reads the body of one of the objects above, and of CAN_MESSAGE and ETHERNET_FRAME_FORWARDED,
// whose layouts agree. `object` is the whole object with its header, cut to its object size; the
// yielded data point into it. Empty for other types and for bodies too short for their type.
// DATA_LOST_BEGIN yields a loss marker without a count, DATA_LOST_END the one with it.
[[nodiscard]] std::optional<TraceFrame> decodeBlfFrame(const BlfObjectHeader& header,
                                                       std::span<const uint8_t> object);
// The same into a frame of the caller's, false instead of empty: readers of millions of objects
// save the copies.
[[nodiscard]] bool decodeBlfFrame(const BlfObjectHeader& header, std::span<const uint8_t> object,
                                  TraceFrame& frame);

}  // namespace quill::traceformats
