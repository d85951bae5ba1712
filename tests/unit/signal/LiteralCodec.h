#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

// The signal codec at its slowest and most obvious: byte loops and a mask of 512 positions for what
// any layout gives, and a walk from bit to bit for layouts that fit. References for tests and
// fuzzers.
namespace literal {

using Bytes = std::vector<uint8_t>;

inline uint64_t shl(uint64_t value, uint32_t count) { return value << (count % 64); }
inline uint64_t shr(uint64_t value, uint32_t count) { return value >> (count % 64); }

inline int64_t lowByte(uint32_t start, uint32_t length) {
    const uint32_t depth = (length - 1U + (start & 7U)) >> 3;
    return int64_t{start >> 3} - int64_t{depth};
}

inline uint64_t parse(const Bytes& data, bool bigEndian, uint32_t start, uint32_t length) {
    const uint64_t mask = length == 64 ? ~uint64_t{0} : shl(1, length) - 1;
    const uint64_t bits = 8 * uint64_t{data.size()};
    if (data.empty() || start >= bits) return ~uint64_t{0};
    const uint32_t b = start >> 3;
    const uint32_t r = start & 7U;
    uint64_t value = data[b] >> r;
    if (!bigEndian) {
        const uint32_t end = start + length - 1U;
        if (end >= bits) return ~uint64_t{0};
        for (uint32_t k = b + 1; k <= end >> 3 && k < data.size(); ++k) {
            value |= shl(data[k], 8 - r + 8 * (k - b - 1));
        }
        return value & mask;
    }
    const int64_t low = lowByte(start, length);
    if (low < 0) return ~uint64_t{0};
    for (int64_t k = int64_t{b} - 1; k >= low; --k) {
        const auto index = static_cast<size_t>(k);
        value |= shl(data[index], 8 - r + 8 * (b - 1 - static_cast<uint32_t>(index)));
    }
    return value & mask;
}

inline void clear(Bytes& data, bool bigEndian, uint32_t start, uint32_t length) {
    int64_t first = start;
    int64_t last = int64_t{start} + length - 1;
    const int64_t low = lowByte(start, length);
    if (bigEndian && low >= 0 && low <= int64_t{start >> 3}) {
        last = int64_t{8} * (start >> 3) + 7 - (start & 7U);
        first = last - length + 1;
    }
    std::bitset<512> mask;
    for (int64_t position = first; position <= last; ++position) {
        if (position < 0 || position >= 512) throw std::out_of_range("invalid bitset position");
        mask.set(static_cast<size_t>(position));
    }
    for (size_t q = 0; q < 8 * data.size() && q < 512; ++q) {
        if (!mask[q]) continue;
        const unsigned bit = 7 - (q & 7U);
        data[q >> 3] = static_cast<uint8_t>(data[q >> 3] & ~(1U << bit));
    }
}

inline bool write(Bytes& data, uint64_t raw, bool bigEndian, uint32_t start, uint32_t length) {
    clear(data, bigEndian, start, length);
    const uint32_t b = start >> 3;
    const uint32_t r = start & 7U;
    if (b >= data.size()) return false;
    const auto orInto = [&data](size_t k, uint64_t bits) {
        data[k] = static_cast<uint8_t>(data[k] | (bits & 0xFFU));
    };
    if (bigEndian) {
        const int64_t low = lowByte(start, length);
        if (low < 0) return true;
        orInto(b, raw << r);
        for (int64_t k = int64_t{b} - 1; k >= low; --k) {
            const auto index = static_cast<size_t>(k);
            orInto(index, shr(raw, 8 - r + 8 * (b - 1 - static_cast<uint32_t>(index))));
        }
        return true;
    }
    const uint32_t last = (start + length - 1U) >> 3;
    orInto(b, raw << r);
    for (uint32_t k = b + 1; k <= last && k < data.size(); ++k) {
        orInto(k, shr(raw, 8 - r + 8 * (k - b - 1)));
    }
    return true;
}

// Position of a signal's bit `index`, 0 being the least significant; nothing outside the payload.
inline std::optional<size_t> bitPosition(size_t size, bool bigEndian, uint32_t start,
                                         uint32_t index) {
    const int64_t fromByteStart = int64_t{start & 7U} + index;
    const int64_t step = fromByteStart / 8;
    const int64_t byte = int64_t{start >> 3} + (bigEndian ? -step : step);
    if (byte < 0 || byte >= static_cast<int64_t>(size)) return std::nullopt;
    return static_cast<size_t>(8 * byte + fromByteStart % 8);
}

inline bool fits(size_t size, bool bigEndian, uint32_t start, uint32_t length) {
    return length >= 1 && length <= 64 && bitPosition(size, bigEndian, start, 0) &&
           bitPosition(size, bigEndian, start, length - 1);
}

// For layouts that fit.
inline uint64_t readBits(const Bytes& data, bool bigEndian, uint32_t start, uint32_t length) {
    uint64_t value = 0;
    for (uint32_t i = 0; i < length; ++i) {
        const size_t p = bitPosition(data.size(), bigEndian, start, i).value();
        value |= uint64_t{(data[p / 8] >> (p % 8)) & 1U} << i;
    }
    return value;
}

inline void writeBits(Bytes& data, uint64_t value, bool bigEndian, uint32_t start,
                      uint32_t length) {
    for (uint32_t i = 0; i < length; ++i) {
        const size_t p = bitPosition(data.size(), bigEndian, start, i).value();
        const unsigned bit = 1U << (p % 8);
        data[p / 8] = static_cast<uint8_t>((data[p / 8] & ~bit) | ((value >> i) & 1U ? bit : 0U));
    }
}

}  // namespace literal
