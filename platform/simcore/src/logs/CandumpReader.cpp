#include "logs/CandumpReader.h"

#include "logs/Words.h"

namespace simcore::logs {

namespace {

namespace flag = engine::canflag;

constexpr uint32_t kErrorFrameBit = 0x20000000;
constexpr size_t kExtendedDigits = 8;

bool parseHexBytes(std::string_view text, RvCanFrame& frame, size_t most) {
    if (text.size() % 2 != 0 || text.size() / 2 > most) return false;
    for (size_t i = 0; i < text.size(); i += 2) {
        const auto byte = parseNumber<uint8_t>(text.substr(i, 2), 16);
        if (!byte) return false;
        frame.data[i / 2] = *byte;
    }
    frame.length = static_cast<uint8_t>(text.size() / 2);
    return true;
}

void setDlc(RvCanFrame& frame, uint8_t dlc) {
    frame.extend[1] = static_cast<uint8_t>((frame.extend[1] & 0x0FU) | (dlc << 4U));
}

bool parseRemote(std::string_view text, RvCanFrame& frame) {
    frame.extend[1] |= flag::kRtr;
    if (text.empty()) return true;
    const auto dlc = parseNumber<uint8_t>(text.substr(0, 1), 16);
    if (!dlc || *dlc > 8) return false;
    setDlc(frame, *dlc);
    return true;
}

bool parseFd(std::string_view text, RvCanFrame& frame) {
    if (text.empty()) return false;
    const auto flags = parseNumber<uint8_t>(text.substr(0, 1), 16);
    if (!flags) return false;
    frame.extend[0] |= flag::kEdl;
    if ((*flags & 1U) != 0) frame.extend[0] |= flag::kBrs;
    if ((*flags & 2U) != 0) frame.extend[0] |= flag::kEsi;
    return parseHexBytes(text.substr(1), frame, 64);
}

bool parseClassic(std::string_view text, RvCanFrame& frame) {
    const size_t mark = text.find('_');  // a length code above 8 follows
    if (!parseHexBytes(text.substr(0, mark), frame, 8)) return false;
    if (mark == std::string_view::npos) return true;
    const auto dlc = parseNumber<uint8_t>(text.substr(mark + 1), 16);
    if (!dlc || *dlc <= 8 || *dlc > 15 || frame.length != 8) return false;
    setDlc(frame, *dlc);
    return true;
}

}  // namespace

uint32_t CandumpReader::numberOf(std::string_view interfaceName) {
    const auto known = m_numbers.find(interfaceName);
    if (known != m_numbers.end()) return known->second;
    constexpr size_t kMostInterfaces = 1000;
    if (m_numbers.size() >= kMostInterfaces) return 1;
    const auto number = static_cast<uint32_t>(m_numbers.size() + 1);
    m_numbers.emplace(std::string(interfaceName), number);
    return number;
}

LineResult CandumpReader::parse(std::string_view line, LogFrame& frame) {
    Words words(line);
    const std::string_view time = words.next();
    if (time.empty()) return LineResult::noFrame;
    if (time.size() < 3 || time.front() != '(' || time.back() != ')') return LineResult::unreadable;
    const auto ns = parseSeconds(time.substr(1, time.size() - 2));
    const std::string_view interfaceName = words.next();
    const std::string_view text = words.next();
    const size_t hash = text.find('#');
    if (!ns || hash == std::string_view::npos) return LineResult::unreadable;

    RvCanFrame can;
    const auto id = parseNumber<uint32_t>(text.substr(0, hash), 16);
    if (!id) return LineResult::unreadable;
    if (hash == kExtendedDigits) {
        if ((*id & kErrorFrameBit) != 0) return LineResult::noFrame;
        can.extend[1] |= flag::kIde;
    }
    can.id = *id;
    const std::string_view payload = text.substr(hash + 1);
    bool parsed = false;
    if (!payload.empty() && payload.front() == '#') {
        parsed = parseFd(payload.substr(1), can);
    } else if (!payload.empty() && payload.front() == 'R') {
        parsed = parseRemote(payload.substr(1), can);
    } else {
        parsed = parseClassic(payload, can);
    }
    if (!parsed || !engine::normalise(can)) return LineResult::unreadable;
    frame.timeNs = *ns;
    frame.channel.assign(interfaceName);
    frame.number = numberOf(interfaceName);
    frame.frame = can;
    return LineResult::frame;
}

}  // namespace simcore::logs
