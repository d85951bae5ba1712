#include "core/hardware/boxdev/BusStatusTable.h"

#include <array>

#include "core/log/Log.h"

namespace RV::BoxDev {
namespace {

constexpr std::array kStatusTexts = {
    "RvCanBusStatusTypeBusActive\n", "RvCanBusStatusTypeBusHeavy\n",
    "RvCanBusStatusTypeBusWarning\n", "RvCanBusStatusTypeBusPassive\n",
    "RvCanBusStatusTypeBusOff\n"};

}  // namespace

std::optional<std::string> BusStatusTable::handle(int32_t type, int32_t channel, int32_t value) {
    using quill::log::kSimCore;
    switch (type) {
        case RvConnectionEventTypeSetConfig:
            QUILL_INFO(kSimCore, "RvConnectionEventTypeSetConfig\n");
            return std::nullopt;
        case RvConnectionEventTypeGetConfig:
            QUILL_INFO(kSimCore, "RvConnectionEventTypeGetConfig\n");
            return std::nullopt;
        case RvConnectionEventTypeStartTracing:
            QUILL_INFO(kSimCore, "RvConnectionEventTypeStartTracing\n");
            return std::nullopt;
        case RvConnectionEventTypeStopTracing:
            QUILL_INFO(kSimCore, "RvConnectionEventTypeStopTracing\n");
            return std::nullopt;
        case RvConnectionEventTypeBusStatus:
            return handleStatus(channel, value);
        case RvConnectionEventTypeBusTimeout:
            QUILL_INFO(kSimCore, "RvConnectionEventTypeBusTimeout\n");
            return handleTimeout(channel);
        default:
            return std::nullopt;
    }
}

std::optional<std::string> BusStatusTable::handleStatus(int32_t channel, int32_t status) {
    if (status < 0 || status >= static_cast<int32_t>(kStatusTexts.size())) return std::nullopt;
    QUILL_INFO(quill::log::kSimCore, "{}", kStatusTexts[static_cast<size_t>(status)]);
    {
        const std::lock_guard lock(m_mutex);
        int32_t& stored = m_channels[channel].status;
        if (stored == status) return std::nullopt;
        stored = status;
    }
    if (status == RvCanBusStatusTypeBusWarning) {
        return "bus is in warning state,check connections.";
    }
    if (status == RvCanBusStatusTypeBusPassive) {
        return "bus is in passive state,check connections.";
    }
    return std::nullopt;
}

std::optional<std::string> BusStatusTable::handleTimeout(int32_t channel) {
    const std::lock_guard lock(m_mutex);
    if (++m_channels[channel].timeouts > 1) return std::nullopt;
    return "CAN" + std::to_string(channel + 1);
}

int32_t BusStatusTable::status(int32_t channel) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_channels.find(channel);
    return found == m_channels.end() ? int32_t{RvCanBusStatusTypeBusActive} : found->second.status;
}

uint32_t BusStatusTable::timeouts(int32_t channel) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_channels.find(channel);
    return found == m_channels.end() ? 0 : found->second.timeouts;
}

void BusStatusTable::clearTimeouts() {
    const std::lock_guard lock(m_mutex);
    for (auto& [channel, entry] : m_channels) entry.timeouts = 0;
}

}  // namespace RV::BoxDev
