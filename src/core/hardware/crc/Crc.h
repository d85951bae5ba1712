#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "core/hardware/crc/CrcCatalogue.h"

namespace RV::Crc {

// Codes with a meaning of their own; 1 to 40 are those of the catalogue.
inline constexpr uint8_t kNoCrc = 0;
inline constexpr uint8_t kCrc8Variant = 3;

// The algorithm of a code; nullptr for 0 and codes above 40.
[[nodiscard]] const CrcAlgorithm* findAlgorithm(uint8_t code) noexcept;

// The code of a value of the configuration model's CrcType; kNoCrc for CRC_NONE, nothing for
// UNKNOWN and values that CrcType does not have.
[[nodiscard]] std::optional<uint8_t> codeFromConfig(int config) noexcept;

// The CRC of the data by one of the 39 algorithms that depend on nothing else; nothing for 0, the
// variant (see CrcVariant.h) and codes above 40.
[[nodiscard]] std::optional<uint64_t> computeCrc(uint8_t code,
                                                 std::span<const uint8_t> data) noexcept;

}  // namespace RV::Crc
