#include "core/tracestorage/TraceStatistics.h"

#include <algorithm>
#include <cmath>

#include "core/frame/WireBits.h"

namespace tracestorage {
namespace {
constexpr uint64_t identKey(const FrameRecord& record) {
    const uint64_t extended = (record.flags & flag::kExtended) != 0 ? 1U : 0U;
    return static_cast<uint64_t>(record.bus) << 56U | uint64_t{record.channel} << 40U |
           extended << 32U | record.ident;
}

double seconds(rv::WireBits bits, double nominalRate, double dataRate) {
    return bits.nominal / nominalRate + bits.data / dataRate;
}

}  // namespace

double TraceStatistics::wireSeconds(const FrameRecord& record, uint32_t bytes) const {
    const auto has = [&](uint32_t bit) { return (record.flags & bit) != 0; };
    switch (record.bus) {
        case Bus::Can:
            return seconds(rv::canWireBits(bytes, {.extended = has(flag::kExtended),
                                                   .fd = has(flag::kFd),
                                                   .bitRateSwitch = has(flag::kBitRateSwitch)}),
                           m_rates.can, m_rates.canData);
        case Bus::Lin:
            return rv::linWireBits(bytes).nominal / m_rates.lin;
        case Bus::Ethernet:
            return rv::ethernetWireBits(bytes).nominal / m_rates.ethernet;
        case Bus::FlexRay:
            return rv::flexRayWireBits(bytes).nominal / m_rates.flexray;
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
