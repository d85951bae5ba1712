#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace quill::fuzz {

using Seed = std::vector<uint8_t>;

// Starting points of a target that are made rather than stored; targets that are listed with
// MAKES_SEEDS have them.
[[nodiscard]] std::vector<Seed> ownSeeds(std::string_view target);

}  // namespace quill::fuzz
