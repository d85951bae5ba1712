#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "core/hardware/crc/CrcCatalogue.h"

// CRCs bit by bit, in one register that is never reflected while it runs: shares nothing with the
// tables under test.
namespace bitwise {

inline uint64_t mirrored(uint64_t value, unsigned width) {
    uint64_t result = 0;
    for (unsigned bit = 0; bit < width; ++bit) result |= ((value >> bit) & 1U) << (width - 1 - bit);
    return result;
}

inline uint64_t crc(const RV::Crc::CrcAlgorithm& algorithm, std::span<const uint8_t> data) {
    const uint64_t mask = ~uint64_t{0} >> (64 - algorithm.width);
    uint64_t state = algorithm.initial;
    for (const uint8_t byte : data) {
        for (unsigned i = 0; i < 8; ++i) {
            const uint64_t in = (byte >> (algorithm.reflectInput ? i : 7 - i)) & 1U;
            const uint64_t out = (state >> (algorithm.width - 1)) & 1U;
            state = (state << 1) & mask;
            if (in != out) state ^= algorithm.polynomial;
        }
    }
    if (algorithm.reflectOutput) state = mirrored(state, algorithm.width);
    return state ^ algorithm.finalXor;
}

// The field's bits taken out of a list of bits, least significant bit of each byte first.
inline std::vector<uint8_t> withoutBits(std::span<const uint8_t> data, size_t start,
                                        size_t length) {
    std::vector<bool> bits;
    for (const uint8_t byte : data) {
        for (unsigned i = 0; i < 8; ++i) bits.push_back(((byte >> i) & 1U) != 0);
    }
    const auto from = bits.begin() + static_cast<std::ptrdiff_t>(start);
    bits.erase(from, from + static_cast<std::ptrdiff_t>(length));
    std::vector<uint8_t> bytes(data.size());
    for (size_t i = 0; i < bits.size(); ++i) {
        if (bits[i]) bytes[i / 8] = static_cast<uint8_t>(bytes[i / 8] | 1U << (i % 8));
    }
    return bytes;
}

}  // namespace bitwise
