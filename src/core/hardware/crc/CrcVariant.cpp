#include "core/hardware/crc/CrcVariant.h"

#include <array>
#include <cstddef>

#include "core/hardware/crc/Crc.h"
#include "signal/ByteOrder.h"

namespace RV::Crc {

namespace {

constexpr size_t kMaxDataLength = 64;
constexpr uint8_t kPolynomialPass = 6;  // "CRC_8 H2F": 0x2F, initial value and final XOR 0xFF

// First bit of the cut, or -1 for a field outside the data. A big-endian field is taken to lie
// below its start bit, which is why one in the first byte gives no CRC: receivers that were set up
// against such frames expect the 0.
int64_t cutStart(const CrcVariantField& field, size_t dataLength) {
    const int64_t start = field.startBit;
    const int64_t length = field.length;
    const auto bits = static_cast<int64_t>(8 * dataLength);
    if (start < 0 || length < 1) return -1;
    if (field.isBigEndian) return start > bits || start < length ? -1 : start - length;
    return start + length > bits ? -1 : start;
}

// Eight bytes of the data from a position on, zeros behind its end.
uint64_t wordAt(std::span<const uint8_t> data, size_t position) {
    const size_t size = data.size();
    if (position + 8 <= size) return Model::codec::loadLittle64(&data[position]);
    if (position >= size) return 0;
    if (size >= 8) {
        return Model::codec::loadLittle64(&data[size - 8]) >> (8 * (position + 8 - size));
    }
    uint64_t word = 0;
    for (size_t i = position; i < size; ++i) word |= uint64_t{data[i]} << (8 * (i - position));
    return word;
}

// Eight bytes from a bit position on.
uint64_t bitsAt(std::span<const uint8_t> data, size_t bit) {
    const size_t shift = bit % 8;
    const uint64_t low = wordAt(data, bit / 8);
    if (shift == 0) return low;
    return low >> shift | wordAt(data, bit / 8 + 8) << (64 - shift);
}

// Eight bytes of the cut data: what lies below the cut stays, the bits behind it close the gap.
uint64_t cutWordAt(std::span<const uint8_t> data, size_t position, size_t start, size_t length) {
    const size_t bit = 8 * position;
    if (bit + 64 <= start) return wordAt(data, position);
    const uint64_t moved = bitsAt(data, bit + length);
    if (bit >= start) return moved;
    const uint64_t kept = (uint64_t{1} << (start - bit)) - 1;
    return (wordAt(data, position) & kept) | (moved & ~kept);
}

}  // namespace

uint8_t computeCrc8Variant(std::span<const uint8_t> data, const CrcVariantField& field) noexcept {
    if (data.empty() || data.size() > kMaxDataLength) return 0;
    const int64_t start = cutStart(field, data.size());
    if (start < 0) return 0;
    const size_t lastByte = data.size() - 1;
    const bool hasKey = !field.keyBytes.empty();
    const uint64_t key = hasKey ? field.keyBytes[field.counter % field.keyBytes.size()] : 0;
    // Whole words, the key already in its place: the sum then reads back just what was stored.
    std::array<uint8_t, kMaxDataLength> copy;
    for (size_t position = 0; position <= lastByte; position += 8) {
        uint64_t word = cutWordAt(data, position, static_cast<size_t>(start),
                                  static_cast<size_t>(field.length));
        if (position + 8 > lastByte) {
            const size_t shift = 8 * (lastByte - position);
            word = (word & ~(uint64_t{0xFF} << shift)) | key << shift;
        }
        Model::codec::storeLittle64(&copy[position], word);
    }
    const std::span<const uint8_t> covered(copy.data(), hasKey ? data.size() : lastByte);
    return static_cast<uint8_t>(computeCrc(kPolynomialPass, covered).value_or(0));
}

}  // namespace RV::Crc
