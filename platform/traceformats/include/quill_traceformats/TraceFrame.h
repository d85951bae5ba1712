#pragma once

#include <cstdint>
#include <span>

namespace quill::traceformats {

// The numbers of the bus kinds are those of received frames.
enum class FrameKind : uint8_t {
    None = 0,
    Can = 1,
    Lin = 2,
    Ethernet = 3,
    FlexRay = 5,
    CanError = 16,    // error frame on a CAN bus; id and data may be empty
    LossMarker = 17,  // frames were lost here, see TraceFrame::lostFrames
};

enum class FrameDirection : uint8_t { Rx = 0, Tx = 1, TxRequest = 2 };

// Bits of TraceFrame::flags for Can and CanError.
inline constexpr uint32_t kCanExtended = 0x01;  // 29-bit identifier
inline constexpr uint32_t kCanRemote = 0x02;
inline constexpr uint32_t kCanFd = 0x04;
inline constexpr uint32_t kCanBitRateSwitch = 0x08;
inline constexpr uint32_t kCanErrorState = 0x10;

// Bits of TraceFrame::flags for FlexRay.
inline constexpr uint32_t kFlexRayNull = 0x01;
inline constexpr uint32_t kFlexRayValidData = 0x02;
inline constexpr uint32_t kFlexRaySync = 0x04;
inline constexpr uint32_t kFlexRayStartup = 0x08;
inline constexpr uint32_t kFlexRayPreamble = 0x10;

// Bit of TraceFrame::flags for Lin.
inline constexpr uint32_t kLinEnhancedChecksum = 0x01;

// One event of a trace file, whatever the format: writers take it, readers yield it. A member that
// a kind does not name is 0 there. The data belong to whoever made the record.
struct TraceFrame {
    uint64_t timeNs = 0;  // since the epoch, or since the start of measurement: the user says which
    FrameKind kind = FrameKind::None;
    FrameDirection direction = FrameDirection::Rx;
    uint16_t channel = 0;  // as in files, from 1
    uint32_t id = 0;       // CAN identifier without the format bit, LIN identifier, FlexRay slot
    uint32_t flags = 0;    // bits above, by kind
    uint8_t dlc = 0;       // CAN: data length code 0 to 15, as on the bus; LIN: payload bytes
    std::span<const uint8_t> data;  // Ethernet: from the MAC header, without checksum

    uint16_t checksum = 0;    // LIN
    uint8_t cycle = 0;        // FlexRay, 0 to 63
    uint8_t channelMask = 0;  // FlexRay: 1 A, 2 B, 3 both
    uint16_t headerCrc = 0;   // FlexRay
    uint16_t errorFlags = 0;  // CanError: error word as the box reports it; extended code in files
    uint8_t errorCode = 0;    // CanError: error code capture of the controller, 0 unknown
    uint8_t errorPosition = 0;  // CanError: bit position, 0 unknown
    uint32_t lostFrames = 0;    // LossMarker
    uint64_t firstLostNs = 0;   // LossMarker: time of the first lost frame, same base as timeNs
};

// Payload bytes of a data length code: above 8 a CAN FD frame takes steps up to 64, a classic
// frame has 8. Codes above 15 count as 15.
[[nodiscard]] constexpr uint8_t lengthFromDlc(uint8_t dlc, bool fd) {
    constexpr uint8_t kSteps[] = {12, 16, 20, 24, 32, 48, 64};
    if (dlc <= 8) return dlc;
    if (!fd) return 8;
    return kSteps[dlc > 15 ? 6 : dlc - 9];
}

// Smallest code whose payload holds that many bytes; 15 for anything above 48.
[[nodiscard]] constexpr uint8_t dlcFromLength(uint64_t length) {
    if (length <= 8) return static_cast<uint8_t>(length);
    for (uint8_t dlc = 9; dlc < 15; ++dlc) {
        if (length <= lengthFromDlc(dlc, true)) return dlc;
    }
    return 15;
}

}  // namespace quill::traceformats
