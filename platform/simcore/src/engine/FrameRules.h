#pragma once

#include <cstdint>

#include "simcore/records.h"

// Rules of the buses about single frames: flag words, lengths, checksums, time on the wire.
namespace simcore::engine {

enum class BusKind : uint8_t { can, lin, ethernet, flexray };
inline constexpr int kBusKinds = 4;
[[nodiscard]] const char* busKindName(BusKind kind);

struct BusRates {
    int64_t bitrate = 0;  // bit/s; 0: frames take no time
    int64_t dataBitrate = 0;
};

// The CAN flag word, byte by byte as the records carry it.
namespace canflag {
inline constexpr uint8_t kEdl = 0x01;  // byte 0
inline constexpr uint8_t kBrs = 0x02;
inline constexpr uint8_t kEsi = 0x04;
inline constexpr uint8_t kIde = 0x04;  // byte 1
inline constexpr uint8_t kRtr = 0x08;
}  // namespace canflag

[[nodiscard]] inline bool isFd(const RvCanFrame& f) { return (f.extend[0] & canflag::kEdl) != 0; }
[[nodiscard]] inline bool isExtended(const RvCanFrame& f) {
    return (f.extend[1] & canflag::kIde) != 0;
}
[[nodiscard]] inline bool isRemote(const RvCanFrame& f) {
    return (f.extend[1] & canflag::kRtr) != 0;
}
[[nodiscard]] inline uint8_t dlcOf(const RvCanFrame& f) { return f.extend[1] >> 4U; }

// Smallest data length code whose payload holds `length` bytes (0 to 64), and its payload length.
[[nodiscard]] uint8_t canDlcForLength(uint8_t length, bool fd);
[[nodiscard]] uint8_t canLengthOfDlc(uint8_t dlc, bool fd);

// Makes a frame what a controller would put on the wire: payload padded with zeros to a length that
// exists, data length code to match, nothing behind the payload. False when identifier or length
// are out of range.
[[nodiscard]] bool normalise(RvCanFrame& frame);
[[nodiscard]] bool normalise(RvLinFrame& frame);
[[nodiscard]] bool normalise(RvEthFrame& frame);
[[nodiscard]] bool normalise(RvFlexRayFrame& frame);

// Checksum over payload (classic) or protected identifier and payload (enhanced). The diagnostic
// identifiers 60 and 61 are classic whatever the frame says.
[[nodiscard]] uint8_t linProtectedId(uint8_t id);
[[nodiscard]] uint8_t linChecksum(const RvLinFrame& frame);

// The lower value wins the bus.
[[nodiscard]] uint32_t arbitrationKey(const RvCanFrame& frame);
[[nodiscard]] inline uint32_t arbitrationKey(const RvLinFrame& /*frame*/) { return 0; }
[[nodiscard]] inline uint32_t arbitrationKey(const RvEthFrame& /*frame*/) { return 0; }
[[nodiscard]] inline uint32_t arbitrationKey(const RvFlexRayFrame& /*frame*/) { return 0; }

// Nanoseconds that the frame keeps the bus, the space to the next frame included. Stuff bits of CAN
// are taken at their mean over random payloads: one for every 30 bits that can be stuffed.
[[nodiscard]] int64_t wireTime(const RvCanFrame& frame, const BusRates& rates);
[[nodiscard]] int64_t wireTime(const RvLinFrame& frame, const BusRates& rates);
[[nodiscard]] int64_t wireTime(const RvEthFrame& frame, const BusRates& rates);
[[nodiscard]] int64_t wireTime(const RvFlexRayFrame& frame, const BusRates& rates);

template <class Frame>
struct FrameKind;
template <>
struct FrameKind<RvCanFrame> {
    static constexpr BusKind kKind = BusKind::can;
};
template <>
struct FrameKind<RvLinFrame> {
    static constexpr BusKind kKind = BusKind::lin;
};
template <>
struct FrameKind<RvEthFrame> {
    static constexpr BusKind kKind = BusKind::ethernet;
};
template <>
struct FrameKind<RvFlexRayFrame> {
    static constexpr BusKind kKind = BusKind::flexray;
};

}  // namespace simcore::engine
