#pragma once

#include <cstdint>
#include <string>

#include "core/frame/CANFrameExtend.h"
#include "pysdk/py_extension/packed_bytes.h"

namespace rv {
struct Frame;
}

// Values that scripts receive from callables and hand to the send functions. The records are
// packed; their text forms are read by scripts and kept exactly.
namespace scripts {

// First element of result pairs. Unscoped, so that it compares with the integers of those pairs.
enum ErrorCode : int32_t { Success = 0, InvalidParam = 1 };

#pragma pack(push, 1)

struct CANRawFrame {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;  // 0 to 999,999,999
    uint8_t channelId = 0;
    uint32_t id = 0;
    CANFrameExtend extend;
    ByteList data;
    bool parsed = false;  // a database entry has been matched to the frame
    PackedBytes name;     // name of that entry
    uint16_t dir = 0;     // 1: sent by the box itself

    CANRawFrame() = default;
    CANRawFrame(const CANRawFrame&) = default;
    CANRawFrame& operator=(const CANRawFrame&) = default;
    virtual ~CANRawFrame() = default;

    [[nodiscard]] uint64_t timestampNs() const;
    [[nodiscard]] std::string toText() const;
    bool operator==(const CANRawFrame& other) const;
};

struct LinFrame {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;
    uint8_t channelId = 0;
    uint16_t dir = 0;
    uint16_t id = 0;
    ByteList data;
    uint8_t checkMode = 0;  // 0 classic, 1 enhanced
    uint16_t checksum = 0;

    LinFrame() = default;
    LinFrame(const LinFrame&) = default;
    LinFrame& operator=(const LinFrame&) = default;
    virtual ~LinFrame() = default;

    [[nodiscard]] uint64_t timestampNs() const;
    [[nodiscard]] std::string toText() const;
    bool operator==(const LinFrame& other) const;
};

struct EthFrame {
    uint32_t seconds = 0;
    uint32_t nanoseconds = 0;
    uint8_t channelId = 0;
    uint16_t dir = 0;
    PackedBytes data;  // from the MAC header, without checksum

    EthFrame() = default;
    EthFrame(const EthFrame&) = default;
    EthFrame& operator=(const EthFrame&) = default;
    virtual ~EthFrame() = default;

    [[nodiscard]] uint64_t timestampNs() const;
    [[nodiscard]] std::string toText() const;
    bool operator==(const EthFrame& other) const;
};

#pragma pack(pop)

[[nodiscard]] std::string toText(const CANFrameExtend& extend);
// "Data: [0X1, 0XFF]"
[[nodiscard]] std::string toText(std::span<const uint8_t> data);

// Fill a record from a received frame; payload beyond 64 bytes is cut.
void fill(CANRawFrame& record, const rv::Frame& frame);
void fill(LinFrame& record, const rv::Frame& frame);
void fill(EthFrame& record, const rv::Frame& frame);

}  // namespace scripts
