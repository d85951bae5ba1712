#pragma once

namespace simcore::document {

// Text of network.schema.json, built in.
[[nodiscard]] const char* networkSchemaText();

}  // namespace simcore::document
