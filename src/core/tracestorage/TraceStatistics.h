#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "core/tracestorage/FrameRecord.h"

namespace tracestorage {

// Frames of one identifier on one channel. Cycle times are those between neighbours in the file.
struct IdentStatistic {
    Bus bus = Bus::None;
    uint16_t channel = 0;
    uint32_t ident = 0;
    bool extended = false;
    uint64_t frames = 0;
    uint64_t bytes = 0;
    double cycleMs = 0;      // mean; 0 when there is but one frame
    double deviationMs = 0;  // standard deviation of the cycle time
    double minimumMs = 0;
    double maximumMs = 0;
};

struct ChannelStatistic {
    Bus bus = Bus::None;
    uint16_t channel = 0;
    uint64_t frames = 0;
    uint64_t errors = 0;
    uint64_t bytes = 0;
    double seconds = 0;  // from the first to the last frame of the channel
    double load = 0;     // share of the time that the bus was busy, 0 to 1 and above
};

struct BitRates {
    double can = 500'000;
    double canData = 2'000'000;
    double lin = 19'200;
    double ethernet = 100'000'000;
    double flexray = 10'000'000;
};

// Counts frames per identifier and channel; memory follows the number of identifiers.
class TraceStatistics {
public:
    explicit TraceStatistics(BitRates rates = {}) : m_rates(rates) {}

    void add(const FrameRecord& record, uint32_t payloadBytes);
    // Sorted by bus, channel and identifier.
    [[nodiscard]] std::vector<IdentStatistic> identifiers() const;
    [[nodiscard]] std::vector<ChannelStatistic> channels() const;

private:
    struct Running {
        IdentStatistic facts;
        int64_t lastNs = 0;
        uint64_t gaps = 0;
        double mean = 0;
        double squares = 0;  // sum of squared differences from the mean (Welford)
    };
    struct Channel {
        ChannelStatistic facts;
        int64_t firstNs = 0;
        int64_t lastNs = 0;
        double busySeconds = 0;
    };
    [[nodiscard]] double wireSeconds(const FrameRecord& record, uint32_t bytes) const;

    BitRates m_rates;
    std::map<uint64_t, Running> m_idents;
    std::map<uint32_t, Channel> m_channels;
};

}  // namespace tracestorage
