#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace quill::dbjson {

// Larger inputs are refused: no bus database comes near, and an endless device must not fill
// memory.
inline constexpr size_t kMaxInputBytes = size_t{1} << 30;

// All bytes of a file (UTF-8 path); empty with the reason in error when it cannot be read.
[[nodiscard]] std::optional<std::string> readInputFile(const std::string& path, std::string& error);

}  // namespace quill::dbjson
