#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "core/hardware/boxdev/DeviceCfg.h"
#include "simcore/records.h"

namespace RV::BoxDev {

// All network boxes that the device library finds now and that are fit for use, in its order.
// Empty when the scan fails.
[[nodiscard]] std::vector<std::shared_ptr<Hub4eCfg>> scanHub4eBoxes();

[[nodiscard]] std::string macText(const RvHub4eDeviceInfo& info);

// Text of a fixed field up to its terminating zero, or to its end when there is none.
template <size_t Size>
[[nodiscard]] std::string boundedText(const char (&field)[Size]) {
    return {field, strnlen(field, Size)};
}

}  // namespace RV::BoxDev
