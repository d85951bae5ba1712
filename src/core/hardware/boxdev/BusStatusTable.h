#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "simcore/records.h"

namespace RV::BoxDev {

// Last bus status and number of time-outs of each CAN channel of one device, kept from the
// library's connection events. Thread-safe.
class BusStatusTable {
public:
    // Logs the event and keeps what it says. Gives the text of a notice when one is due: a bus that
    // has come to warning or passive, or the first time-out of a channel since the last clear.
    std::optional<std::string> handle(int32_t type, int32_t channel, int32_t value);

    [[nodiscard]] int32_t status(int32_t channel) const;  // 0 for a channel without an event
    [[nodiscard]] uint32_t timeouts(int32_t channel) const;
    void clearTimeouts();

private:
    std::optional<std::string> handleStatus(int32_t channel, int32_t status);
    std::optional<std::string> handleTimeout(int32_t channel);

    struct Channel {
        int32_t status = RvCanBusStatusTypeBusActive;
        uint32_t timeouts = 0;
    };
    mutable std::mutex m_mutex;
    std::map<int32_t, Channel> m_channels;  // guarded by m_mutex
};

}  // namespace RV::BoxDev
