#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/hardware/RVBoxManager.h"

namespace scripts {

// Both members are 0: there is one box model, so all devices and that model are the same set.
enum DeviceType : uint8_t { All = 0, RV_Hub4e = 0 };

// Six pairs of hexadecimal digits separated by colons or hyphens.
inline constexpr const char* kMacPattern = "^([0-9a-fA-F]{2}(:|-)){5}[0-9a-fA-F]{2}$";
[[nodiscard]] bool isMacAddress(const std::string& text);

using DipData = rv::DipState;

struct RVBoxDeviceInfo {
    int32_t com = 0;  // as the box reports it
    std::string mac;
    std::string model;
    std::string networkCard;
    std::string sn;
    DipData dip;

    bool operator==(const RVBoxDeviceInfo&) const = default;
};

// The settings of a box's channels as scripts hold them: shared elements, so that changing one
// through the script's view changes the record. Copies are independent.
template <class Settings>
class ChannelList {
public:
    using Element = std::shared_ptr<Settings>;

    ChannelList() = default;
    explicit ChannelList(const std::vector<Settings>& from) {
        for (const Settings& settings : from)
            m_items.push_back(std::make_shared<Settings>(settings));
    }
    ChannelList(const ChannelList& other) : ChannelList(other.values()) {}
    ChannelList(ChannelList&&) noexcept = default;
    ChannelList& operator=(const ChannelList& other) {
        if (this != &other) *this = ChannelList(other.values());
        return *this;
    }
    ChannelList& operator=(ChannelList&&) noexcept = default;
    ~ChannelList() = default;

    [[nodiscard]] const std::vector<Element>& items() const { return m_items; }
    [[nodiscard]] std::vector<Settings> values() const {
        std::vector<Settings> all;
        for (const Element& item : m_items) all.push_back(*item);
        return all;
    }
    bool operator==(const ChannelList& other) const { return values() == other.values(); }

private:
    std::vector<Element> m_items;
};

struct DeviceConfig {
    ChannelList<rv::CanChannelSettings> can;
    ChannelList<rv::LinChannelSettings> lin;
    ChannelList<rv::EthChannelSettings> eth;

    DeviceConfig() = default;
    explicit DeviceConfig(const rv::BoxConfig& from)
        : can(from.can), lin(from.lin), eth(from.eth) {}
    [[nodiscard]] rv::BoxConfig toBoxConfig() const {
        return {can.values(), lin.values(), eth.values()};
    }
    bool operator==(const DeviceConfig&) const = default;
};

// A value that addresses one box by its MAC address.
struct DeviceHandle {
    DeviceType type = All;
    RVBoxDeviceInfo deviceInfo;
    DeviceConfig config;

    bool operator==(const DeviceHandle&) const = default;
};

[[nodiscard]] std::string toText(const DipData& dip);
[[nodiscard]] std::string toText(const RVBoxDeviceInfo& info);
[[nodiscard]] std::string toText(const rv::CanChannelSettings& settings);
[[nodiscard]] std::string toText(const rv::LinChannelSettings& settings);
[[nodiscard]] std::string toText(const rv::EthChannelSettings& settings);
[[nodiscard]] std::string toText(const DeviceConfig& config);
// `status` is the box's connection status.
[[nodiscard]] std::string toText(const DeviceHandle& handle, const std::string& status);

}  // namespace scripts
