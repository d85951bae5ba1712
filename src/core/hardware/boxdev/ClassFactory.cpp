#include "core/hardware/boxdev/ClassFactory.h"

#include <cstring>

#include "core/hardware/boxdev/Hub4e.h"
#include "core/hardware/boxdev/Hub4eScan.h"
#include "core/hardware/boxdev/UniversalBusDevice.h"
#include "simcore/founder.h"

namespace RV::BoxDev {
namespace {

// Model text of a device that the founder reports; empty for types that are skipped. Network boxes
// come by the scan route, which knows their handles.
std::string modelOf(const RvDeviceInfo& info) {
    // The founder reports its CAN FD devices as USB devices with a model of their own.
    if (std::strcmp(info.getDeviceModel(), "RV-CANFD2") == 0) return "RV-CANFD2";
    switch (info.getType()) {
        case RvDeviceTypeUsbCan:
            return "USB-CAN";
        case RvDeviceTypeEtas:
            return "ETAS";
        default:
            return {};
    }
}

}  // namespace

std::vector<std::shared_ptr<DeviceCfg>> Hub4eFactory::find() {
    const auto boxes = scanHub4eBoxes();
    return {boxes.begin(), boxes.end()};
}

std::string Hub4eFactory::idOf(const DeviceCfg& cfg) const {
    return static_cast<const Hub4eCfg&>(cfg).mac;
}

std::string Hub4eFactory::announcement(const DeviceCfg& cfg) const {
    return "[New Device] [sn]:" + cfg.serial + " [mac]:" + idOf(cfg);
}

std::shared_ptr<DeviceInterface> Hub4eFactory::make(const DeviceCfg& cfg,
                                                    DeviceEventFn onEvent) const {
    return std::make_shared<Hub4e>(static_cast<const Hub4eCfg&>(cfg), std::move(onEvent));
}

std::vector<std::shared_ptr<DeviceCfg>> UniversalBusDeviceFactory::find() {
    std::vector<std::shared_ptr<DeviceCfg>> found;
    for (const RvDeviceInfo& info : RvDeviceFounder::instance()->getDeviceInfos()) {
        const std::string model = modelOf(info);
        if (model.empty()) continue;
        auto cfg = std::make_shared<UniversalBusCfg>();
        cfg->type = info.getType();
        cfg->model = model;
        cfg->serial = info.getSnrStr();
        cfg->version = info.getVersion();
        cfg->name = model + " " + cfg->serial;
        cfg->canCount = info.getCanCount();
        cfg->path = info.getDevicePath();
        if (!cfg->serial.empty()) found.push_back(std::move(cfg));
    }
    return found;
}

std::string UniversalBusDeviceFactory::idOf(const DeviceCfg& cfg) const { return cfg.serial; }

std::string UniversalBusDeviceFactory::announcement(const DeviceCfg& cfg) const {
    return "[New Device] [sn]:" + cfg.serial;
}

std::shared_ptr<DeviceInterface> UniversalBusDeviceFactory::make(const DeviceCfg& cfg,
                                                                 DeviceEventFn onEvent) const {
    return std::make_shared<UniversalBusDevice>(static_cast<const UniversalBusCfg&>(cfg), onEvent);
}

}  // namespace RV::BoxDev
