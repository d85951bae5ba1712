#pragma once

#include <optional>
#include <string>

#include "engine/NetworkPlan.h"

namespace simcore::document {

// Reads a network document: JSON text when it begins with "{", the path of a JSON file otherwise.
// `label` names a text in messages, a file is named by its path; `origin` receives which it was.
// Nothing with "origin: key: message" in `reason` when it is refused.
[[nodiscard]] std::optional<engine::NetworkPlan> readPlan(const std::string& document,
                                                          const std::string& label,
                                                          std::string& origin, std::string& reason);

// The network of this process: the document that SIMCORE_NETWORK holds or names, else the built-in
// network, onto whose buses SIMCORE_REPLAY plays a log.
[[nodiscard]] std::optional<engine::NetworkPlan> planFromEnvironment(std::string& origin,
                                                                     std::string& reason);

// Text of the built-in network: one box whose first two channels of each kind share a bus.
[[nodiscard]] const char* builtInNetwork();

}  // namespace simcore::document
