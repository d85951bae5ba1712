// Reads a whole AUTOSAR description into the model.
#pragma once

#include <optional>

#include "arxml/Document.h"
#include "arxml/Model.h"

namespace quill::arxml {

// Reads the parsed document of AUTOSAR 3 or 4. The database points into the document. A reference
// without which a frame would have no layout and leads nowhere is an error; lesser ones end in
// Database::warnings.
[[nodiscard]] std::optional<ReadError> readArxml(const Document& document, Database& out);

}  // namespace quill::arxml
