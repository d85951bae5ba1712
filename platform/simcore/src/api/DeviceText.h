#pragma once

#include <algorithm>
#include <cstring>
#include <string>

#include "engine/Box.h"
#include "simcore/founder.h"

namespace simcore::api {

// Copies a text into a field of a record; what does not fit is cut and the zero stays.
template <size_t N>
void copyText(char (&field)[N], const std::string& text) {
    std::memset(field, 0, N);
    std::memcpy(field, text.data(), std::min(text.size(), N - 1));
}

template <size_t N>
[[nodiscard]] std::string textOf(const char (&field)[N]) {
    return std::string(field, std::find(field, field + N, '\0'));
}

[[nodiscard]] RvDeviceDesc describe(const engine::DeviceIdentity& device);
// Takes over what the descriptor says; name and channel counts stay.
void applyDescription(const RvDeviceDesc& desc, engine::DeviceIdentity& device);

}  // namespace simcore::api
