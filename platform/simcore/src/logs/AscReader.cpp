#include "logs/AscReader.h"

#include <algorithm>

#include "logs/AscOtherLines.h"

namespace simcore::logs {

namespace {

namespace flag = engine::canflag;

bool isDirection(std::string_view word) { return equalText(word, "Rx") || equalText(word, "Tx"); }

void writeDlc(RvCanFrame& frame, uint8_t dlc) {
    frame.extend[1] = static_cast<uint8_t>((frame.extend[1] & 0x0FU) | (dlc << 4U));
}

bool readBytes(Words& words, RvCanFrame& frame, size_t count, int base) {
    for (size_t i = 0; i < count; ++i) {
        const auto byte = parseNumber<uint8_t>(words.next(), base);
        if (!byte) return false;
        frame.data[i] = *byte;
    }
    frame.length = static_cast<uint8_t>(count);
    return true;
}

LineResult take(RvCanFrame can, uint32_t channel, LogFrame& frame) {
    if (!engine::normalise(can)) return LineResult::unreadable;
    frame.channel = std::to_string(channel);
    frame.number = channel;
    frame.frame = can;
    return LineResult::frame;
}

}  // namespace

void AscReader::begin() {
    m_base = 16;
    m_relative = false;
    m_timeNs = 0;
}

LineResult AscReader::parse(std::string_view line, LogFrame& frame) {
    Words words(line);
    const std::string_view first = words.next();
    if (first.empty()) return LineResult::noFrame;
    if (equalText(first, "base")) parseBase(words);
    const auto time = parseSeconds(first);
    if (!time) return LineResult::noFrame;
    // Relative times count from the event before, whatever kind of event it was.
    m_timeNs = m_relative ? std::min(m_timeNs + *time, kLatestNs) : *time;
    frame.timeNs = m_timeNs;
    return parseEvent(words, frame);
}

void AscReader::parseBase(Words words) {
    m_base = equalText(words.next(), "dec") ? 10 : 16;
    if (equalText(words.next(), "timestamps")) m_relative = equalText(words.next(), "relative");
}

LineResult AscReader::parseEvent(Words words, LogFrame& frame) const {
    const std::string_view kind = words.next();
    if (kind.empty()) return LineResult::noFrame;
    if (equalText(kind, "CANFD")) return parseFd(words, frame);
    if (equalText(kind, "ETH")) return parseAscEthernet(words, frame);
    if (kind.front() == 'L' && kind.size() <= 3) return parseAscLin(kind, words, frame);
    const auto channel = parseNumber<uint32_t>(kind, 10);
    if (channel && *channel > 0) return parseClassic(*channel, words, frame);
    return LineResult::noFrame;
}

bool AscReader::parseId(std::string_view word, RvCanFrame& frame) const {
    if (!word.empty() && (word.back() == 'x' || word.back() == 'X')) {
        frame.extend[1] |= flag::kIde;
        word.remove_suffix(1);
    }
    const auto id = parseNumber<uint32_t>(word, m_base);
    frame.id = id.value_or(0);
    return id.has_value();
}

LineResult AscReader::parseClassic(uint32_t channel, Words words, LogFrame& frame) const {
    RvCanFrame can;
    const std::string_view id = words.next();
    const bool hasId = parseId(id, can);
    if (!isDirection(words.next())) return LineResult::noFrame;
    const std::string_view type = words.next();
    const std::string_view code = words.next();
    if (!hasId) return LineResult::unreadable;  // a symbolic name in place of the identifier
    if (equalText(type, "r")) {
        can.extend[1] |= flag::kRtr;
        // The length is optional; what else may stand here is not a number of one digit.
        const auto dlc = parseNumber<uint8_t>(code, m_base);
        if (code.size() == 1 && dlc) writeDlc(can, std::min<uint8_t>(*dlc, 15));
        return take(can, channel, frame);
    }
    const auto dlc = parseNumber<uint8_t>(code, m_base);
    if (!equalText(type, "d") || !dlc) return LineResult::unreadable;
    // Eight bytes at most, also where the length code is above 8 or counts more.
    const uint8_t length = std::min<uint8_t>(*dlc, 8);
    writeDlc(can, *dlc <= 15 ? *dlc : 8);
    if (!readBytes(words, can, length, m_base)) return LineResult::unreadable;
    return take(can, channel, frame);
}

LineResult AscReader::parseFd(Words words, LogFrame& frame) const {
    const auto channel = parseNumber<uint32_t>(words.next(), 10);
    if (!channel || *channel == 0) return LineResult::unreadable;
    if (!isDirection(words.next())) return LineResult::noFrame;
    const std::string_view id = words.next();
    if (equalText(id, "ErrorFrame")) return LineResult::noFrame;
    RvCanFrame can;
    if (!parseId(id, can)) return LineResult::unreadable;
    std::string_view brs = words.next();
    if (brs != "0" && brs != "1") brs = words.next();  // that was a symbolic name
    const std::string_view esi = words.next();
    const auto dlc = parseNumber<uint8_t>(words.next(), 16);
    const auto length = parseNumber<uint8_t>(words.next(), 10);
    if (!dlc || *dlc > 15 || !length || *length > 64) return LineResult::unreadable;
    if (!readBytes(words, can, *length, m_base)) return LineResult::unreadable;

    constexpr uint32_t kEdlFlag = 0x1000;
    constexpr uint32_t kRemoteFlag = 0x10;
    words.skip(2);  // duration and bit count
    // Without the columns behind the payload the line is taken for what it is called.
    const uint32_t flags = parseNumber<uint32_t>(words.next(), 16).value_or(kEdlFlag);
    // Some writers leave the flags at zero; more than eight bytes tell what the frame is.
    const bool fd = (flags & kEdlFlag) != 0 || *length > 8;
    if (fd) can.extend[0] |= flag::kEdl;
    if (fd && brs == "1") can.extend[0] |= flag::kBrs;
    if (fd && esi == "1") can.extend[0] |= flag::kEsi;
    if (!fd && ((flags & kRemoteFlag) != 0 || (*length == 0 && *dlc > 0))) {
        can.extend[1] |= flag::kRtr;
    }
    writeDlc(can, *dlc);
    return take(can, *channel, frame);
}

}  // namespace simcore::logs
