#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "core/hardware/boxdev/BoxConfig.h"

namespace RV::BoxDev {

// The configuration documents and answers: lists "can_channels", "lin_channels" and "eth_channels"
// with one object a channel: "channel", "enabled" and the settings under the names of the records'
// members ("bitrate", "data_bitrate", "sample_point" in percent, ...). A list may be absent.
[[nodiscard]] std::string buildConfigDocument(const std::string& cmd, const std::string& deviceId,
                                              const rv::BoxConfig& config);
[[nodiscard]] std::string configBody(const rv::BoxConfig& config);
// Empty with a reason that names the key when one is missing, of the wrong kind or out of range.
[[nodiscard]] std::optional<rv::BoxConfig> parseConfig(const nlohmann::json& document,
                                                       std::string& reason);

// Identity answer of "GetDevInfo".
[[nodiscard]] std::string identityBody(const rv::BoxIdentity& identity);
[[nodiscard]] std::optional<rv::BoxIdentity> parseIdentity(const std::string& body,
                                                           std::string& reason);
[[nodiscard]] std::optional<rv::BoxConfig> parseConfigBody(const std::string& body,
                                                           std::string& reason);

}  // namespace RV::BoxDev
