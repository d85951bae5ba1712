#pragma once

#include <cstdint>
#include <string>

namespace rv {

// One entry of a CAN filter list: an identifier, an identifier range, a frame name or, with none of
// them, a whole channel.
struct CANFrameFilterItem {
    bool isRange = false;
    uint32_t extended = 0;  // 1: 29-bit identifier
    uint32_t id = 0;
    uint32_t idRangeStart = 0;  // both bounds belong to the range
    uint32_t idRangeEnd = 0;
    uint16_t dir = 0;  // 0 received, 1 transmitted by the box itself
    int32_t channelId = 0;
    std::string name;           // frame name that a database gives; empty for other entries
    bool wholeChannel = false;  // both directions

    bool operator==(const CANFrameFilterItem&) const = default;
};

// The same for LIN, which has no extended identifiers.
struct LINFrameFilterItem {
    bool isRange = false;
    uint32_t id = 0;
    uint32_t idRangeStart = 0;
    uint32_t idRangeEnd = 0;
    uint16_t dir = 0;
    int32_t channelId = 0;
    std::string name;
    bool wholeChannel = false;

    bool operator==(const LINFrameFilterItem&) const = default;
};

}  // namespace rv
