#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>

// Little-endian numbers in byte buffers, without alignment and without pointer casts. The caller
// has checked that the bytes are there.
namespace quill::traceformats {

template <std::unsigned_integral T>
[[nodiscard]] constexpr T swapBytes(T value) {
    T swapped = 0;
    for (unsigned i = 0; i < sizeof(T); ++i) {
        swapped = static_cast<T>((swapped << 8U) | ((value >> (8U * i)) & 0xFFU));
    }
    return swapped;
}

template <std::unsigned_integral T>
[[nodiscard]] inline T loadLittle(const uint8_t* from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    if constexpr (std::endian::native == std::endian::big && sizeof(T) > 1) {
        value = swapBytes(value);
    }
    return value;
}

template <std::unsigned_integral T>
inline void storeLittle(uint8_t* to, T value) {
    if constexpr (std::endian::native == std::endian::big && sizeof(T) > 1) {
        value = swapBytes(value);
    }
    std::memcpy(to, &value, sizeof value);
}

[[nodiscard]] inline uint16_t loadU16(const uint8_t* from) { return loadLittle<uint16_t>(from); }
[[nodiscard]] inline uint32_t loadU32(const uint8_t* from) { return loadLittle<uint32_t>(from); }
[[nodiscard]] inline uint64_t loadU64(const uint8_t* from) { return loadLittle<uint64_t>(from); }
[[nodiscard]] inline double loadF64(const uint8_t* from) {
    return std::bit_cast<double>(loadU64(from));
}

inline void storeU16(uint8_t* to, uint16_t value) { storeLittle(to, value); }
inline void storeU32(uint8_t* to, uint32_t value) { storeLittle(to, value); }
inline void storeU64(uint8_t* to, uint64_t value) { storeLittle(to, value); }
inline void storeF64(uint8_t* to, double value) { storeU64(to, std::bit_cast<uint64_t>(value)); }

}  // namespace quill::traceformats
