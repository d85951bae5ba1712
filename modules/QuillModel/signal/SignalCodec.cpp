#include "signal/SignalCodec.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

#include "signal/ByteOrder.h"

namespace Model::codec {

namespace {

// One shift serves all lengths: with the count taken modulo 64, scripts that pass lengths above 64
// have always got the value of this wrap.
constexpr uint64_t shiftLeft(uint64_t value, uint32_t count) { return value << (count & 63U); }
constexpr uint64_t shiftRight(uint64_t value, uint32_t count) { return value >> (count & 63U); }

constexpr uint64_t lengthMask(uint32_t bitLength) {
    return bitLength == 64 ? ~uint64_t{0} : shiftLeft(1, bitLength) - 1;
}

// The last byte of an Intel signal. Wraps on 32 bits, so that the length 0 at position 0 reaches to
// the end of any payload: readers of empty signals count on the error value that follows from it.
constexpr uint32_t lastIntelByte(uint32_t startBit, uint32_t bitLength) {
    return (startBit + bitLength - 1) >> 3;
}

// How many bytes a Motorola signal reaches down from its start byte. Wraps on 32 bits as above.
constexpr uint32_t motorolaDepth(uint32_t startBit, uint32_t bitLength) {
    return (bitLength - 1 + (startBit & 7U)) >> 3;
}

// Bits from the start position up, `reach` further bytes, at most 8. Bits above the signal's length
// may be set in the result.
uint64_t readIntel(const uint8_t* payload, uint32_t size, uint32_t startBit, uint32_t reach) {
    const uint32_t b = startBit >> 3;
    const uint32_t r = startBit & 7U;
    if (size - b >= 8) {
        uint64_t value = loadLittle64(payload + b) >> r;
        if (reach == 8) value |= shiftLeft(payload[b + 8], 64 - r);
        return value;
    }
    if (size >= 8) return loadLittle64(payload + size - 8) >> (8 * (b + 8 - size) + r);
    uint64_t value = payload[b] >> r;
    for (uint32_t k = 1; k <= reach; ++k) value |= uint64_t{payload[b + k]} << (8 * k - r);
    return value;
}

uint64_t readMotorola(const uint8_t* payload, uint32_t size, uint32_t startBit, uint32_t depth) {
    const uint32_t b = startBit >> 3;
    const uint32_t r = startBit & 7U;
    if (b >= 7) {
        uint64_t value = loadBig64(payload + b - 7) >> r;
        if (depth == 8) value |= shiftLeft(payload[b - 8], 64 - r);
        return value;
    }
    if (size >= 8) return loadBig64(payload) >> (8 * (7 - b) + r);
    uint64_t value = payload[b] >> r;
    for (uint32_t k = 1; k <= depth; ++k) value |= uint64_t{payload[b - k]} << (8 * k - r);
    return value;
}

uint64_t parseIntel(const uint8_t* payload, uint32_t size, uint32_t startBit, uint32_t bitLength) {
    const uint32_t end = startBit + bitLength - 1;
    if (end >= uint64_t{8} * size) return kInvalidRawValue;
    const uint32_t b = startBit >> 3;
    const uint32_t reach = (end >> 3) - b;
    if (bitLength <= 64 && reach <= 8) {
        return readIntel(payload, size, startBit, reach) & lengthMask(bitLength);
    }
    const uint32_t last = lastIntelByte(startBit, bitLength);
    const uint32_t r = startBit & 7U;
    uint64_t value = payload[b] >> r;
    for (uint32_t k = b + 1; k <= last && k < size; ++k) {
        value |= shiftLeft(payload[k], 8 - r + 8 * (k - b - 1));
    }
    return value & lengthMask(bitLength);
}

uint64_t parseMotorola(const uint8_t* payload, uint32_t size, uint32_t startBit,
                       uint32_t bitLength) {
    const uint32_t b = startBit >> 3;
    const uint32_t depth = motorolaDepth(startBit, bitLength);
    if (depth > b) return kInvalidRawValue;
    if (bitLength <= 64) {
        return readMotorola(payload, size, startBit, depth) & lengthMask(bitLength);
    }
    const uint32_t r = startBit & 7U;
    uint64_t value = payload[b] >> r;
    for (uint32_t k = 1; k <= depth; ++k) value |= shiftLeft(payload[b - k], 8 * k - r);
    return value & lengthMask(bitLength);
}

// A range of sequential positions, counted from the most significant bit of byte 0; empty when
// last is below first.
struct ClearRange {
    int64_t first;
    int64_t last;

