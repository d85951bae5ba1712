#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

// Numbers and bytes as text at the full speed of the machine. Each function writes at `out`, where
// the caller has made room, and returns the end of what it wrote.
namespace quill::traceformats {

// Two characters for each number 0 to 99.
inline constexpr auto kDecimalPairs = [] {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Two upper-case hexadecimal characters for each byte.
inline constexpr auto kHexPairs = [] {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::array<char, 512> pairs{};
    for (size_t i = 0; i < 256; ++i) {
        pairs[2 * i] = kDigits[i / 16];
        pairs[2 * i + 1] = kDigits[i % 16];
    }
    return pairs;
}();

inline char* putText(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

inline char* putDecimalPair(char* out, uint32_t value) {
    std::memcpy(out, &kDecimalPairs[size_t{2} * value], 2);
    return out + 2;
}

inline char* putHexByte(char* out, uint8_t value) {
    std::memcpy(out, &kHexPairs[size_t{2} * value], 2);
    return out + 2;
}

// Shortest form, without leading zeros.
inline char* putHex(char* out, uint32_t value) {
    int digits = 1;
    while (digits < 8 && (value >> (4 * digits)) != 0) ++digits;
    for (int i = digits - 1; i >= 0; --i) {
        *out++ = kHexPairs[((value >> (4 * i)) & 0x0FU) * 2 + 1];
    }
    return out;
}

inline char* putDecimal(char* out, uint64_t value) {
    char text[20];
    char* begin = text + sizeof text;
    while (value >= 100) {
        begin -= 2;
        putDecimalPair(begin, static_cast<uint32_t>(value % 100));
        value /= 100;
    }
    if (value >= 10) {
        begin -= 2;
        putDecimalPair(begin, static_cast<uint32_t>(value));
    } else {
        *--begin = static_cast<char>('0' + value);
    }
    return putText(out, std::string_view(begin, static_cast<size_t>(text + sizeof text - begin)));
}

// " 12.345678901": nanoseconds as seconds, the whole part filled with blanks to four characters.
inline char* putSeconds(char* out, uint64_t ns) {
    const uint64_t seconds = ns / 1'000'000'000U;
    auto fraction = static_cast<uint32_t>(ns % 1'000'000'000U);
    for (uint64_t bound = 1000; bound >= 10 && seconds < bound; bound /= 10) *out++ = ' ';
    out = putDecimal(out, seconds);
    *out++ = '.';
    *out++ = static_cast<char>('0' + fraction / 100'000'000U);
    fraction %= 100'000'000U;
    const uint32_t high = fraction / 10'000U;
    const uint32_t low = fraction % 10'000U;
    out = putDecimalPair(out, high / 100U);
    out = putDecimalPair(out, high % 100U);
    out = putDecimalPair(out, low / 100U);
    return putDecimalPair(out, low % 100U);
}

// Each byte as a blank and two hexadecimal characters.
inline char* putSpacedBytes(char* out, std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes) {
        *out = ' ';
        putHexByte(out + 1, byte);
        out += 3;
    }
    return out;
}

inline char* putBytes(char* out, std::span<const uint8_t> bytes) {
    for (const uint8_t byte : bytes) out = putHexByte(out, byte);
    return out;
}

}  // namespace quill::traceformats
