#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

#include "quill_traceformats/byte_order.h"

// How objects are told from other bytes when a BLF file is damaged.
namespace quill::traceformats::blfscan {

inline constexpr size_t kBaseHeader = 16;
inline constexpr size_t kContainerHead = 32;
inline constexpr uint32_t kContainerType = 10;
inline constexpr uint32_t kLargestObject = 16U << 20U;
// Writers pad objects in several ways, never by more than this.
inline constexpr size_t kMostPadding = 7;

[[nodiscard]] inline bool isSignature(const uint8_t* p) { return std::memcmp(p, "LOBJ", 4) == 0; }

// Distance to a signature that stands within the padding of what came before.
[[nodiscard]] inline std::optional<size_t> signatureNear(std::span<const uint8_t> bytes) {
    if (bytes.size() >= 4 && isSignature(bytes.data())) return 0;
    for (size_t at = 1; at <= kMostPadding && at + 4 <= bytes.size(); ++at) {
        if (isSignature(bytes.data() + at)) return at;
    }
    return std::nullopt;
}

// Whether a base header (16 bytes) could be one, asked only of places found by searching.
[[nodiscard]] inline bool plausibleHeader(const uint8_t* p) {
    const uint16_t headerSize = bytes::little16(p + 4);
    const uint16_t version = bytes::little16(p + 6);
    const uint32_t size = bytes::little32(p + 8);
    return isSignature(p) && headerSize >= kBaseHeader && headerSize <= 64 && version <= 8 &&
           size >= headerSize && size <= kLargestObject;
}

// Offset of the first plausible object header at or behind `from`.
[[nodiscard]] inline std::optional<size_t> findHeader(std::span<const uint8_t> bytes, size_t from) {
    while (from + kBaseHeader <= bytes.size()) {
        const void* hit = std::memchr(bytes.data() + from, 'L', bytes.size() - from);
        if (hit == nullptr) return std::nullopt;
        from = static_cast<size_t>(static_cast<const uint8_t*>(hit) - bytes.data());
        if (from + kBaseHeader > bytes.size()) return std::nullopt;
        if (plausibleHeader(bytes.data() + from)) return from;
        ++from;
    }
    return std::nullopt;
}

}  // namespace quill::traceformats::blfscan
