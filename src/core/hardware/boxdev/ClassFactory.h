#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/hardware/boxdev/DeviceCfg.h"
#include "core/hardware/boxdev/DeviceEvent.h"
#include "core/hardware/boxdev/DeviceInterface.h"

namespace RV::BoxDev {

// Finds and makes the devices of one concrete class.
class ClassFactory {
public:
    virtual ~ClassFactory() = default;
    // Devices of this class that can be reached now, in the library's order.
    [[nodiscard]] virtual std::vector<std::shared_ptr<DeviceCfg>> find() = 0;
    // Identifier of a found device, by which it is known.
    [[nodiscard]] virtual std::string idOf(const DeviceCfg& cfg) const = 0;
    // Fields of the log line that announces the device.
    [[nodiscard]] virtual std::string announcement(const DeviceCfg& cfg) const = 0;
    [[nodiscard]] virtual std::shared_ptr<DeviceInterface> make(const DeviceCfg& cfg,
                                                                DeviceEventFn onEvent) const = 0;
};

// Scan route: network boxes.
class Hub4eFactory final : public ClassFactory {
public:
    [[nodiscard]] std::vector<std::shared_ptr<DeviceCfg>> find() override;
    [[nodiscard]] std::string idOf(const DeviceCfg& cfg) const override;
    [[nodiscard]] std::string announcement(const DeviceCfg& cfg) const override;
    [[nodiscard]] std::shared_ptr<DeviceInterface> make(const DeviceCfg& cfg,
                                                        DeviceEventFn onEvent) const override;
};

// Founder route: USB and general bus devices.
class UniversalBusDeviceFactory final : public ClassFactory {
public:
    [[nodiscard]] std::vector<std::shared_ptr<DeviceCfg>> find() override;
    [[nodiscard]] std::string idOf(const DeviceCfg& cfg) const override;
    [[nodiscard]] std::string announcement(const DeviceCfg& cfg) const override;
    [[nodiscard]] std::shared_ptr<DeviceInterface> make(const DeviceCfg& cfg,
                                                        DeviceEventFn onEvent) const override;
};

}  // namespace RV::BoxDev
