#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "core/frame/CANFrameExtend.h"

namespace rv {

// Kind of a received frame. The numbers are the bus types of recorded frames.
enum class FrameType : uint8_t { None = 0, Can = 1, Lin = 2, Ethernet = 3, FlexRay = 5 };

enum class Direction : uint16_t { Received = 0, Transmitted = 1 };

// Facts of one bus kind beside identifier and payload.
struct CanFacts {
    scripts::CANFrameExtend extend;
};
struct LinFacts {
    uint8_t checkMode = 0;  // 0 classic, 1 enhanced
    uint16_t checksum = 0;
};
struct FlexRayFacts {
    uint8_t channelMask = 1;  // 1 channel A, 2 channel B, 3 both
    uint8_t cycle = 0;        // 0 to 63
    uint16_t headerCrc = 0;
    uint16_t flags = 0;  // bit 0 null frame, 1 valid data, 2 sync, 3 startup, 4 payload preamble
};

// One received frame. Seconds and nanoseconds lie first, as every user of a frame's time expects.
// The payload follows the struct in the same allocation, so a frame costs one.
struct Frame {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;  // 0 to 999,999,999
    FrameType type = FrameType::None;
    uint8_t channel = 0;  // index of the channel on its box, counted from 0 per bus kind
    Direction direction = Direction::Received;
    uint32_t id = 0;      // CAN or LIN identifier, FlexRay slot; 0 for Ethernet
    uint32_t length = 0;  // payload bytes: CAN up to 64, LIN up to 8, Ethernet from the MAC header
                          // without checksum, FlexRay up to 254
    union {
        CanFacts can;
        LinFacts lin;
        FlexRayFacts flexray;
    };

    Frame() : can() {}

    [[nodiscard]] uint64_t timestampNs() const {
        return uint64_t{seconds} * 1'000'000'000U + nanoseconds;
    }
    [[nodiscard]] std::span<uint8_t> payload() {
        return {reinterpret_cast<uint8_t*>(this + 1), length};
    }
    [[nodiscard]] std::span<const uint8_t> payload() const {
        return {reinterpret_cast<const uint8_t*>(this + 1), length};
    }
};

struct FrameDeleter {
    void operator()(Frame* frame) const noexcept;
};

// A frame's data holder: moved from hand to hand, freed by its own deleter.
using FrameHolder = std::unique_ptr<Frame, FrameDeleter>;

// A frame with room for `length` payload bytes, all other members at their defaults. The payload
// is not initialised.
[[nodiscard]] FrameHolder makeFrame(uint32_t length);

// A copy of a frame with its payload.
[[nodiscard]] FrameHolder copyFrame(const Frame& frame);

}  // namespace rv
