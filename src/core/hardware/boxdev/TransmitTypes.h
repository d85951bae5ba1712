#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/frame/CANFrameExtend.h"

namespace rv {

// A CAN or CAN FD frame to be sent through a box.
struct CanSendFrame {
    uint8_t channel = 0;
    uint32_t id = 0;
    scripts::CANFrameExtend extend;
    std::vector<uint8_t> data;  // up to 64 bytes
};

// Rolling counter and CRC that a frame carries; see the update step for the rules.
struct FrameUpdate {
    bool counterEnabled = false;
    int32_t counterStartBit = 0;
    int32_t counterLength = 0;  // bits
    bool counterBigEndian = false;
    bool counterReset = false;  // next transmission carries 0
    uint8_t crcType = 0;        // code of the CRC catalogue, 0 for none
    int32_t crcStartBit = 0;
    int32_t crcLength = 0;  // bits
    bool crcBigEndian = false;
    std::vector<uint8_t> crcKey;  // used by "CRC_8 Variant" only
};

// A cyclic job in a box. gid is made when the record is built.
struct CyclicCanFrame {
    std::string gid;
    CanSendFrame frame;
    int32_t cycleMs = 0;     // 1 and up
    int32_t limitCount = 0;  // number of transmissions; 0 or less: without end
    FrameUpdate update;
};

// Results of operations on boxes that scripts see as a 16-bit number.
enum class BoxResult : int16_t {
    Done = 0,
    NoSuchDevice = 1,
    NoSuchJob = 2,
    InvalidParam = 3,
    DeviceRefused = 4,
    TimedOut = 5,
    NotConnected = 6,
};

// One slot of a LIN schedule table, times in ms.
struct LinSlot {
    int32_t id = 0;
    uint64_t intervalMs = 0;
    uint32_t msgType = 0;    // 4 master publishes, 3 slave publishes
    uint32_t checkType = 0;  // 0 classic, 1 enhanced
    std::vector<uint8_t> data;
};

}  // namespace rv
