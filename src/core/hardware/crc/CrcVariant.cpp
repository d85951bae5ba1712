#include "core/hardware/crc/CrcVariant.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "core/hardware/crc/Crc.h"
#include "signal/ByteOrder.h"

namespace RV::Crc {

namespace {

constexpr size_t kMaxDataLength = 64;
constexpr uint8_t kPolynomialPass = 6;  // "CRC_8 H2F": 0x2F, initial value and final XOR 0xFF

// Room for the data and for whole words read beyond it.
using CutBuffer = std::array<uint8_t, kMaxDataLength + 16>;

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

// Moves the bits behind the cut down to its start. Bytes of the buffer behind the data are zero;
// the cut ends within the data.
void closeGap(CutBuffer& buffer, size_t dataLength, size_t start, size_t length) {
    const size_t firstByte = start / 8;
    const size_t byteShift = length / 8;
    const size_t bitShift = length % 8;
    const auto keepMask = static_cast<uint8_t>((1U << (start % 8)) - 1);
    const uint8_t kept = buffer[firstByte] & keepMask;
    for (size_t to = firstByte; to < dataLength; to += 8) {
        const size_t from = to + byteShift;
        uint64_t word = 0;
        if (from < dataLength) {
            word = Model::codec::loadLittle64(&buffer[from]) >> bitShift;
            // The ninth byte fills what the shift left open; two steps keep the count below 64.
            word |= (uint64_t{buffer[from + 8]} << 1) << (63 - bitShift);
        }
        Model::codec::storeLittle64(&buffer[to], word);
    }
    buffer[firstByte] = static_cast<uint8_t>((buffer[firstByte] & ~keepMask) | kept);
}

}  // namespace

uint8_t computeCrc8Variant(std::span<const uint8_t> data, const CrcVariantField& field) noexcept {
    if (data.empty() || data.size() > kMaxDataLength) return 0;
    const int64_t start = cutStart(field, data.size());
    if (start < 0) return 0;
    CutBuffer buffer{};
    std::copy(data.begin(), data.end(), buffer.begin());
    closeGap(buffer, data.size(), static_cast<size_t>(start), static_cast<size_t>(field.length));
    size_t covered = data.size() - 1;
    if (!field.keyBytes.empty()) {
        buffer[covered] = field.keyBytes[field.counter % field.keyBytes.size()];
        ++covered;
    }
    const std::span<const uint8_t> bytes(buffer.data(), covered);
    return static_cast<uint8_t>(computeCrc(kPolynomialPass, bytes).value_or(0));
}

}  // namespace RV::Crc
