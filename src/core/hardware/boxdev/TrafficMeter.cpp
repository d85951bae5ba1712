#include "core/hardware/boxdev/TrafficMeter.h"

#include <algorithm>
#include <limits>

namespace RV::BoxDev {
namespace {

constexpr int64_t kSecondNs = 1'000'000'000;
constexpr int64_t kClockWindowNs = 10 * kSecondNs;
constexpr uint32_t kLateSeconds = 2;
constexpr int64_t kNoLead = std::numeric_limits<int64_t>::min();

}  // namespace

void TrafficMeter::note(std::span<const rv::FrameHolder> batch, int64_t hostNs) {
    if (batch.empty()) return;
    const std::lock_guard lock(m_mutex);
    int64_t newest = 0;
    for (const rv::FrameHolder& frame : batch) {
        noteFrame(*frame);
        newest = std::max(newest, static_cast<int64_t>(frame->timestampNs()));
    }
    noteClock(newest - hostNs, hostNs);
}

void TrafficMeter::noteFrame(const rv::Frame& frame) {
    const auto kind = static_cast<size_t>(frame.type);
    if (kind >= kKinds) return;
    std::vector<Meter>& channels = m_meters[kind];
    if (channels.size() <= frame.channel) channels.resize(size_t{frame.channel} + 1);
    Meter& meter = channels[frame.channel];
    ++meter.received;
    if (frame.seconds != meter.current.number) {
        // A late frame of a second that is over would change a figure that was told already. A
        // stamp from long before means that the box's clock was set back.
        const bool late = frame.seconds < meter.current.number;
        if (late && meter.current.number - frame.seconds <= kLateSeconds) return;
        meter.last = meter.current;
        meter.current = {frame.seconds, 0, 0};
    }
    const rv::WireBits bits = rv::wireBits(frame);
    meter.current.nominal += bits.nominal;
    meter.current.data += bits.data;
}

void TrafficMeter::noteClock(int64_t aheadNs, int64_t hostNs) {
    if (hostNs >= m_windowEndNs) {
        m_leadBefore = m_windowEndNs == 0 ? kNoLead : m_lead;
        m_lead = kNoLead;
        m_windowEndNs = hostNs + kClockWindowNs;
    }
    m_lead = std::max(m_lead, aheadNs);
}

int64_t TrafficMeter::offsetNs() const {
    return m_windowEndNs == 0 ? 0 : std::max(m_lead, m_leadBefore);
}

DeviceTraffic TrafficMeter::read(int64_t hostNs) const {
    DeviceTraffic traffic;
    const std::lock_guard lock(m_mutex);
    traffic.clockOffsetNs = offsetNs();
    const int64_t whole = (hostNs + traffic.clockOffsetNs) / kSecondNs - 1;
    for (size_t kind = 0; kind < kKinds; ++kind) {
        for (size_t channel = 0; channel < m_meters[kind].size(); ++channel) {
            const Meter& meter = m_meters[kind][channel];
            if (meter.received == 0) continue;
            ChannelTraffic facts;
            facts.type = static_cast<rv::FrameType>(kind);
            facts.channel = static_cast<uint8_t>(channel);
            facts.received = meter.received;
            for (const Second& second : {meter.current, meter.last}) {
                if (int64_t{second.number} != whole) continue;
                facts.nominalPerSecond = second.nominal;
                facts.dataPerSecond = second.data;
            }
            traffic.channels.push_back(facts);
        }
    }
    return traffic;
}

}  // namespace RV::BoxDev
