#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "core/tracestorage/TraceReader.h"
#include "core/tracestorage/TraceStatistics.h"

namespace quilltrace {
namespace {
using tracestorage::Bus;
using tracestorage::ChannelStatistic;
using tracestorage::IdentStatistic;

const char* busName(Bus bus) {
    switch (bus) {
        case Bus::Can:
            return "CAN";
        case Bus::Lin:
            return "LIN";
        case Bus::Ethernet:
            return "Ethernet";
        case Bus::FlexRay:
            return "FlexRay";
        default:
            return "?";
    }
}

std::string identText(const IdentStatistic& ident) {
    if (ident.bus == Bus::Ethernet) return "-";
    return fmt::format("{:X}{}", ident.ident, ident.extended ? "x" : "");
}

nlohmann::json toJson(const std::vector<ChannelStatistic>& channels,
                      const std::vector<IdentStatistic>& idents) {
    nlohmann::json json = {{"channels", nlohmann::json::array()},
                           {"identifiers", nlohmann::json::array()}};
    for (const auto& channel : channels) {
        json["channels"].push_back({{"bus", busName(channel.bus)},
                                    {"channel", channel.channel},
                                    {"frames", channel.frames},
                                    {"errors", channel.errors},
                                    {"bytes", channel.bytes},
                                    {"seconds", channel.seconds},
                                    {"load", channel.load}});
    }
    for (const auto& ident : idents) {
        json["identifiers"].push_back({{"bus", busName(ident.bus)},
                                       {"channel", ident.channel},
                                       {"ident", ident.ident},
                                       {"extended", ident.extended},
                                       {"frames", ident.frames},
                                       {"bytes", ident.bytes},
                                       {"cycleMs", ident.cycleMs},
                                       {"deviationMs", ident.deviationMs},
                                       {"minimumMs", ident.minimumMs},
                                       {"maximumMs", ident.maximumMs}});
    }
    return json;
}

void printText(const std::vector<ChannelStatistic>& channels,
               const std::vector<IdentStatistic>& idents) {
    fmt::print("{:<9}{:>7}{:>12}{:>9}{:>14}{:>12}{:>9}\n", "bus", "channel", "frames", "errors",
               "bytes", "seconds", "load");
    for (const auto& c : channels) {
        fmt::print("{:<9}{:>7}{:>12}{:>9}{:>14}{:>12.3f}{:>8.2f}%\n", busName(c.bus), c.channel,
                   c.frames, c.errors, c.bytes, c.seconds, c.load * 100);
    }
    fmt::print("\n{:<9}{:>7}{:>11}{:>12}{:>12}{:>12}{:>12}{:>12}\n", "bus", "channel", "ident",
               "frames", "cycle ms", "deviation", "shortest", "longest");
    for (const auto& i : idents) {
        fmt::print("{:<9}{:>7}{:>11}{:>12}{:>12.3f}{:>12.3f}{:>12.3f}{:>12.3f}\n", busName(i.bus),
                   i.channel, identText(i), i.frames, i.cycleMs, i.deviationMs, i.minimumMs,
                   i.maximumMs);
    }
}

bool readRates(const CommandLine& line, tracestorage::BitRates& rates) {
    const auto can = line.number("bitrate", rates.can);
    const auto canData = line.number("databitrate", rates.canData);
    const auto lin = line.number("linrate", rates.lin);
    const auto ethernet = line.number("ethrate", rates.ethernet);
    if (!can || !canData || !lin || !ethernet) return false;
    rates.can = *can;
    rates.canData = *canData;
    rates.lin = *lin;
    rates.ethernet = *ethernet;
    return true;
}
}  // namespace

ExitStatus runStats(const CommandLine& line) {
    tracestorage::BitRates rates;
    const auto top = line.number("top", 1e9);
    const auto only = line.number("file", 1);
    if (line.operands.size() != 1 || !top || !only || !readRates(line, rates)) {
        fmt::print(stderr, "quilltrace: stats needs one database, and numbers above 0\n");
        return ExitStatus::Usage;
    }
    std::string reason;
    const auto reader = tracestorage::TraceReader::open(line.operands[0], reason);
    if (!reader) {
        fmt::print(stderr, "quilltrace: {}\n", reason);
        return ExitStatus::Refused;
    }
    tracestorage::TraceStatistics statistics(rates);
    for (const auto& file : reader->files()) {
        if (line.value("file") && file.id != static_cast<int64_t>(*only)) continue;
        const bool read = reader->forEachFrame(file.id, [&](const auto& record, auto payload) {
            statistics.add(record, static_cast<uint32_t>(payload.size()));
            return true;
        });
        if (!read) {
            fmt::print(stderr, "quilltrace: {}\n", reader->lastError());
            return ExitStatus::Refused;
        }
    }
    auto idents = statistics.identifiers();
    if (line.value("top")) {
        std::stable_sort(idents.begin(), idents.end(),
                         [](const auto& a, const auto& b) { return a.frames > b.frames; });
        idents.resize(std::min(idents.size(), static_cast<size_t>(*top)));
    }
    if (line.has("json")) {
        fmt::print("{}\n", toJson(statistics.channels(), idents).dump(2));
    } else {
        printText(statistics.channels(), idents);
    }
    return ExitStatus::Done;
}

}  // namespace quilltrace
