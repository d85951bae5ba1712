#include "core/hardware/DeviceHub.h"

#include "core/hardware/boxdev/DeviceManager.h"

namespace rv {

using RV::BoxDev::DeviceManager;

DeviceHub& DeviceHub::instance() {
    static auto* hub = new DeviceHub;
    return *hub;
}

std::vector<DeviceHub::Device> DeviceHub::devices() const {
    return DeviceManager::instance().devices();
}

DeviceHub::Device DeviceHub::find(const std::string& deviceId) const {
    for (Device& device : devices()) {
        if (device->id() == deviceId) return std::move(device);
    }
    return nullptr;
}

int DeviceHub::subscribe(const std::string& topic, Handler handler) {
    if (topic != kDeviceEventTopic) return 0;
    return DeviceManager::instance().addListener(std::move(handler));
}

void DeviceHub::unsubscribe(const std::string& topic, int subscription) {
    if (topic == kDeviceEventTopic) DeviceManager::instance().removeListener(subscription);
}

void DeviceHub::setDataDirectory(std::string path) {
    const std::lock_guard lock(m_mutex);
    m_dataDirectory = std::move(path);
}

std::string DeviceHub::dataDirectory() const {
    const std::lock_guard lock(m_mutex);
    return m_dataDirectory;
}

}  // namespace rv