    [[nodiscard]] bool empty() const { return last < first; }
    [[nodiscard]] bool addressable() const {
        return empty() || (first >= 0 && last < kClearPositions);
    }
};

// Intel positions are taken as they are although they count from the other end of each byte. Keep
// it so: frames that scripts build with part-byte Intel signals are compared with recordings made
// with the mirrored clear, and mending it would change what their boxes send.
ClearRange clearRange(bool isBigEndian, uint32_t startBit, uint32_t bitLength) {
    const int64_t length = bitLength;
    const uint32_t b = startBit >> 3;
    // A Motorola signal that runs before byte 0 is cleared as an Intel one and then not written:
    // callers that ignore the result still see these bits at 0.
    if (isBigEndian && motorolaDepth(startBit, bitLength) <= b) {
        const int64_t last = int64_t{8} * b + 7 - (startBit & 7U);
        return {last - length + 1, last};
    }
    return {int64_t{startBit}, int64_t{startBit} + length - 1};
}

void clearPositions(std::span<uint8_t> payload, ClearRange range) {
    const auto first = static_cast<size_t>(range.first >> 3);
    if (range.empty() || first >= payload.size()) return;
    const auto last = static_cast<size_t>(range.last >> 3);
    unsigned bits = 0xFFU >> (range.first & 7);
    for (size_t k = first; k <= last && k < payload.size(); ++k) {
        if (k == last) bits &= 0xFFU << (7 - (range.last & 7));
        payload[k] = static_cast<uint8_t>(payload[k] & ~bits);
        bits = 0xFFU;
    }
}

// Takes the low 8 bits.
void orByte(uint8_t& byte, uint64_t bits) { byte = static_cast<uint8_t>(byte | bits); }

// Byte by byte: a wider access would have to wait for the bytes that the clear has just stored.
// The raw value is ORed in unmasked: scripts that set a signal to -1 count on the whole of the last
// byte being ones.
void writeIntel(std::span<uint8_t> payload, uint64_t raw, uint32_t startBit, uint32_t bitLength) {
    const size_t b = startBit >> 3;
    const uint32_t r = startBit & 7U;
    const size_t last = lastIntelByte(startBit, bitLength);
    orByte(payload[b], raw << r);
    for (size_t k = b + 1; k <= last && k < payload.size(); ++k) {
        orByte(payload[k], shiftRight(raw, static_cast<uint32_t>(8 * (k - b)) - r));
    }
}

void writeMotorola(std::span<uint8_t> payload, uint64_t raw, uint32_t startBit,
                   uint32_t bitLength) {
    const size_t b = startBit >> 3;
    const uint32_t r = startBit & 7U;
    const uint32_t depth = motorolaDepth(startBit, bitLength);
    if (depth > b) return;
    orByte(payload[b], raw << r);
    for (uint32_t k = 1; k <= depth; ++k) orByte(payload[b - k], shiftRight(raw, 8 * k - r));
}

}  // namespace

uint64_t parseSignalValue(const uint8_t* payload, uint32_t size, bool isBigEndian,
                          uint32_t startBit, uint32_t bitLength) noexcept {
    if (payload == nullptr || startBit >= uint64_t{8} * size) return kInvalidRawValue;
    return isBigEndian ? parseMotorola(payload, size, startBit, bitLength)
                       : parseIntel(payload, size, startBit, bitLength);
}

uint64_t parseSignalValue(std::span<const uint8_t> payload, bool isBigEndian, uint32_t startBit,
                          uint32_t bitLength) noexcept {
    // 32-bit positions cannot reach beyond 2^29 bytes.
    const auto size = static_cast<uint32_t>(std::min<size_t>(payload.size(), uint32_t{1} << 30));
    return parseSignalValue(payload.data(), size, isBigEndian, startBit, bitLength);
}

bool rawValueToByte(std::span<uint8_t> payload, uint64_t raw, bool isBigEndian, uint32_t startBit,
                    uint32_t bitLength) {
    // Before the range test on purpose: callers rely on the clear even where false follows.
    clearSignalBits(payload, isBigEndian, startBit, bitLength);
    if ((startBit >> 3) >= payload.size()) return false;
    if (isBigEndian) {
        writeMotorola(payload, raw, startBit, bitLength);
    } else {
        writeIntel(payload, raw, startBit, bitLength);
    }
    return true;
}

void clearSignalBits(std::span<uint8_t> payload, bool isBigEndian, uint32_t startBit,
                     uint32_t bitLength) {
    const ClearRange range = clearRange(isBigEndian, startBit, bitLength);
    // The text is the one that scripts match on.
    if (!range.addressable()) throw std::out_of_range("invalid bitset position");
    clearPositions(payload, range);
}

bool isClearable(bool isBigEndian, uint32_t startBit, uint32_t bitLength) noexcept {
    return clearRange(isBigEndian, startBit, bitLength).addressable();
}

}  // namespace Model::codec
