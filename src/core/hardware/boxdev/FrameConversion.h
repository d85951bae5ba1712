#pragma once

#include "core/frame/Frame.h"
#include "core/hardware/boxdev/TransmitTypes.h"
#include "simcore/records.h"

namespace RV::BoxDev {

// Frames of the device library as frames of the system; lengths beyond a record's room are cut.
[[nodiscard]] rv::FrameHolder fromLibrary(const RvCanFrame& frame);
[[nodiscard]] rv::FrameHolder fromLibrary(const RvLinFrame& frame);
[[nodiscard]] rv::FrameHolder fromLibrary(const RvEthFrame& frame);
[[nodiscard]] rv::FrameHolder fromLibrary(const RvFlexRayFrame& frame);

[[nodiscard]] RvCanFrame toLibrary(const rv::CanSendFrame& frame);

}  // namespace RV::BoxDev
