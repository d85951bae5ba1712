#pragma once

#include <cstdint>
#include <span>

namespace RV::Crc {

// What "CRC_8 Variant" depends on beside the data.
struct CrcVariantField {
    int32_t startBit = 0;
    int32_t length = 0;  // bits
    bool isBigEndian = false;
    std::span<const uint8_t> keyBytes;  // one is taken per counter value in turn; may be empty
    uint64_t counter = 0;
};

// "CRC_8 Variant" over 1 to 64 data bytes: the CRC field's bits are cut out, the later bits close
// the gap (bits counted from each byte's least significant one) and zeros follow; then
// - with key bytes, the last byte is replaced by the key byte of the counter and all bytes count,
// - without, all bytes but the last count.
// The sum is that of code 6, polynomial 0x2F. With a whole-byte field the CRC so covers the data
// without the CRC and then the key, as receivers with a list of data identifiers compute it.
//
// 0 for a field outside the data, and for a data length outside 1 to 64.
[[nodiscard]] uint8_t computeCrc8Variant(std::span<const uint8_t> data,
                                         const CrcVariantField& field) noexcept;

}  // namespace RV::Crc
