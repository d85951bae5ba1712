#pragma once

#include <string_view>

#include "common/Diagnostics.h"
#include "ldf/LdfModel.h"

namespace quill::dbjson::ldf {

// Reads a whole LIN description file (UTF-8): LIN 1.3 to 2.2, ISO 17987 and J2602. Unknown
// settings and sections are left out with a warning; any other damage fails, and the model is
// then of no use. The model points into the text.
[[nodiscard]] Model readLdf(std::string_view text, Diagnostics& diagnostics);

}  // namespace quill::dbjson::ldf
