#pragma once

#include <cstdint>
#include <string>

#include "simcore/records.h"

namespace simcore::engine {

struct DeviceIdentity;

// A fault that concerns calls of the imported functions, which the engine does not know.
struct CallFault {
    std::string box;  // empty: every box
    std::string function;
    int code = kRvOk;  // not kRvOk: the call fails with it
    int delayMs = 0;
    int times = 1;  // below 0: until further notice
};

// What the engine reports. Called with the engine's lock held: take note and return.
class EventSink {
public:
    virtual ~EventSink() = default;
    virtual void deviceState(int32_t handle, RvDeviceState state) = 0;
    virtual void connectionEvent(int32_t handle, RvConnectionEventType type, int32_t channel,
                                 int32_t value) = 0;
    virtual void dipChanged(int32_t handle, const RvDipStatus& status) = 0;
    virtual void deviceFound(const DeviceIdentity& device) = 0;
    virtual void deviceChanged(const DeviceIdentity& device) = 0;
    virtual void deviceLost(const DeviceIdentity& device) = 0;
    virtual void callFault(const CallFault& fault) = 0;
    virtual void log(int level, const std::string& text) = 0;
};

}  // namespace simcore::engine
