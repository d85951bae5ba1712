#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

// Eight bytes of a payload as one number, at any alignment.
namespace Model::codec {

[[nodiscard]] constexpr uint64_t swapBytes(uint64_t value) noexcept {
    value = ((value & 0x00FF00FF00FF00FFU) << 8) | ((value >> 8) & 0x00FF00FF00FF00FFU);
    value = ((value & 0x0000FFFF0000FFFFU) << 16) | ((value >> 16) & 0x0000FFFF0000FFFFU);
    return (value << 32) | (value >> 32);
}

[[nodiscard]] inline uint64_t loadLittle64(const uint8_t* bytes) noexcept {
    uint64_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    if constexpr (std::endian::native == std::endian::big) value = swapBytes(value);
    return value;
}

[[nodiscard]] inline uint64_t loadBig64(const uint8_t* bytes) noexcept {
    return swapBytes(loadLittle64(bytes));
}

inline void storeLittle64(uint8_t* bytes, uint64_t value) noexcept {
    if constexpr (std::endian::native == std::endian::big) value = swapBytes(value);
    std::memcpy(bytes, &value, sizeof value);
}

}  // namespace Model::codec
