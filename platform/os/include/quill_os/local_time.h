#pragma once

#include <cstdint>

namespace quill::os {

// Seconds east of UTC that local time has at a moment given in seconds since the epoch; 0 when the
// system cannot tell.
[[nodiscard]] int32_t localOffsetSeconds(int64_t epochSeconds);

}  // namespace quill::os
