#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "signal/ByteOrder.h"

// The usual parameter model of CRC algorithms for any width up to the register's, eight bytes a
// step. Tables are made at compile time, one per polynomial and input order.
namespace RV::Crc {

// Polynomial without its leading term; all values right-aligned.
template <std::unsigned_integral Register>
struct CrcParameters {
    unsigned width;  // 1 to the bits of Register
    Register polynomial;
    Register initial;
    bool reflectInput;
    bool reflectOutput;
    Register finalXor;
};

template <std::unsigned_integral Register>
[[nodiscard]] constexpr Register reflectBits(Register value, unsigned width) {
    Register result = 0;
    for (unsigned bit = 0; bit < width; ++bit) {
        if ((value >> bit) & 1U)
            result = static_cast<Register>(result | Register{1} << (width - 1 - bit));
    }
    return result;
}

// Row k holds the register after one byte and k zero bytes. Reflected registers are right-aligned,
// the others left-aligned, so that the next byte always meets the register's outer end.
template <std::unsigned_integral Register, bool kReflected>
struct alignas(64) SliceTable {
    static constexpr unsigned kBits = std::numeric_limits<Register>::digits;

    std::array<std::array<Register, 256>, 8> rows{};

    [[nodiscard]] constexpr Register afterByte(Register state, uint8_t byte) const {
        // Widened, since an 8-bit register is shifted out as a whole.
        const uint64_t wide = state;
        if constexpr (kReflected) {
            return static_cast<Register>(rows[0][(wide ^ byte) & 0xFFU] ^ (wide >> 8));
        } else {
            return static_cast<Register>(rows[0][(wide >> (kBits - 8)) ^ byte] ^ (wide << 8));
        }
    }

    // Eight bytes, already joined with the register.
    [[nodiscard]] constexpr Register afterWord(uint64_t word) const {
        const auto byteAt = [word](unsigned index) {
            return static_cast<uint8_t>(word >> (kReflected ? 8 * index : 56 - 8 * index));
        };
        // In pairs: a chain of eight would cost its whole length a step.
        const auto a = rows[7][byteAt(0)] ^ rows[6][byteAt(1)];
        const auto b = rows[5][byteAt(2)] ^ rows[4][byteAt(3)];
        const auto c = rows[3][byteAt(4)] ^ rows[2][byteAt(5)];
        const auto d = rows[1][byteAt(6)] ^ rows[0][byteAt(7)];
        return static_cast<Register>((a ^ b) ^ (c ^ d));
    }
};

template <std::unsigned_integral Register, bool kReflected>
[[nodiscard]] constexpr SliceTable<Register, kReflected> makeSliceTable(unsigned width,
                                                                        Register polynomial) {
    SliceTable<Register, kReflected> table;
    constexpr unsigned kBits = decltype(table)::kBits;
    for (unsigned byte = 0; byte < 256; ++byte) {
        uint64_t state = kReflected ? byte : uint64_t{byte} << (kBits - 8);
        const uint64_t feedback =
            kReflected ? reflectBits(polynomial, width) : uint64_t{polynomial} << (kBits - width);
        for (int bit = 0; bit < 8; ++bit) {
            const bool out = ((kReflected ? state : state >> (kBits - 1)) & 1U) != 0;
            state = (kReflected ? state >> 1 : state << 1) ^ (out ? feedback : 0);
        }
        table.rows[0][byte] = static_cast<Register>(state);
    }
    for (size_t row = 1; row < 8; ++row) {
        for (size_t byte = 0; byte < 256; ++byte) {
            table.rows[row][byte] = table.afterByte(table.rows[row - 1][byte], 0);
        }
    }
    return table;
}

// The table of a polynomial, shared by all algorithms that differ in the rest only.
template <std::unsigned_integral Register, unsigned kWidth, Register kPolynomial, bool kReflected>
inline constexpr SliceTable<Register, kReflected> kSliceTable =
    makeSliceTable<Register, kReflected>(kWidth, kPolynomial);

template <std::unsigned_integral Register, bool kReflected>
[[nodiscard]] inline Register advance(const SliceTable<Register, kReflected>& table, Register state,
                                      std::span<const uint8_t> data) {
    constexpr unsigned kSpare = 64 - SliceTable<Register, kReflected>::kBits;
    const uint8_t* bytes = data.data();
    size_t left = data.size();
    for (; left >= 8; left -= 8, bytes += 8) {
        state = table.afterWord(kReflected
                                    ? Model::codec::loadLittle64(bytes) ^ state
                                    : Model::codec::loadBig64(bytes) ^ (uint64_t{state} << kSpare));
    }
    for (; left > 0; --left, ++bytes) state = table.afterByte(state, *bytes);
    return state;
}

// The CRC of the data; the table must be that of the parameters' polynomial and input order.
template <std::unsigned_integral Register, bool kReflected>
[[nodiscard]] inline Register computeCrc(const CrcParameters<Register>& parameters,
                                         const SliceTable<Register, kReflected>& table,
                                         std::span<const uint8_t> data) {
    const unsigned spare = SliceTable<Register, kReflected>::kBits - parameters.width;
    Register state = kReflected ? reflectBits(parameters.initial, parameters.width)
                                : static_cast<Register>(parameters.initial << spare);
    state = advance(table, state, data);
    if constexpr (!kReflected) state = static_cast<Register>(state >> spare);
    if (parameters.reflectOutput != kReflected) state = reflectBits(state, parameters.width);
    return static_cast<Register>(state ^ parameters.finalXor);
}

}  // namespace RV::Crc
