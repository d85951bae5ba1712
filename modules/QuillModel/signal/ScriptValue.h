#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>

#include "signal/SignalLayout.h"

// Setting a signal of a frame to a number that a script gives.
namespace Model::codec {

// The script's number is the raw value itself, truncated toward zero: below 2^63 as a signed
// integer (-1.0 gives all ones), up to below 2^64 as an unsigned one, anything else, not-a-number
// included, 0x8000000000000000.
[[nodiscard]] uint64_t rawFromScriptValue(double value) noexcept;

// "Data: [0X0, 0X1F]"
[[nodiscard]] std::string payloadText(std::span<const uint8_t> payload);

// The two lines that a script's user sees on standard output around the change, without line end:
// "rawValueToByte before:" value payload, the value with six significant digits, and
// "rawValueToByte after:" result payload, the result "1", "0" or, without one, nothing.
[[nodiscard]] std::string beforeText(double value, std::span<const uint8_t> payload);
[[nodiscard]] std::string afterText(std::optional<bool> result, std::span<const uint8_t> payload);

// Whether the second line tells the writer's result: DBC databases do, ARXML databases do not.
enum class ResultShown : uint8_t { No, Yes };

// Writes the first line, the signal and the second line, in this order; the result is that of
// rawValueToByte. Throws std::out_of_range as rawValueToByte does, after the first line.
bool setSignalFromScriptValue(std::span<uint8_t> payload, const SignalLayout& layout, double value,
                              ResultShown resultShown, std::ostream& out);

}  // namespace Model::codec
