// From the text of a file to its JSON, for the program, its tests and its benchmark.
#pragma once

#include <string_view>

#include "common/Diagnostics.h"
#include "common/JsonWriter.h"

namespace quill::arxml {

enum class Format { kArxml, kFibex };

// Converts a whole UTF-8 text. Errors and warnings end in the diagnostics, at the byte they are
// about; after an error what was written is of no use.
void convert(Format format, std::string_view text, dbjson::Diagnostics& diagnostics,
             dbjson::JsonWriter& json);

}  // namespace quill::arxml
