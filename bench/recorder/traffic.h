#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/frame/Frame.h"
#include "rvconverter/RecordHandle.h"

namespace bench {

// One frame of generated traffic, small enough to keep a million in memory.
struct TrafficFrame {
    uint64_t timeNs = 0;
    uint32_t id = 0;
    uint8_t length = 0;
    uint8_t data[64] = {};
};

// Periodic messages as a vehicle has them: some 60 identifiers with their cycles, payloads of
// slowly changing signals, rolling counters, checksums and constant bytes. Seeded, always the same.
[[nodiscard]] std::vector<TrafficFrame> makeTraffic(size_t frames, bool fd);

// The same traffic as frames offered to a recorder, and as staged lists of 10000 records.
[[nodiscard]] std::vector<rv::FrameHolder> makeFrames(const std::vector<TrafficFrame>& traffic,
                                                      bool fd);
[[nodiscard]] std::vector<std::vector<rv::RecordHandle>> makeLists(
    const std::vector<rv::FrameHolder>& frames);

}  // namespace bench
