#pragma once

#include <string_view>

#include "common/Diagnostics.h"
#include "dbc/DbcModel.h"

namespace quill::dbjson::dbc {

// Reads a whole DBC text (UTF-8). Damaged and unknown statements are left out with a warning; a
// text without a DBC statement or one that ends inside a statement fails, and the model is then
// of no use. The model points into the text.
[[nodiscard]] Model readDbc(std::string_view text, Diagnostics& diagnostics);

}  // namespace quill::dbjson::dbc
