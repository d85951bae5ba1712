#include "signal/PhysicalCodec.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "signal/SignalCodec.h"

namespace Model::codec {

namespace {

constexpr uint64_t fieldMask(uint32_t bitLength) { return ~uint64_t{0} >> (64 - bitLength); }

bool hasReadableLength(const PhysicalLayout& layout) {
    const uint32_t length = layout.bits.bitLength;
    return layout.isFloat ? length == 32 || length == 64 : length >= 1 && length <= 64;
}

double integerNumber(uint64_t raw, uint32_t bitLength, bool isSigned) {
    if (!isSigned) return static_cast<double>(raw & fieldMask(bitLength));
    // Up to the top and back down with the sign.
    const uint32_t spare = 64 - bitLength;
    return static_cast<double>(static_cast<int64_t>(raw << spare) >> spare);
}

std::optional<uint64_t> floatRaw(double number, uint32_t bitLength) {
    if (bitLength == 64) return std::bit_cast<uint64_t>(number);
    if (std::fabs(number) > double{std::numeric_limits<float>::max()}) return std::nullopt;
    return std::bit_cast<uint32_t>(static_cast<float>(number));
}

std::optional<uint64_t> integerRaw(double number, uint32_t bitLength, bool isSigned) {
    const double rounded = std::round(number);
    if (isSigned) {
        const double limit = std::ldexp(1.0, static_cast<int>(bitLength) - 1);
        if (rounded < -limit || rounded >= limit) return std::nullopt;
        return static_cast<uint64_t>(static_cast<int64_t>(rounded));
    }
    if (rounded < 0 || rounded >= std::ldexp(1.0, static_cast<int>(bitLength))) return std::nullopt;
    return static_cast<uint64_t>(rounded);
}

std::optional<uint64_t> numberToRaw(double number, const PhysicalLayout& layout) {
    if (!std::isfinite(number)) return std::nullopt;
    return layout.isFloat ? floatRaw(number, layout.bits.bitLength)
                          : integerRaw(number, layout.bits.bitLength, layout.isSigned);
}

// The inverse of factor and offset. A factor of 0 leaves the offset as the only value.
double unscale(double value, const PhysicalLayout& layout) {
    const double difference = value - layout.offset;
    return layout.factor == 0 && difference == 0 ? 0 : difference / layout.factor;
}

// Replaces the bits under the mask.
void mixByte(uint8_t& byte, uint64_t value, uint64_t mask) {
    byte = static_cast<uint8_t>((byte & ~mask) | (value & mask));
}

}  // namespace

std::string_view toText(EncodeStatus status) noexcept {
    switch (status) {
        case EncodeStatus::Ok:
            return "done";
        case EncodeStatus::DoesNotFit:
            return "signal does not fit the payload";
        case EncodeStatus::Overflow:
            return "value does not fit the signal's length";
        case EncodeStatus::OutOfLimits:
            return "value out of limits";
        case EncodeStatus::NotFinite:
            return "value is not finite";
    }
    return "unknown";
}

bool fits(const SignalLayout& layout, size_t size) noexcept {
    const uint64_t start = layout.startBit;
    const uint64_t length = layout.bitLength;
    const uint64_t end = uint64_t{8} * size;
    if (length < 1 || length > 64 || start >= end) return false;
    if (!layout.isBigEndian) return start + length <= end;
    // Bits from the start up to the most significant bit of byte 0.
    return length <= 8 * (start / 8) + 8 - start % 8;
}

std::optional<double> rawToNumber(uint64_t raw, const PhysicalLayout& layout) noexcept {
    if (!hasReadableLength(layout)) return std::nullopt;
    if (!layout.isFloat) return integerNumber(raw, layout.bits.bitLength, layout.isSigned);
    if (layout.bits.bitLength == 64) return std::bit_cast<double>(raw);
    return double{std::bit_cast<float>(static_cast<uint32_t>(raw))};
}

std::optional<double> decodePhysical(std::span<const uint8_t> payload,
                                     const PhysicalLayout& layout) noexcept {
    if (!fits(layout.bits, payload.size())) return std::nullopt;
    const uint64_t raw = parseSignalValue(payload, layout.bits.isBigEndian, layout.bits.startBit,
                                          layout.bits.bitLength);
    const auto number = rawToNumber(raw, layout);
    if (!number) return std::nullopt;
    return *number * layout.factor + layout.offset;
}

EncodeStatus encodePhysical(std::span<uint8_t> payload, const PhysicalLayout& layout,
                            double value) noexcept {
    if (!fits(layout.bits, payload.size()) || !hasReadableLength(layout)) {
        return EncodeStatus::DoesNotFit;
    }
    if (!std::isfinite(value) || !std::isfinite(layout.factor) || !std::isfinite(layout.offset)) {
        return EncodeStatus::NotFinite;
    }
    const bool limited = layout.minimum < layout.maximum;
    if (limited && (value < layout.minimum || value > layout.maximum)) {
        return EncodeStatus::OutOfLimits;
    }
    const auto raw = numberToRaw(unscale(value, layout), layout);
    if (!raw) return EncodeStatus::Overflow;
    return writeUnsignedField(payload, layout.bits, *raw) ? EncodeStatus::Ok
                                                          : EncodeStatus::DoesNotFit;
}

bool writeUnsignedField(std::span<uint8_t> payload, const SignalLayout& layout,
                        uint64_t value) noexcept {
    if (!fits(layout, payload.size())) return false;
    size_t byte = layout.startBit >> 3;
    uint32_t shift = layout.startBit & 7U;
    uint32_t left = layout.bitLength;
    while (left > 0) {
        const uint32_t count = std::min(left, 8 - shift);
        mixByte(payload[byte], value << shift, fieldMask(count) << shift);
        left -= count;
        value >>= count;  // at most 8
        shift = 0;
        byte += layout.isBigEndian ? size_t{0} - 1 : 1;
    }
    return true;
}

}  // namespace Model::codec
