#pragma once

#include <string>

#include "pysdk/py_extension/device_records.h"

namespace scripts {

// "connected", "disconnected" or "unknown"; never creates the entry.
[[nodiscard]] std::string connectionStatus(const DeviceHandle& handle);

// Raises ValueError when the handle's MAC address is malformed.
void checkAddress(const DeviceHandle& handle);

}  // namespace scripts
