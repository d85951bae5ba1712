#pragma once

#include <cstdint>

namespace playback {

// Text of an output format in messages: "BLF" for 0, "ASC" for 1 and so on; "Unknow" for a number
// that names none, as readers of the log know it.
[[nodiscard]] const char* recordingFormatText(uint32_t type);

}  // namespace playback
