#include <cmath>
#include <cstdio>

#include "core/hardware/boxdev/ConfigDocument.h"
#include "core/hardware/boxdev/Hub4e.h"
#include "core/hardware/boxdev/Hub4eScan.h"
#include "core/hardware/boxdev/Library.h"

// Information and configuration commands of a network box.
namespace RV::BoxDev {
namespace {

int32_t perMille(double percent) { return static_cast<int32_t>(std::lround(percent * 10.0)); }

rv::CanChannelSettings fromConfig(int32_t channel, const RvCanChannelConfig& c) {
    return {channel,
            c.enabled != 0,
            c.fd != 0,
            c.bitrate,
            c.dataBitrate,
            c.samplePoint / 10.0,
            c.dataSamplePoint / 10.0,
            c.termination != 0,
            c.listenOnly != 0};
}

RvCanChannelConfig toConfig(const rv::CanChannelSettings& s) {
    return {s.enabled,
            s.fd,
            s.bitrate,
            s.dataBitrate,
            perMille(s.samplePoint),
            perMille(s.dataSamplePoint),
            s.termination,
            s.listenOnly};
}

rv::LinChannelSettings fromConfig(int32_t channel, const RvLinChannelConfig& c) {
    return {channel, c.enabled != 0, c.baudrate, c.master != 0, c.version};
}

RvLinChannelConfig toConfig(const rv::LinChannelSettings& s) {
    return {s.enabled, s.baudrate, s.master, s.version};
}

rv::EthChannelSettings fromConfig(int32_t channel, const RvEthChannelConfig& c) {
    return {channel, c.enabled != 0, c.speed, c.master != 0};
}

RvEthChannelConfig toConfig(const rv::EthChannelSettings& s) {
    return {s.enabled, s.speed, s.master, 0};
}

void refuseChannel(RespondCmdMsg& answer, const char* kind, int channel, int result) {
    refuse(answer, CommandCode::LibraryFailed,
           std::string(kind) + " channel " + std::to_string(channel) + ": " +
               libraryResultText(result));
}

// Reads the settings of all channels of one kind through `get`.
template <class Config, class Settings, class Get>
bool readChannels(int32_t handle, int count, Get get, const char* kind,
                  std::vector<Settings>& settings, RespondCmdMsg& answer) {
    for (int32_t channel = 0; channel < count; ++channel) {
        Config config;
        const int result = withLibrary([&] { return get(handle, channel, &config); });
        // Counts that the model fixes may exceed what a box has; those channels have no settings.
        if (result == kRvErrorChannel) continue;
        if (result != kRvOk) {
            refuseChannel(answer, kind, channel, result);
            return false;
        }
        settings.push_back(fromConfig(channel, config));
    }
    return true;
}

template <class Settings, class Set>
bool writeChannels(int32_t handle, int count, Set set, const char* kind,
                   const std::vector<Settings>& settings, RespondCmdMsg& answer) {
    for (const Settings& entry : settings) {
        if (entry.channel >= count) {
            refuse(answer, CommandCode::BadValue,
                   std::string("the box has no ") + kind + " channel " +
                       std::to_string(entry.channel));
            return false;
        }
        const auto config = toConfig(entry);
        const int result = withLibrary([&] { return set(handle, entry.channel, &config); });
        if (result != kRvOk) {
            refuseChannel(answer, kind, entry.channel, result);
            return false;
        }
    }
    return true;
}

std::optional<rv::BoxConfig> configOf(const nlohmann::json& document, RespondCmdMsg& answer) {
    std::string reason;
    auto config = parseConfig(document, reason);
    if (!config) refuse(answer, CommandCode::BadValue, reason);
    return config;
}

void syncDevice(int32_t handle, RespondCmdMsg& answer) {
    const int result = withLibrary([&] { return Dev_Sync(handle); });
    if (result != kRvOk) refuse(answer, CommandCode::LibraryFailed, libraryResultText(result));
}

}  // namespace

void Hub4e::getDevInfo(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    RvHub4eDeviceInfo info{};
    RvDipStatus dip;
    int result = withLibrary([&] { return get_device_info(m_cfg.handle, &info); });
    if (result == kRvOk) {
        result = withLibrary([&] { return get_dip_status(m_cfg.handle, &dip); });
    }
    if (result != kRvOk) {
        return refuse(answer, CommandCode::LibraryFailed, libraryResultText(result));
    }
    rv::BoxIdentity identity;
    identity.com = info.com;
    identity.mac = macText(info);
    identity.model = boundedText(info.model);
    if (identity.model.empty()) identity.model = m_cfg.model;
    identity.networkCard = boundedText(info.networkCard);
    identity.serial = boundedText(info.serial);
    identity.version = boundedText(info.version);
    identity.dip = {dip.program, dip.sel2, dip.sel1, dip.sel0};
    answer.body = identityBody(identity);
}

void Hub4e::getChannelsConfig(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    rv::BoxConfig config;
    if (readChannels<RvCanChannelConfig>(m_cfg.handle, m_cfg.canCount, &get_can_config, "CAN",
                                         config.can, answer) &&
        readChannels<RvLinChannelConfig>(m_cfg.handle, m_cfg.linCount, &get_lin_config, "LIN",
                                         config.lin, answer) &&
        readChannels<RvEthChannelConfig>(m_cfg.handle, m_cfg.ethCount, &get_eth_config, "Ethernet",
                                         config.eth, answer)) {
        answer.body = configBody(config);
    }
}

void Hub4e::setChannelsConfig(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    const auto config = configOf(document, answer);
    if (!config) return;
    if (writeChannels(m_cfg.handle, m_cfg.canCount, &set_can_config, "CAN", config->can, answer) &&
        writeChannels(m_cfg.handle, m_cfg.linCount, &set_lin_config, "LIN", config->lin, answer) &&
        writeChannels(m_cfg.handle, m_cfg.ethCount, &set_eth_config, "Ethernet", config->eth,
                      answer)) {
        syncDevice(m_cfg.handle, answer);
    }
}

void Hub4e::getChannelsCanConfig(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    rv::BoxConfig config;
    if (readChannels<RvCanChannelConfig>(m_cfg.handle, m_cfg.canCount, &get_can_config, "CAN",
                                         config.can, answer)) {
        answer.body = configBody(config);
    }
}

void Hub4e::setChannelsCanConfig(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    const auto config = configOf(document, answer);
    if (!config) return;
    (void)writeChannels(m_cfg.handle, m_cfg.canCount, &set_can_config, "CAN", config->can, answer);
}

void Hub4e::getChannelsEthConfig(const Json& /*document*/, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    rv::BoxConfig config;
    if (readChannels<RvEthChannelConfig>(m_cfg.handle, m_cfg.ethCount, &get_eth_config, "Ethernet",
                                         config.eth, answer)) {
        answer.body = configBody(config);
    }
}

void Hub4e::setChannelsEthConfig(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    const auto config = configOf(document, answer);
    if (!config) return;
    (void)writeChannels(m_cfg.handle, m_cfg.ethCount, &set_eth_config, "Ethernet", config->eth,
                        answer);
}

void Hub4e::setChannelsLinConfig(const Json& document, RespondCmdMsg& answer) {
    if (!requireConnected(answer)) return;
    const auto config = configOf(document, answer);
    if (!config) return;
    if (writeChannels(m_cfg.handle, m_cfg.linCount, &set_lin_config, "LIN", config->lin, answer)) {
        syncDevice(m_cfg.handle, answer);
    }
}

}  // namespace RV::BoxDev
