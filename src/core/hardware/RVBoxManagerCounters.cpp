#include <algorithm>
#include <array>
#include <utility>

#include "core/hardware/RVBoxManager.h"
#include "core/hardware/RVBoxManagerImpl.h"

// What the road of the frames counts, from the boxes to the dispatch thread.
namespace rv {
namespace {

using RV::BoxDev::ChannelTraffic;
using RV::BoxDev::DeviceTraffic;

constexpr std::array<std::pair<ChannelType, FrameType>, 4> kBuses = {
    {{ChannelType::Can, FrameType::Can},
     {ChannelType::Lin, FrameType::Lin},
     {ChannelType::Ethernet, FrameType::Ethernet},
     {ChannelType::FlexRay, FrameType::FlexRay}}};
constexpr double kFlexRayBitRate = 10e6;

struct BitRatePair {
    double nominal = 0;
    double data = 0;
};

template <class Settings>
const Settings* settingsOf(const std::vector<Settings>& all, int channel) {
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Settings& one) { return one.channel == channel; });
    return found == all.end() ? nullptr : &*found;
}

// Zeros where the configuration does not tell.
BitRatePair ratesOf(const BoxConfig& config, FrameType type, int channel) {
    if (type == FrameType::FlexRay) return {kFlexRayBitRate, 0};
    if (type == FrameType::Can) {
        const auto* can = settingsOf(config.can, channel);
        if (can != nullptr) {
            return {static_cast<double>(can->bitrate), static_cast<double>(can->dataBitrate)};
        }
    } else if (type == FrameType::Lin) {
        const auto* lin = settingsOf(config.lin, channel);
        if (lin != nullptr) return {static_cast<double>(lin->baudrate), 0};
    } else if (type == FrameType::Ethernet) {
        const auto* eth = settingsOf(config.eth, channel);
        if (eth != nullptr) return {eth->speed * 1e6, 0};
    }
    return {};
}

double loadPercent(const ChannelTraffic& traffic, BitRatePair rates) {
    double load = 0;
    if (rates.nominal > 0) load += static_cast<double>(traffic.nominalPerSecond) / rates.nominal;
    if (rates.data > 0) load += static_cast<double>(traffic.dataPerSecond) / rates.data;
    return 100 * load;
}

std::vector<ChannelCounters> channelCounters(const ListedDevice& entry,
                                             const DeviceTraffic& traffic,
                                             const BoxConfig& config) {
    std::vector<ChannelCounters> result;
    for (const auto& [kind, type] : kBuses) {
        const auto channels = entry.channels.find(kind);
        if (channels == entry.channels.end()) continue;
        for (const auto& [index, enabled] : channels->second) {
            ChannelCounters& counters = result.emplace_back();
            counters.bus = channelKindText(kind);
            counters.channel = index;
            counters.name = channelName(entry, kind, index);
            const auto seen =
                std::find_if(traffic.channels.begin(), traffic.channels.end(),
                             [&, frameType = type, channel = index](const ChannelTraffic& one) {
                                 return one.type == frameType && one.channel == channel;
                             });
            if (seen == traffic.channels.end()) continue;
            counters.received = seen->received;
            counters.busLoad = loadPercent(*seen, ratesOf(config, type, index));
        }
    }
    return result;
}

}  // namespace

RoadCounters RVBoxManager::counters() const {
    RoadCounters counters;
    std::vector<ListedDevice> devices;
    std::vector<DeviceHub::Device> leaving;
    {
        const std::lock_guard lock(m_impl->mutex);
        counters.library = m_impl->goneLibrary;
        counters.readers = m_impl->goneReaders;
        devices = m_impl->devices;
        leaving = m_impl->leaving;
    }
    for (const DeviceHub::Device& device : leaving) {
        counters.library += device->libraryCounters();
        counters.readers += device->readerCounters();
    }
    for (const ListedDevice& entry : devices) {
        DeviceCounters& device = counters.devices.emplace_back();
        device.id = entry.id;
        device.name = entry.name;
        device.library = entry.device->libraryCounters();
        device.readers = entry.device->readerCounters();
        const DeviceTraffic traffic = entry.device->traffic();
        device.clockOffsetUs = traffic.clockOffsetNs / 1000;
        const auto config = m_impl->configManager->config(entry.id);
        device.channels = channelCounters(entry, traffic, config.value_or(BoxConfig()));
        counters.library += device.library;
        counters.readers += device.readers;
    }
    counters.resort = m_impl->resortBuffer->counters();
    counters.dispatch = m_impl->dispatcher->counters();
    counters.backlogAgeUs = m_impl->dispatcher->backlogAgeUs();
    return counters;
}

}  // namespace rv
