#include "core/hardware/RVBoxManager.h"
#include "core/hardware/RVBoxManagerImpl.h"

// Channels by name, as the channel tables of the known boxes give them.
namespace rv {
namespace {

std::string shortName(ChannelType type, int index) {
    return channelKindText(type) + std::to_string(index + 1);
}

}  // namespace

std::string channelName(const ListedDevice& device, ChannelType type, int index) {
    return device.name + "." + shortName(type, index);
}

const char* channelKindText(ChannelType type) {
    switch (type) {
        case ChannelType::Can:
            return "CAN";
        case ChannelType::Lin:
            return "LIN";
        case ChannelType::Ethernet:
            return "ETH";
        case ChannelType::FlexRay:
            return "FLEXRAY";
    }
    return "";
}

std::vector<std::string> RVBoxManager::channelNames(const QString& deviceId) const {
    const std::string id = deviceId.toStdString();
    std::vector<std::string> names;
    const std::lock_guard lock(m_impl->mutex);
    for (const ListedDevice& entry : m_impl->devices) {
        if (entry.id != id) continue;
        for (const ChannelType type :
             {ChannelType::Can, ChannelType::Lin, ChannelType::Ethernet, ChannelType::FlexRay}) {
            const auto channels = entry.channels.find(type);
            if (channels == entry.channels.end()) continue;
            for (const auto& [index, enabled] : channels->second) {
                names.push_back(channelName(entry, type, index));
            }
        }
    }
    return names;
}

std::optional<std::pair<ChannelType, int>> RVBoxManager::findChannel(
    const std::string& name) const {
    const std::lock_guard lock(m_impl->mutex);
    for (const ListedDevice& entry : m_impl->devices) {
        for (const auto& [type, channels] : entry.channels) {
            for (const auto& [index, enabled] : channels) {
                const std::string channel = shortName(type, index);
                if (name == channel || name == entry.name + "." + channel) {
                    return std::pair{type, index};
                }
            }
        }
    }
    return std::nullopt;
}

}  // namespace rv
