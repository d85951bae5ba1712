#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/hardware/RVBoxManager.h"
#include "pysdk/py_extension/device_records.h"
#include "pysdk/py_extension/script_records.h"

namespace scripts {

// What the send functions make of a record.
enum class FrameFormat : uint8_t { AsFlagged, Fd };

// A cyclic job of a box, as the start calls return it.
struct CANCyclicFrameHandle {
    std::string gid;
    DeviceHandle deviceInfo;
    int32_t ms = 0;
    int32_t limitCount = 0;  // transmissions; 0 or less: without end
    std::string mac;
    FrameFormat format = FrameFormat::AsFlagged;
    rv::BoxResult result = rv::BoxResult::Done;  // what the box answered to the start

    bool operator==(const CANCyclicFrameHandle&) const = default;
};

[[nodiscard]] std::string toText(const CANCyclicFrameHandle& cyclic, const std::string& status);
[[nodiscard]] std::string toText(const rv::FrameUpdate& update);
[[nodiscard]] bool sameUpdate(const rv::FrameUpdate& left, const rv::FrameUpdate& right);

// The frame as a box sends it. Without a DLC the record's data gives it; a DLC that disagrees with
// the data is refused, as is a length that no CAN frame has. `reason` is set on failure.
[[nodiscard]] std::optional<rv::CanSendFrame> toSendFrame(const CANRawFrame& frame,
                                                          FrameFormat format, std::string& reason);

// Identifier of a new cyclic job.
[[nodiscard]] std::string makeJobId();

}  // namespace scripts
