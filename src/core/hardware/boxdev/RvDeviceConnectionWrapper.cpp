#include "core/hardware/boxdev/RvDeviceConnectionWrapper.h"

#include <algorithm>
#include <iterator>

#include "core/hardware/boxdev/UniversalBusDevice.h"

namespace RV::BoxDev {

RvDeviceConnectionWrapper::RvDeviceConnectionWrapper(RvConnectionType type, std::string name,
                                                     std::string deviceId, DeviceEventFn onEvent,
                                                     UniversalBusDevice& device)
    : m_name(std::move(name)),
      m_deviceId(std::move(deviceId)),
      m_onEvent(std::move(onEvent)),
      m_device(device),
      m_connection(RvDeviceConnection::create(type)) {
    RvDeviceFounder::instance()->addObserver(this);
}

RvDeviceConnectionWrapper::~RvDeviceConnectionWrapper() {
    RvDeviceFounder::instance()->removeObserver(this);
    close();
    if (m_connection != nullptr) RvDeviceConnection::destroy(m_connection);
}

bool RvDeviceConnectionWrapper::open(const std::string& path) {
    if (m_connection == nullptr || !m_connection->open(path.c_str(), this)) return false;
    const std::lock_guard lock(m_mutex);
    m_active = true;
    return true;
}

void RvDeviceConnectionWrapper::close() {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_active) return;
        m_active = false;
    }
    m_connection->close();
}

void RvDeviceConnectionWrapper::onDeviceFound(const RvDeviceDesc& /*desc*/) {
    // Discovery lists new devices itself; a wrapper belongs to one that is known already.
}

void RvDeviceConnectionWrapper::onDeviceChanged(const RvDeviceDesc& desc) {
    const std::lock_guard lock(m_mutex);
    if (!m_active) return;
    const bool inUse = std::any_of(std::begin(desc.status), std::end(desc.status),
                                   [](uint8_t status) { return status < 255; });
    const char* identifier = desc.networkBox == 0 && inUse ? desc.serial : desc.mac;
    if (m_deviceId != identifier) m_device.requestRefresh();
}

void RvDeviceConnectionWrapper::onDeviceLost(const RvDeviceDesc& desc) {
    const std::lock_guard lock(m_mutex);
    if (!m_active) return;
    // The founder tells every observer of every device; only the own one counts.
    if (m_deviceId != desc.serial && m_deviceId != desc.mac) return;
    auto event = std::make_shared<DeviceEvent>();
    event->kind = DeviceEventKind::Lost;
    event->name = m_name;
    event->deviceId = m_deviceId;
    event->message = "device lossed...";
    if (m_onEvent) m_onEvent(event, m_deviceId);
}

void RvDeviceConnectionWrapper::onConnectionEvent(RvConnectionEventType type, int32_t channel,
                                                  int32_t value) {
    const std::lock_guard lock(m_mutex);
    if (m_active) m_device.onConnectionEvent(type, channel, value);
}

}  // namespace RV::BoxDev
