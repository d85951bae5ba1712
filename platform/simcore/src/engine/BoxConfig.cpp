#include <algorithm>
#include <array>

#include "engine/Box.h"
#include "engine/Bus.h"

// Channel settings of a box: kept as set, effective with sync().
namespace simcore::engine {

namespace {

bool isFlag(int32_t value) { return value == 0 || value == 1; }
bool isSamplePoint(int32_t value) { return value >= 500 && value <= 900; }

bool valid(const RvCanChannelConfig& c) {
    return isFlag(c.enabled) && isFlag(c.fd) && isFlag(c.termination) && isFlag(c.listenOnly) &&
           c.bitrate >= 5'000 && c.bitrate <= 1'000'000 && c.dataBitrate >= 5'000 &&
           c.dataBitrate <= 10'000'000 && isSamplePoint(c.samplePoint) &&
           isSamplePoint(c.dataSamplePoint);
}

bool valid(const RvLinChannelConfig& c) {
    constexpr std::array kVersions{13, 20, 21, 22};
    return isFlag(c.enabled) && isFlag(c.master) && c.baudrate >= 1'000 && c.baudrate <= 20'000 &&
           std::find(kVersions.begin(), kVersions.end(), c.version) != kVersions.end();
}

bool valid(const RvEthChannelConfig& c) {
    return isFlag(c.enabled) && isFlag(c.master) && (c.speed == 100 || c.speed == 1000);
}

template <class Config>
int get(const std::vector<Config>& configs, int32_t channel, Config& out) {
    if (channel < 0 || static_cast<size_t>(channel) >= configs.size()) return kRvErrorChannel;
    out = configs[static_cast<size_t>(channel)];
    return kRvOk;
}

template <class Config>
int set(std::vector<Config>& configs, int32_t channel, const Config& config) {
    if (channel < 0 || static_cast<size_t>(channel) >= configs.size()) return kRvErrorChannel;
    if (!valid(config)) return kRvErrorParam;
    configs[static_cast<size_t>(channel)] = config;
    return kRvOk;
}

}  // namespace

int Box::canConfig(int32_t channel, RvCanChannelConfig& config) const {
    const int result = get(m_canConfigs, channel, config);
    if (result == kRvOk && isOpen()) {
        m_core.sink.connectionEvent(handle(), RvConnectionEventTypeGetConfig, channel, 0);
    }
    return result;
}

int Box::setCanConfig(int32_t channel, const RvCanChannelConfig& config, bool atOnce) {
    if (!isOpen()) return kRvErrorNotOpen;
    const int result = set(m_canConfigs, channel, config);
    if (result != kRvOk) return result;
    if (atOnce) sync();
    return report(RvConnectionEventTypeSetConfig, channel);
}

int Box::linConfig(int32_t channel, RvLinChannelConfig& config) const {
    return get(m_linConfigs, channel, config);
}

int Box::setLinConfig(int32_t channel, const RvLinChannelConfig& config) {
    if (!isOpen()) return kRvErrorNotOpen;
    return set(m_linConfigs, channel, config);
}

int Box::ethConfig(int32_t channel, RvEthChannelConfig& config) const {
    return get(m_ethConfigs, channel, config);
}

int Box::setEthConfig(int32_t channel, const RvEthChannelConfig& config) {
    if (!isOpen()) return kRvErrorNotOpen;
    return set(m_ethConfigs, channel, config);
}

int Box::sync() {
    if (!isOpen()) return kRvErrorNotOpen;
    for (Port& port : m_ports[static_cast<size_t>(BusKind::can)]) {
        const RvCanChannelConfig& config = m_canConfigs[port.index];
        port.enabled = config.enabled != 0;
        port.listenOnly = config.listenOnly != 0;
        port.fd = config.fd != 0;
    }
    for (Port& port : m_ports[static_cast<size_t>(BusKind::lin)]) {
        port.enabled = m_linConfigs[port.index].enabled != 0;
        port.master = m_linConfigs[port.index].master != 0;
    }
    for (Port& port : m_ports[static_cast<size_t>(BusKind::ethernet)]) {
        port.enabled = m_ethConfigs[port.index].enabled != 0;
    }
    m_core.room.announceLocked();
    return kRvOk;
}

}  // namespace simcore::engine
