#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quill::dbjson::dbc {

// Whole number of at most 32 bits; empty when it is none.
[[nodiscard]] std::optional<uint32_t> toUnsigned(std::string_view text);

// Nearest double of a decimal number with any count of digits; empty text is 0. What exceeds a
// double is infinite, or 0 when too small. Empty when it is no number.
[[nodiscard]] std::optional<double> toDouble(std::string_view text);

}  // namespace quill::dbjson::dbc
