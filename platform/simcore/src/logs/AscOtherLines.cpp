#include "logs/AscOtherLines.h"

#include <optional>

namespace simcore::logs {

namespace {

// "Li" is channel 1, "L2" and so on are the others.
std::optional<uint32_t> linChannel(std::string_view word) {
    if (equalText(word, "Li")) return 1;
    const auto number = parseNumber<uint32_t>(word.substr(1), 10);
    return number && *number > 0 ? number : std::nullopt;
}

// Value of "key = value" somewhere in the rest of a line; empty when it is not there.
std::string_view valueOf(std::string_view key, Words words) {
    for (std::string_view word = words.next(); !word.empty(); word = words.next()) {
        if (equalText(word, key) && words.next() == "=") return words.next();
    }
    return {};
}

uint8_t checkModeOf(const RvLinFrame& frame, std::string_view model) {
    if (equalText(model, "classic")) return 0;
    if (equalText(model, "enhanced")) return 1;
    RvLinFrame enhanced = frame;
    enhanced.checkMode = 1;
    // Older files do not name the model: the one that gives the checksum of the line.
    return engine::linChecksum(frame) != frame.checksum &&
                   engine::linChecksum(enhanced) == frame.checksum
               ? 1
               : 0;
}

}  // namespace

LineResult parseAscLin(std::string_view channelWord, Words words, LogFrame& frame) {
    const auto channel = linChannel(channelWord);
    if (!channel) return LineResult::noFrame;
    RvLinFrame lin;
    const auto id = parseNumber<uint8_t>(words.next(), 16);
    const std::string_view direction = words.next();
    const bool isFrame = equalText(direction, "Rx") || equalText(direction, "Tx");
    if (!id || !isFrame) return LineResult::noFrame;
    const auto length = parseNumber<uint8_t>(words.next(), 10);
    if (!length || *length > sizeof lin.data) return LineResult::unreadable;
    lin.id = *id;
    lin.length = *length;
    for (uint8_t i = 0; i < *length; ++i) {
        const auto byte = parseNumber<uint8_t>(words.next(), 16);
        if (!byte) return LineResult::unreadable;
        lin.data[i] = *byte;
    }
    const auto checksum = parseNumber<uint8_t>(valueOf("checksum", words), 16);
    lin.checksum = checksum.value_or(engine::linChecksum(lin));
    lin.checkMode = checkModeOf(lin, valueOf("CSM", words));
    if (!engine::normalise(lin)) return LineResult::unreadable;
    frame.channel.assign(1, 'L').append(std::to_string(*channel));
    frame.number = *channel;
    frame.frame = lin;
    return LineResult::frame;
}

LineResult parseAscEthernet(Words words, LogFrame& frame) {
    const auto channel = parseNumber<uint32_t>(words.next(), 10);
    const std::string_view direction = words.next();
    if (!channel || *channel == 0) return LineResult::unreadable;
    if (!equalText(direction, "Rx") && !equalText(direction, "Tx")) return LineResult::noFrame;
    const std::string_view packet = words.next();
    const size_t colon = packet.find(':');
    if (colon == std::string_view::npos) return LineResult::unreadable;
    const auto length = parseNumber<uint32_t>(packet.substr(0, colon), 16);
    const std::string_view digits = packet.substr(colon + 1);
    if (!length || *length > kRvEthMaxLength || digits.size() != 2 * size_t{*length}) {
        return LineResult::unreadable;
    }
    RvEthFrame eth;
    for (size_t i = 0; i < *length; ++i) {
        const auto byte = parseNumber<uint8_t>(digits.substr(2 * i, 2), 16);
        if (!byte) return LineResult::unreadable;
        eth.data[i] = *byte;
    }
    eth.length = static_cast<uint16_t>(*length);
    if (!engine::normalise(eth)) return LineResult::unreadable;
    frame.channel.assign(1, 'E').append(std::to_string(*channel));
    frame.number = *channel;
    frame.frame = eth;
    return LineResult::frame;
}

}  // namespace simcore::logs
