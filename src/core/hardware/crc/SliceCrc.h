#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>

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
    static constexpr size_t kMet = kBits / 8;

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

    // Eight bytes, the first of them in the lowest bits of a reflected word and in the highest of
    // the other, are summed in two parts: the bytes that meet the register, and the rest, which
    // need not wait for the step before.
    [[nodiscard]] constexpr Register sumOfMet(Register state, uint64_t word) const {
        const uint64_t placed = kReflected ? uint64_t{state} : uint64_t{state} << (64 - kBits);
        return sumFrom<0>(word ^ placed, std::make_index_sequence<kMet>{});
    }
    [[nodiscard]] constexpr Register sumOfRest(uint64_t word) const {
        return sumFrom<kMet>(word, std::make_index_sequence<8 - kMet>{});
    }

    // 1 to 7 bytes, looked up side by side.
    [[nodiscard]] constexpr Register afterTail(Register state,
                                               std::span<const uint8_t> tail) const {
        const size_t count = tail.size();
        const auto bits = static_cast<unsigned>(8 * count);
        const uint64_t wide = state;
        uint64_t sum = bits >= kBits ? 0 : kReflected ? wide >> bits : wide << bits;
        uint64_t met = kReflected ? wide : wide << (64 - kBits);
        for (size_t i = 0; i < count; ++i) {
            const uint64_t outer = kReflected ? met : met >> 56;
            sum ^= rows[count - 1 - i][static_cast<uint8_t>(tail[i] ^ outer)];
            met = kReflected ? met >> 8 : met << 8;
        }
        return static_cast<Register>(sum);
    }

private:
    template <size_t kFirst, size_t... kIndex>
    [[nodiscard]] constexpr Register sumFrom([[maybe_unused]] uint64_t word,
                                             std::index_sequence<kIndex...>) const {
        return static_cast<Register>((0U ^ ... ^ entry<kFirst + kIndex>(word)));
    }

    template <size_t kByte>
    [[nodiscard]] constexpr Register entry(uint64_t word) const {
        constexpr unsigned kShift = kReflected ? 8 * kByte : 56 - 8 * kByte;
        return rows[7 - kByte][static_cast<uint8_t>(word >> kShift)];
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

// The register before the first byte.
template <bool kReflected, std::unsigned_integral Register>
[[nodiscard]] constexpr Register startState(const CrcParameters<Register>& parameters) {
    constexpr unsigned kBits = std::numeric_limits<Register>::digits;
    if constexpr (kReflected) {
        return reflectBits(parameters.initial, parameters.width);
    } else {
        return static_cast<Register>(parameters.initial << (kBits - parameters.width));
    }
}

template <std::unsigned_integral Register, bool kReflected>
[[nodiscard]] inline Register advance(const SliceTable<Register, kReflected>& table, Register state,
                                      std::span<const uint8_t> data) {
    const auto load = kReflected ? &Model::codec::loadLittle64 : &Model::codec::loadBig64;
    const uint8_t* bytes = data.data();
    size_t left = data.size();
    if (left >= 8) {
        uint64_t word = load(bytes);
        Register rest = table.sumOfRest(word);
        // A word ahead: the chain from step to step holds the lookups of the met bytes only.
        for (; left >= 16; left -= 8) {
            state = static_cast<Register>(table.sumOfMet(state, word) ^ rest);
            bytes += 8;
            word = load(bytes);
            rest = table.sumOfRest(word);
        }
        state = static_cast<Register>(table.sumOfMet(state, word) ^ rest);
        bytes += 8;
        left -= 8;
    }
    return left == 0 ? state : table.afterTail(state, {bytes, left});
}

// The CRC from the register after the last byte.
template <bool kReflected, std::unsigned_integral Register>
[[nodiscard]] constexpr Register finish(const CrcParameters<Register>& parameters, Register state) {
    constexpr unsigned kBits = std::numeric_limits<Register>::digits;
    if constexpr (!kReflected) {
        state = static_cast<Register>(state >> (kBits - parameters.width));
    }
    if (parameters.reflectOutput != kReflected) state = reflectBits(state, parameters.width);
    return static_cast<Register>(state ^ parameters.finalXor);
}

// The CRC of the data; the table must be that of the parameters' polynomial and input order.
template <std::unsigned_integral Register, bool kReflected>
[[nodiscard]] inline Register computeCrc(const CrcParameters<Register>& parameters,
                                         const SliceTable<Register, kReflected>& table,
                                         std::span<const uint8_t> data) {
    const Register start = startState<kReflected>(parameters);
    return finish<kReflected>(parameters, advance(table, start, data));
}

}  // namespace RV::Crc
