#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/hardware/boxdev/DeviceEvent.h"
#include "core/hardware/boxdev/DeviceInterface.h"

namespace rv {

// The hardware layer's shared registry of devices, which publishes device events by topic name.
// Lives until the process ends.
class DeviceHub {
public:
    using Device = std::shared_ptr<RV::BoxDev::DeviceInterface>;
    using Handler = RV::BoxDev::DeviceEventFn;

    static constexpr const char* kDeviceEventTopic = "HardwareDeviceEvent";

    static DeviceHub& instance();

    [[nodiscard]] std::vector<Device> devices() const;
    [[nodiscard]] Device find(const std::string& deviceId) const;

    // Identifier of the subscription, above 0; 0 for a topic that nobody publishes.
    [[nodiscard]] int subscribe(const std::string& topic, Handler handler);
    // The handler is not called any more once this has returned.
    void unsubscribe(const std::string& topic, int subscription);

    // Absolute path of the application's data directory, UTF-8.
    void setDataDirectory(std::string path);
    [[nodiscard]] std::string dataDirectory() const;

private:
    DeviceHub() = default;

    mutable std::mutex m_mutex;
    std::string m_dataDirectory;  // guarded by m_mutex
};

}  // namespace rv
