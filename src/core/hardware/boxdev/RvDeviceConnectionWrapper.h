#pragma once

#include <mutex>
#include <string>

#include "core/hardware/boxdev/DeviceEvent.h"
#include "simcore/founder.h"

namespace RV::BoxDev {

class UniversalBusDevice;

// The one connection of a USB or general bus device. It observes the founder and the connection;
// all callbacks run under its mutex and do nothing while the connection is not active.
class RvDeviceConnectionWrapper final : public RvDeviceFounderObserver,
                                        public RvDeviceConnectionObserver {
public:
    RvDeviceConnectionWrapper(RvConnectionType type, std::string name, std::string deviceId,
                              DeviceEventFn onEvent, UniversalBusDevice& device);
    ~RvDeviceConnectionWrapper() override;
    RvDeviceConnectionWrapper(const RvDeviceConnectionWrapper&) = delete;
    RvDeviceConnectionWrapper& operator=(const RvDeviceConnectionWrapper&) = delete;

    // Opens the connection and makes it active; false when the library refuses.
    [[nodiscard]] bool open(const std::string& path);
    void close();
    [[nodiscard]] RvDeviceConnection* connection() const { return m_connection; }

    void onDeviceFound(const RvDeviceDesc& desc) override;
    void onDeviceChanged(const RvDeviceDesc& desc) override;
    void onDeviceLost(const RvDeviceDesc& desc) override;
    void onConnectionEvent(RvConnectionEventType type, int32_t channel, int32_t value) override;

private:
    std::string m_name;
    std::string m_deviceId;
    bool m_active = false;  // guarded by m_mutex
    std::mutex m_mutex;
    DeviceEventFn m_onEvent;
    UniversalBusDevice& m_device;
    RvDeviceConnection* m_connection;
};

}  // namespace RV::BoxDev
