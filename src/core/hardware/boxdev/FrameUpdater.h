#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>

#include "core/hardware/boxdev/SendDocument.h"
#include "simcore/records.h"

namespace RV::BoxDev {

// Fills a cyclic job of the device library from a request, with the update step as its callback
// when the request has a counter or a CRC. The job then owns the settings through its release
// function. False with a reason for settings that do not fit the frame.
[[nodiscard]] bool fillCycleJob(const CanSendRequest& request, RvCanCycleJob& job,
                                std::string& reason);

// Counters of single sends: a script that sends the same identifier again and again sees its
// counter go on, one counter for each channel and identifier. Used by one worker thread.
class SingleSendCounters {
public:
    // Brings counter and CRC of the frame up to date. False with a reason for settings that do not
    // fit the frame; the frame is then unchanged.
    [[nodiscard]] bool apply(rv::CanSendFrame& frame, const rv::FrameUpdate& update,
                             std::string& reason);

private:
    using Key = std::tuple<uint8_t, bool, uint32_t>;  // channel, extended, identifier
    std::map<Key, uint64_t> m_counters;
};

}  // namespace RV::BoxDev
