#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "signal/SignalLayout.h"

// Signals as engineers mean them: signed and floating-point raw values, factor and offset, limits,
// and writing that touches the signal's own bits only. What scripts have always called stays in
// SignalCodec.h and SignalValue.h.
namespace Model::codec {

// A signal with its meaning. Floats are IEEE 754 of 32 or 64 bits.
struct PhysicalLayout {
    SignalLayout bits;
    bool isSigned = false;
    bool isFloat = false;
    double factor = 1;
    double offset = 0;
    // Limits of the physical value; none unless minimum < maximum, so "[0|0]" is none.
    double minimum = 0;
    double maximum = 0;
};

enum class EncodeStatus : uint8_t {
    Ok,
    DoesNotFit,   // the layout lies outside the payload, has no length of 1 to 64, or is a float of
                  // neither 32 nor 64 bits
    Overflow,     // no raw value of this length stands for the value
    OutOfLimits,  // the value is below the minimum or above the maximum
    NotFinite,    // the value or the signal's scaling is infinite or not a number
};

// A short text for logs and error messages, such as "value out of limits".
[[nodiscard]] std::string_view toText(EncodeStatus status) noexcept;

// True when every bit of the signal lies in a payload of `size` bytes and the length is 1 to 64.
[[nodiscard]] bool fits(const SignalLayout& layout, size_t size) noexcept;

// The number that a raw value of this signal stands for, before factor and offset. Nothing for a
// float of neither 32 nor 64 bits or a length outside 1 to 64. Bits above the length are ignored.
[[nodiscard]] std::optional<double> rawToNumber(uint64_t raw,
                                                const PhysicalLayout& layout) noexcept;

// The physical value of a signal; nothing where the signal does not fit.
[[nodiscard]] std::optional<double> decodePhysical(std::span<const uint8_t> payload,
                                                   const PhysicalLayout& layout) noexcept;

// Writes the raw value nearest to a physical value. Neighbouring bits stay; on every status but Ok
// the payload stays as a whole.
[[nodiscard]] EncodeStatus encodePhysical(std::span<uint8_t> payload, const PhysicalLayout& layout,
                                          double value) noexcept;

// Writes the low bits of a value into exactly the field's bits. False, and nothing written, when
// the field does not fit.
[[nodiscard]] bool writeUnsignedField(std::span<uint8_t> payload, const SignalLayout& layout,
                                      uint64_t value) noexcept;

}  // namespace Model::codec
