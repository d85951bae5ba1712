#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "core/frame/Frame.h"
#include "core/frame/WireBits.h"

namespace RV::BoxDev {

// What came in on one channel of a device.
struct ChannelTraffic {
    rv::FrameType type = rv::FrameType::None;
    uint8_t channel = 0;
    uint64_t received = 0;          // frames read, the box's own transmissions included
    uint64_t nominalPerSecond = 0;  // bits of the last whole second of the box's clock
    uint64_t dataPerSecond = 0;
};

struct DeviceTraffic {
    std::vector<ChannelTraffic> channels;  // those with traffic so far
    // The box's clock less the host's, in ns; the least that the frames of the last ten to twenty
    // seconds allow, so too small by the time from the wire to the reader thread (some ms). 0
    // before the first frame.
    int64_t clockOffsetNs = 0;
};

// Counts frames and bits of one device, channel by channel. Thread-safe; one lock a batch.
class TrafficMeter {
public:
    // `hostNs`: wall clock of the host when the batch was read.
    void note(std::span<const rv::FrameHolder> batch, int64_t hostNs);
    [[nodiscard]] DeviceTraffic read(int64_t hostNs) const;

private:
    struct Second {
        uint32_t number = 0;  // seconds since 1970 on the box's clock
        uint64_t nominal = 0;
        uint64_t data = 0;
    };
    struct Meter {
        uint64_t received = 0;
        Second current;
        Second last;
    };
    void noteFrame(const rv::Frame& frame);
    void noteClock(int64_t aheadNs, int64_t hostNs);
    [[nodiscard]] int64_t offsetNs() const;

    static constexpr size_t kKinds = 6;  // one place for each number of a frame type
    mutable std::mutex m_mutex;
    std::array<std::vector<Meter>, kKinds> m_meters;  // by kind and channel
    // Largest lead of a frame's stamp before the host's clock in this window and in the one before.
    int64_t m_windowEndNs = 0;
    int64_t m_lead = 0;
    int64_t m_leadBefore = 0;
};

}  // namespace RV::BoxDev
