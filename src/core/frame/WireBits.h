#pragma once

#include <cstdint>

#include "core/frame/Frame.h"

namespace rv {

// Bits that a frame occupies its bus with, interframe space included. Stuff bits depend on the
// content and are left out. `data` is sent at the channel's data bit rate, all else at the nominal.
struct WireBits {
    uint32_t nominal = 0;
    uint32_t data = 0;
};

// ISO 11898-1. A classic frame has only nominal bits; so has an FD frame without bit-rate switch.
struct CanWireForm {
    bool extended = false;
    bool fd = false;
    bool bitRateSwitch = false;
};
[[nodiscard]] constexpr WireBits canWireBits(uint32_t bytes, CanWireForm form) {
    constexpr uint32_t kStandard = 47;
    constexpr uint32_t kExtended = 67;
    constexpr uint32_t kFdArbitration = 30;  // start to BRS, and acknowledge to interframe space
    constexpr uint32_t kFdExtended = 19;
    constexpr uint32_t kFdData = 28;  // ESI, DLC, stuff count and the shorter CRC
    if (!form.fd) return {(form.extended ? kExtended : kStandard) + 8 * bytes, 0};
    const uint32_t arbitration = kFdArbitration + (form.extended ? kFdExtended : 0);
    const uint32_t data = kFdData + 8 * bytes;
    return form.bitRateSwitch ? WireBits{arbitration, data} : WireBits{arbitration + data, 0};
}

// ISO 17987-3: header, and ten bits for each payload byte and the checksum.
[[nodiscard]] constexpr WireBits linWireBits(uint32_t bytes) { return {34 + 10 * (bytes + 1), 0}; }

// IEEE 802.3, counted from the MAC header without checksum: preamble, checksum and gap come on top.
[[nodiscard]] constexpr WireBits ethernetWireBits(uint32_t bytes) { return {8 * (bytes + 24), 0}; }

// FlexRay 2.1: ten bits for each byte of header, payload and trailer.
[[nodiscard]] constexpr WireBits flexRayWireBits(uint32_t bytes) { return {10 * (bytes + 8), 0}; }

[[nodiscard]] inline WireBits wireBits(const Frame& frame) {
    switch (frame.type) {
        case FrameType::Can: {
            const scripts::CANFrameExtend& extend = frame.can.extend;
            const uint32_t bytes = extend.RTR() != 0 ? 0 : frame.length;
            return canWireBits(bytes, {.extended = extend.IDE() != 0,
                                       .fd = extend.EDL() != 0,
                                       .bitRateSwitch = extend.BRS() != 0});
        }
        case FrameType::Lin:
            return linWireBits(frame.length);
        case FrameType::Ethernet:
            return ethernetWireBits(frame.length);
        case FrameType::FlexRay:
            return flexRayWireBits(frame.length);
        case FrameType::None:
            break;
    }
    return {};
}

}  // namespace rv
