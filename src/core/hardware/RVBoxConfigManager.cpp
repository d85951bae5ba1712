#include "core/hardware/RVBoxConfigManager.h"

#include <cmath>

#include "core/hardware/boxdev/ConfigDocument.h"
#include "simcore/founder.h"

namespace rv {
namespace {

using RV::BoxDev::CommandCode;

constexpr int kControllerClockHz = 80'000'000;

std::string requestText(const char* cmd, const std::string& deviceId) {
    return RV::BoxDev::buildConfigDocument(cmd, deviceId, {});
}

// A bit rate serves when the controller's clock can be divided down to it.
bool reachable(bool dataPhase, int bitrate) {
    return !RvETASCanParams::traverseCanParamsByBitrate(dataPhase, kControllerClockHz, bitrate, 0,
                                                        1)
                .empty();
}

bool checkBitrates(const BoxConfig& config, std::string& reason) {
    for (const CanChannelSettings& channel : config.can) {
        const std::string where = "CAN channel " + std::to_string(channel.channel) + ": ";
        if (!reachable(false, channel.bitrate)) {
            reason = where + "bitrate " + std::to_string(channel.bitrate) + " cannot be reached";
            return false;
        }
        if (channel.fd && !reachable(true, channel.dataBitrate)) {
            reason =
                where + "dataBitrate " + std::to_string(channel.dataBitrate) + " cannot be reached";
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<BoxConfig> RVBoxConfigManager::config(const std::string& deviceId) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(deviceId);
    return found == m_entries.end() ? std::nullopt : found->second.config;
}

std::optional<BoxConfig> RVBoxConfigManager::fetch(const DeviceHub::Device& device,
                                                   std::string& reason) {
    const auto answer = device->execute(requestText("GetChannelsConfig", device->id()));
    if (answer.code != CommandCode::Done) {
        reason = answer.message;
        return std::nullopt;
    }
    auto config = RV::BoxDev::parseConfigBody(answer.body, reason);
    if (config) {
        const std::lock_guard lock(m_mutex);
        m_entries[device->id()].config = config;
    }
    return config;
}

bool RVBoxConfigManager::write(const DeviceHub::Device& device, const BoxConfig& config,
                               std::string& reason) {
    if (!checkBitrates(config, reason)) return false;
    const auto answer =
        device->execute(RV::BoxDev::buildConfigDocument("SetChannelsConfig", device->id(), config));
    if (answer.code != CommandCode::Done) {
        reason = answer.message;
        return false;
    }
    return fetch(device, reason).has_value();
}

std::optional<BoxIdentity> RVBoxConfigManager::identity(const DeviceHub::Device& device,
                                                        std::string& reason) {
    const auto answer = device->execute(requestText("GetDevInfo", device->id()));
    if (answer.code != CommandCode::Done || answer.cmd != "GetDevInfo") {
        reason = answer.message;
        return std::nullopt;
    }
    auto identity = RV::BoxDev::parseIdentity(answer.body, reason);
    if (identity) noteDip(device->id(), identity->dip);
    return identity;
}

void RVBoxConfigManager::noteDip(const std::string& deviceId, const DipState& dip) {
    const std::lock_guard lock(m_mutex);
    m_entries[deviceId].dip = dip;
}

std::optional<DipState> RVBoxConfigManager::dip(const std::string& deviceId) const {
    const std::lock_guard lock(m_mutex);
    const auto found = m_entries.find(deviceId);
    return found == m_entries.end() ? std::nullopt : found->second.dip;
}

void RVBoxConfigManager::forget(const std::string& deviceId) {
    const std::lock_guard lock(m_mutex);
    m_entries.erase(deviceId);
}

}  // namespace rv
