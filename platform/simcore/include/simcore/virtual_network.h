#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "simcore/export.h"
#include "simcore/founder.h"
#include "simcore/records.h"

// Control of the virtual box network: what the open device library offers beside the imported
// functions, for tests and tools. Boxes are named by their "name" in the network document.
namespace simcore {

// Replaces the network of this process. `document` is JSON text or the path of a JSON file. False
// with a reason that names the file and the key; the old network then stays. Handles of the old
// network are dead afterwards.
SIMCORE_API bool loadNetwork(const std::string& document, std::string& reason);

// Time by hand: with a manual clock nothing moves until advance() is called, and everything due in
// the given time (sources, schedules, faults) has happened when it returns. The wall clock of the
// boxes starts at startNs since 1970. Frames are stamped with this clock.
SIMCORE_API void useManualClock(uint64_t startNs);
SIMCORE_API void useSystemClock();
SIMCORE_API void advance(uint64_t ns);

// Faults. Each answers false when there is no such box or channel.
SIMCORE_API bool unplug(const std::string& box);
SIMCORE_API bool plug(const std::string& box);
SIMCORE_API bool setBusStatus(const std::string& box, int32_t channel, int32_t status);
SIMCORE_API bool raiseBusTimeout(const std::string& box, int32_t channel);
SIMCORE_API bool setDipStatus(const std::string& box, const RvDipStatus& status);
SIMCORE_API bool setClock(const std::string& box, int64_t offsetNs, double driftPpm);

// The next `times` transmissions of a CAN channel, single and cyclic, are refused; below 0: all
// until 0 is set.
SIMCORE_API bool refuseSends(const std::string& box, int32_t channel, int times);

// What a device says about itself, and another description in its place: founder observers hear of
// the change. Channel counts stay as they are.
SIMCORE_API bool describeDevice(const std::string& box, RvDeviceDesc& desc);
SIMCORE_API bool changeDevice(const std::string& box, const RvDeviceDesc& desc);

// The next `times` calls of an imported function fail with `code` (times below 0: every call until
// 0 is set), or take `delayMs` longer. `function` is the function's name, such as
// "get_device_info"; an empty box means every box.
SIMCORE_API void failCalls(const std::string& box, const std::string& function, int code,
                           int times);
SIMCORE_API void slowCalls(const std::string& box, const std::string& function, int delayMs,
                           int times);

// Puts a frame on a named bus as if a node outside every box had sent it.
SIMCORE_API bool injectCan(const std::string& bus, const RvCanFrame& frame);
SIMCORE_API bool injectLin(const std::string& bus, const RvLinFrame& frame);
SIMCORE_API bool injectEthernet(const std::string& bus, const RvEthFrame& frame);
SIMCORE_API bool injectFlexRay(const std::string& bus, const RvFlexRayFrame& frame);

// Share of the time that the bus was occupied over the last second, 0.0 to 1.0; negative for an
// unknown bus or one without a bit rate.
SIMCORE_API double busLoad(const std::string& bus);

// Number of calls of an imported function so far, for tests that must know what was not called.
SIMCORE_API uint64_t callCount(const std::string& function);

}  // namespace simcore
