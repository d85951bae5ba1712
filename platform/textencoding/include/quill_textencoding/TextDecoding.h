#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quill::text {

enum class TextEncoding { Utf8, Utf16LittleEndian, Utf16BigEndian, Windows1252, Gb18030 };

[[nodiscard]] bool isValidUtf8(std::string_view bytes);

// Guess for bytes that declare no encoding: byte-order mark, else UTF-8 when valid (or damaged in
// few places), else the code page of the writing computer. Chinese text is told from Western text
// by its pairs of high bytes, most of which name one of the 3755 commonest characters (lead byte
// B0 to D7, second byte from A1), while Western text has single high bytes among ASCII letters.
[[nodiscard]] TextEncoding guessEncoding(std::string_view bytes);

// The text as valid UTF-8 without byte-order mark; what fits no character becomes U+FFFD.
[[nodiscard]] std::string decodeText(std::string bytes, TextEncoding encoding);
[[nodiscard]] std::string decodeText(std::string bytes);

// Why these bytes can be no text file at all (none, or zero bytes among them); empty when they can.
[[nodiscard]] std::optional<std::string> refuseAsText(std::string_view bytes);

}  // namespace quill::text
