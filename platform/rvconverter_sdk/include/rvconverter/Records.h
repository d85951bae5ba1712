#pragma once

#include <cstddef>
#include <cstdint>

namespace rv {

// Records of the converter library, one kind per bus. The first two words are the frame's time on
// the wall clock; the payload follows the record in the same memory.
enum class RecordKind : uint8_t { Can = 1, Lin = 2, Ethernet = 3, FlexRay = 5 };

struct RecordHead {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;
    uint32_t length = 0;  // payload bytes
    RecordKind kind = RecordKind::Can;
    uint8_t transmitted = 0;  // 1: sent by the box itself
    uint8_t channel = 0;      // index from 0; files count from 1
};

struct CanRecord {
    static constexpr uint8_t kFd = 0x01, kBitRateSwitch = 0x02, kErrorState = 0x04;
    static constexpr uint8_t kExtended = 0x08, kRemote = 0x10;

    RecordHead head;
    uint32_t id = 0;
    uint16_t errorFlags = 0;  // not 0: an error frame
    uint8_t flags = 0;
    uint8_t dlc = 0;
};

struct LinRecord {
    RecordHead head;
    uint8_t id = 0;
    uint8_t checkMode = 0;  // 0 classic, 1 enhanced
    uint16_t checksum = 0;
};

// Payload from the MAC header on, without checksum.
struct EthernetRecord {
    RecordHead head;
};

struct FlexRayRecord {
    RecordHead head;
    uint16_t slot = 0;
    uint16_t headerCrc = 0;
    uint16_t flags = 0;  // bit 0 null frame, 1 valid data, 2 sync, 3 startup, 4 payload preamble
    uint8_t cycle = 0;
    uint8_t channelMask = 1;
};

static_assert(offsetof(RecordHead, seconds) == 0);

}  // namespace rv
