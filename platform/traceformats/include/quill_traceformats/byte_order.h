#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// Numbers at arbitrary addresses. Callers check lengths before they read.
namespace quill::traceformats::bytes {

[[nodiscard]] inline uint16_t little16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | p[1] << 8U);
}
[[nodiscard]] inline uint32_t little32(const uint8_t* p) {
    return uint32_t{p[0]} | uint32_t{p[1]} << 8U | uint32_t{p[2]} << 16U | uint32_t{p[3]} << 24U;
}
[[nodiscard]] inline uint64_t little64(const uint8_t* p) {
    return little32(p) | uint64_t{little32(p + 4)} << 32U;
}
[[nodiscard]] inline uint16_t big16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] << 8U | p[1]);
}
[[nodiscard]] inline uint32_t big32(const uint8_t* p) {
    return uint32_t{p[0]} << 24U | uint32_t{p[1]} << 16U | uint32_t{p[2]} << 8U | uint32_t{p[3]};
}
[[nodiscard]] inline uint16_t any16(const uint8_t* p, bool bigEndian) {
    return bigEndian ? big16(p) : little16(p);
}
[[nodiscard]] inline uint32_t any32(const uint8_t* p, bool bigEndian) {
    return bigEndian ? big32(p) : little32(p);
}

}  // namespace quill::traceformats::bytes
