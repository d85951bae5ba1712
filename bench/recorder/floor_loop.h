#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recorder/traffic.h"

namespace bench {

// The least that a BLF file costs: objects laid out from plain structs, deflated and written
// container by container, on as many threads as the library compresses with, and nothing else: no
// records to free, no order between threads, no header to keep right. Returns the file's bytes.
uint64_t writeFloor(const std::string& path, const std::vector<TrafficFrame>& traffic, bool fd,
                    int level, int threads);

}  // namespace bench
