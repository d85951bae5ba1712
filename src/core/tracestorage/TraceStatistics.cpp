#include "core/tracestorage/TraceStatistics.h"

#include <algorithm>
#include <cmath>

namespace tracestorage {
namespace {
// Bits of a frame beside its payload, interframe space included and stuff bits left out, which
// depend on the content.
constexpr double kCanStandardBits = 47;
constexpr double kCanExtendedBits = 67;
constexpr double kFdArbitrationBits = 30;  // start to BRS, and acknowledge to interframe space
constexpr double kFdExtendedBits = 19;
constexpr double kFdDataBits = 28;  // ESI, DLC, stuff count and the shorter CRC
constexpr double kLinHeaderBits = 34;
constexpr double kEthernetExtraBytes = 24;  // preamble, checksum and interframe gap
constexpr double kFlexRayExtraBytes = 8;    // header and trailer

constexpr uint64_t identKey(const FrameRecord& record) {
    const uint64_t extended = (record.flags & flag::kExtended) != 0 ? 1U : 0U;
    return static_cast<uint64_t>(record.bus) << 56U | uint64_t{record.channel} << 40U |
           extended << 32U | record.ident;
}

double canSeconds(const FrameRecord& record, double bytes, const BitRates& rates) {
    const bool extended = (record.flags & flag::kExtended) != 0;
    if ((record.flags & flag::kFd) == 0) {
        return ((extended ? kCanExtendedBits : kCanStandardBits) + 8 * bytes) / rates.can;
    }
    const bool fast = (record.flags & flag::kBitRateSwitch) != 0;
    const double arbitration = kFdArbitrationBits + (extended ? kFdExtendedBits : 0);
    return arbitration / rates.can + (kFdDataBits + 8 * bytes) / (fast ? rates.canData : rates.can);
}
}  // namespace

double TraceStatistics::wireSeconds(const FrameRecord& record, uint32_t bytes) const {
    const double count = bytes;
    switch (record.bus) {
        case Bus::Can:
            return canSeconds(record, count, m_rates);
        case Bus::Lin:
            return (kLinHeaderBits + 10 * (count + 1)) / m_rates.lin;
        case Bus::Ethernet:
            return 8 * (count + kEthernetExtraBytes) / m_rates.ethernet;
        case Bus::FlexRay:
            return 10 * (count + kFlexRayExtraBytes) / m_rates.flexray;
        default:
            return 0;
    }
}

void TraceStatistics::add(const FrameRecord& record, uint32_t payloadBytes) {
    const uint32_t channelKey = static_cast<uint32_t>(record.bus) << 16U | record.channel;
    auto [place, fresh] = m_channels.try_emplace(channelKey);
    Channel& channel = place->second;
    if (fresh) {
        channel.facts.bus = record.bus;
        channel.facts.channel = record.channel;
        channel.firstNs = channel.lastNs = record.timeNs;
    }
    channel.firstNs = std::min(channel.firstNs, record.timeNs);
    channel.lastNs = std::max(channel.lastNs, record.timeNs);
    ++channel.facts.frames;
    channel.facts.bytes += payloadBytes;
    channel.busySeconds += wireSeconds(record, payloadBytes);
    if ((record.flags & flag::kError) != 0) {
        ++channel.facts.errors;
        return;
    }

    auto [spot, first] = m_idents.try_emplace(identKey(record));
    Running& running = spot->second;
    IdentStatistic& facts = running.facts;
    if (first) {
        facts.bus = record.bus;
        facts.channel = record.channel;
        facts.ident = record.ident;
        facts.extended = (record.flags & flag::kExtended) != 0;
    } else {
        const double gap =
            (static_cast<double>(record.timeNs) - static_cast<double>(running.lastNs)) / 1e6;
        facts.minimumMs = running.gaps == 0 ? gap : std::min(facts.minimumMs, gap);
        facts.maximumMs = running.gaps == 0 ? gap : std::max(facts.maximumMs, gap);
        ++running.gaps;
        const double delta = gap - running.mean;
        running.mean += delta / static_cast<double>(running.gaps);
        running.squares += delta * (gap - running.mean);
    }
    running.lastNs = record.timeNs;
    ++facts.frames;
    facts.bytes += payloadBytes;
}

std::vector<IdentStatistic> TraceStatistics::identifiers() const {
    std::vector<IdentStatistic> result;
    result.reserve(m_idents.size());
    for (const auto& [key, running] : m_idents) {
        IdentStatistic facts = running.facts;
        facts.cycleMs = running.mean;
        if (running.gaps > 0) {
            facts.deviationMs = std::sqrt(running.squares / static_cast<double>(running.gaps));
        }
        result.push_back(facts);
    }
    return result;
}

std::vector<ChannelStatistic> TraceStatistics::channels() const {
    std::vector<ChannelStatistic> result;
    for (const auto& [key, channel] : m_channels) {
        ChannelStatistic facts = channel.facts;
        facts.seconds = static_cast<double>(channel.lastNs - channel.firstNs) / 1e9;
        if (facts.seconds > 0) facts.load = channel.busySeconds / facts.seconds;
        result.push_back(facts);
    }
    return result;
}

}  // namespace tracestorage
