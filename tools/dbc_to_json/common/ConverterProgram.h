#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "common/Diagnostics.h"
#include "common/JsonWriter.h"

namespace quill::dbjson {

// Reads the text, reports through the diagnostics and writes the whole JSON document. After
// Diagnostics::fail() what was written is thrown away.
using ConvertFunction = std::function<void(std::string_view text, Diagnostics&, JsonWriter&)>;

enum class InputText {
    Guessed,  // the format declares no encoding: the text arrives as valid UTF-8
    AsIs,     // the format declares its encoding itself: the bytes arrive untouched
};

// Converts one file into one JSON file (UTF-8 paths) and returns the status to exit with: 0, or 1
// with "path:line:column: message" on standard error and the output as it was before.
[[nodiscard]] int convertFile(const std::string& inputPath, const std::string& outputPath,
                              InputText inputText, const ConvertFunction& convert);

}  // namespace quill::dbjson
