#include "api/DeviceText.h"

#include <cstdio>

namespace simcore::api {

namespace {

constexpr int32_t kNetworkBox = 1;

std::string macText(const std::array<uint8_t, 6>& mac) {
    char text[24];
    std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5]);
    return text;
}

}  // namespace

RvDeviceDesc describe(const engine::DeviceIdentity& device) {
    RvDeviceDesc desc;
    desc.type = static_cast<RvDeviceType>(device.type);
    copyText(desc.model, device.model);
    copyText(desc.path, device.path);
    copyText(desc.version, device.version);
    copyText(desc.buildTime, device.buildTime);
    std::copy(device.snr.begin(), device.snr.end(), desc.snr);
    copyText(desc.serial, device.serial);
    if (device.type == engine::BoxType::hub4e) {
        copyText(desc.mac, macText(device.mac));
        desc.networkBox = kNetworkBox;
    }
    desc.comPort = device.comPort;
    desc.canCount = device.channels[static_cast<size_t>(engine::BusKind::can)];
    desc.linCount = device.channels[static_cast<size_t>(engine::BusKind::lin)];
    std::copy(device.status.begin(), device.status.end(), desc.status);
    return desc;
}

void applyDescription(const RvDeviceDesc& desc, engine::DeviceIdentity& device) {
    device.model = textOf(desc.model);
    device.path = textOf(desc.path);
    device.version = textOf(desc.version);
    device.buildTime = textOf(desc.buildTime);
    std::copy(std::begin(desc.snr), std::end(desc.snr), device.snr.begin());
    device.serial = textOf(desc.serial);
    std::array<unsigned, 6> mac{};
    if (std::sscanf(desc.mac, "%2x:%2x:%2x:%2x:%2x:%2x", &mac[0], &mac[1], &mac[2], &mac[3],
                    &mac[4], &mac[5]) == 6) {
        std::transform(mac.begin(), mac.end(), device.mac.begin(),
                       [](unsigned byte) { return static_cast<uint8_t>(byte); });
    }
    device.comPort = desc.comPort;
    std::copy(std::begin(desc.status), std::end(desc.status), device.status.begin());
}

}  // namespace simcore::api
