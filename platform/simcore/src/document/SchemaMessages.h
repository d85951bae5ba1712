#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace simcore::document {

// "key: what is wrong" for a mistake as the checker reports it: where it stands, as "<root>" and
// names or positions in brackets, and the checker's own text, of which the kind of mistake is
// taken. What was expected comes from the schema.
[[nodiscard]] std::string schemaMessage(const nlohmann::json& schema,
                                        const nlohmann::json& document,
                                        const std::vector<std::string>& context,
                                        const std::string& description);

// True for a part that fits none or several of the forms that exclude each other.
[[nodiscard]] bool isChoiceMistake(const std::string& description);

}  // namespace simcore::document
