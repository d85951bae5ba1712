#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace simcore::document {

// Holds a document against the network schema. Empty when it fits, else "key: what is wrong" of the
// mistake that stands highest, the first of several.
[[nodiscard]] std::string checkAgainstSchema(const nlohmann::json& document);

}  // namespace simcore::document
