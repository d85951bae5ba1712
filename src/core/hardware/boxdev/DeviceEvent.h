#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/hardware/boxdev/BoxConfig.h"

namespace RV::BoxDev {

enum class DeviceEventKind : uint32_t { New = 0, Lost = 1, DipChanged = 2, BusNotice = 3 };

// What happened to a device; shared by all that hear of it.
struct DeviceEvent {
    DeviceEventKind kind = DeviceEventKind::New;
    std::string name;
    std::string deviceId;
    std::string message;
    rv::DipState dip;  // valid for DipChanged
};
using DeviceEventFn =
    std::function<void(const std::shared_ptr<DeviceEvent>& event, const std::string& deviceId)>;

}  // namespace RV::BoxDev
