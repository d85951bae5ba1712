#include "quill_traceformats/AscLineDecoder.h"

#include <algorithm>

#include "AscText.h"
#include "quill_traceformats/asc_layout.h"

namespace quill::traceformats {
namespace {
constexpr size_t kMostCanBytes = 64;
constexpr size_t kMostEthernetBytes = 65535;
constexpr size_t kMostFlexRayBytes = 254;
constexpr uint32_t kFlagEdl = 0x1000;
constexpr uint32_t kFlagRemote = 0x10;
constexpr uint32_t kMostChannel = 65535;

bool ascDirection(std::string_view token, FrameDirection& direction) {
    if (token == "Rx") {
        direction = FrameDirection::Rx;
    } else if (token == "Tx") {
        direction = FrameDirection::Tx;
    } else if (token == "TxRq") {
        direction = FrameDirection::TxRequest;
    } else {
        return false;
    }
    return true;
}

// The token behind "name =", searched from the cursor on; empty when there is none.
std::string_view valueOf(asc::Cursor cursor, std::string_view name) {
    for (std::string_view token = cursor.next(); !token.empty(); token = cursor.next()) {
        if (token == name && cursor.next() == "=") return cursor.next();
    }
    return {};
}

std::optional<uint32_t> hexValueOf(const asc::Cursor& cursor, std::string_view name) {
    std::string_view token = valueOf(cursor, name);
    if (asc::startsWith(token, "0x")) token.remove_prefix(2);
    return asc::number(token, 16);
}
}  // namespace

AscLineDecoder::AscLineDecoder(const TraceHeader& header)
    : m_header(header), m_base(header.decimal ? 10 : 16) {
    m_data.reserve(kMostCanBytes);
}

Decoded AscLineDecoder::untimedLine(std::string_view line) {
    asc::Cursor cursor(line);
    const std::string_view first = cursor.next();
    if (asc::equals(first, "begin") && asc::startsWith(cursor.next(), "trigger")) {
        m_lastNs = 0;
        if (const auto start = asc::date(cursor.rest())) m_header.startNs = *start;
        return Decoded::context();
    }
    if (asc::equals(first, "base")) {  // files put together from several repeat their header
        (void)asc::readHeaderLine(line, m_header);
        m_base = m_header.decimal ? 10 : 16;
    }
    return first.empty() ? Decoded::context() : Decoded::noFrame("line without a time");
}

// "// <time> <count> frames lost from <time>", as the recorder leaves it where frames were dropped.
bool AscLineDecoder::lossLine(std::string_view line, TraceFrame& frame) {
    asc::Cursor cursor(line);
    if (cursor.next() != "//") return false;
    const auto time = cursor.time();
    const auto count = asc::number(cursor.next(), 10);
    if (!time || !count || cursor.next() != "frames" || cursor.next() != "lost") return false;
    frame = TraceFrame{};
    frame.kind = FrameKind::LossMarker;
    frame.timeNs = static_cast<uint64_t>(*time);
    frame.lostFrames = *count;
    return true;
}

Decoded AscLineDecoder::decode(std::string_view line, TraceFrame& frame) {
    asc::Cursor cursor(line);
    const auto time = cursor.time();
    if (!time) return lossLine(line, frame) ? Decoded::frame() : untimedLine(line);
    uint64_t timeNs = static_cast<uint64_t>(*time);
    if (m_header.relativeTimes) {
        timeNs += m_lastNs;
        if (timeNs > kLargestSpanNs) return Decoded::bad("time stamp is impossible");
        m_lastNs = timeNs;
    }
    frame = TraceFrame{};
    frame.timeNs = timeNs;
    const std::string_view kind = cursor.next();
    if (kind.empty()) return Decoded::bad("line ends behind the time");
    const char first = kind.front();
    if (first >= '0' && first <= '9') return classicLine(kind, cursor, frame);
    if (kind == "CANFD") return fdLine(cursor, frame);
    if (kind == "Li" || (first == 'L' && kind.size() > 1 && asc::number(kind.substr(1), 10))) {
        return linLine(kind, cursor, frame);
    }
    if (kind == "ETH") return ethernetLine(cursor, frame);
    if (kind == "Fr") return flexRayLine(cursor, frame);
    if (kind == "CAN") return Decoded::noFrame("chip state");
    if (kind == "SV:") return Decoded::noFrame("system variable");
    return Decoded::noFrame("other event");
}

bool AscLineDecoder::identifier(std::string_view token, TraceFrame& frame) const {
    if (!token.empty() && (token.back() == 'x' || token.back() == 'X')) {
        frame.flags |= kCanExtended;
        token.remove_suffix(1);
    }
    const auto id = asc::number(token, m_base);
    if (!id || *id > ((frame.flags & kCanExtended) != 0 ? 0x1FFFFFFFU : 0x7FFU)) return false;
    frame.id = *id;
    return true;
}

bool AscLineDecoder::payload(asc::Cursor& cursor, unsigned base, size_t count, TraceFrame& frame) {
    m_data.clear();
    for (size_t i = 0; i < count; ++i) {
        uint8_t value = 0;
        if (!cursor.byte(base, value)) return false;
        m_data.push_back(value);
    }
    frame.data = m_data;
    return true;
}

Decoded AscLineDecoder::errorFrame(asc::Cursor& cursor, TraceFrame& frame) const {
    frame.kind = FrameKind::CanError;
    const std::string_view first = cursor.peek();
    if (first == "ECC:") {
        (void)cursor.next();
        frame.errorCode = static_cast<uint8_t>(asc::number(cursor.next(), 2).value_or(0));
    } else if (first == "Flags") {
        frame.errorCode = static_cast<uint8_t>(hexValueOf(cursor, "Code").value_or(0));
        frame.errorFlags = static_cast<uint16_t>(hexValueOf(cursor, "CodeExt").value_or(0));
        const auto position = asc::number(valueOf(cursor, "Position"), 10).value_or(0);
        frame.errorPosition = static_cast<uint8_t>(std::min(position, 0xFFU));
    }
    return Decoded::frame();
}

Decoded AscLineDecoder::classicLine(std::string_view channelToken, asc::Cursor& cursor,
                                    TraceFrame& frame) {
    const auto channel = asc::number(channelToken, 10);
    if (!channel || *channel > kMostChannel) return Decoded::noFrame("other event");
    frame.channel = static_cast<uint16_t>(*channel);
    const std::string_view id = cursor.next();
    if (asc::equals(id, "errorframe")) return errorFrame(cursor, frame);
    if (id == "Statistic:") return Decoded::noFrame("statistic");
    if (asc::equals(id, "overloadframe")) return Decoded::noFrame("overload frame");
    if (id == "J1939TP") return Decoded::noFrame("transport layer");
    if (id.empty()) return Decoded::bad("line ends behind the channel");
    if (!ascDirection(cursor.next(), frame.direction)) return Decoded::noFrame("other event");
    if (!identifier(id, frame)) {
        // A symbolic name stands for the identifier; the end of the line may still tell it.
        std::string_view number = valueOf(cursor, "ID");
        frame.flags = !number.empty() && number.back() == 'x' ? kCanExtended : 0U;
        if (frame.flags != 0) number.remove_suffix(1);
        const auto value = asc::number(number, 10);
        if (!value || *value > 0x1FFFFFFFU) return Decoded::bad("identifier is not readable");
        frame.id = *value;
    }
    frame.kind = FrameKind::Can;
    const std::string_view type = cursor.next();
    if (type == "r") {
        frame.flags |= kCanRemote;
        if (const auto dlc = asc::number(cursor.peek(), m_base)) {
            frame.dlc = static_cast<uint8_t>(std::min(*dlc, 15U));
        }
        return Decoded::frame();
    }
    if (type != "d") return Decoded::bad("neither data nor remote frame");
    const auto dlc = asc::number(cursor.next(), m_base);
    if (!dlc) return Decoded::bad("data length is not readable");
    frame.dlc = static_cast<uint8_t>(std::min(*dlc, 15U));
    if (!payload(cursor, m_base, std::min(*dlc, 8U), frame)) {
        return Decoded::bad("fewer data bytes than announced");
    }
    return Decoded::frame();
}

Decoded AscLineDecoder::fdLine(asc::Cursor& cursor, TraceFrame& frame) {
    const auto channel = asc::number(cursor.next(), 10);
    if (!channel || *channel > kMostChannel) return Decoded::bad("channel is not readable");
    frame.channel = static_cast<uint16_t>(*channel);
    if (!ascDirection(cursor.next(), frame.direction)) return Decoded::noFrame("other event");
    const std::string_view id = cursor.next();
    if (asc::equals(id, "errorframe")) {
        frame.kind = FrameKind::CanError;
        frame.flags = kCanFd;
        return Decoded::frame();
    }
    if (!identifier(id, frame)) return Decoded::bad("identifier is not readable");
    std::string_view brs = cursor.next();
    if (brs != "0" && brs != "1") brs = cursor.next();  // behind the identifier's symbolic name
    const std::string_view esi = cursor.next();
    const auto dlc = asc::number(cursor.next(), 16);
    const auto length = asc::number(cursor.next(), 10);
    if (brs.empty() || esi.empty() || !dlc || *dlc > 15 || !length || *length > kMostCanBytes) {
        return Decoded::bad("CAN FD fields are not readable");
    }
    if (!payload(cursor, m_base, *length, frame)) {
        return Decoded::bad("fewer data bytes than announced");
    }
    (void)cursor.next();  // duration
    (void)cursor.next();  // bit count
    const auto flags = asc::number(cursor.next(), 16);
    frame.kind = FrameKind::Can;
    frame.dlc = static_cast<uint8_t>(*dlc);
    // A classic frame in the long form has no EDL bit. What a classic frame cannot carry is an FD
    // frame whatever the bit says: some files shift these fields.
    const bool fd = !flags || (*flags & kFlagEdl) != 0 || *length > 8 || brs == "1";
    if (fd) frame.flags |= kCanFd;
    if (fd && brs == "1") frame.flags |= kCanBitRateSwitch;
    if (fd && esi == "1") frame.flags |= kCanErrorState;
    if (!fd && *length == 0 && (*dlc > 0 || (*flags & kFlagRemote) != 0)) {
        frame.flags |= kCanRemote;
    }
    return Decoded::frame();
}

Decoded AscLineDecoder::linLine(std::string_view channelToken, asc::Cursor& cursor,
                                TraceFrame& frame) {
    const auto channel =
        channelToken == "Li" ? std::optional<uint32_t>(1) : asc::number(channelToken.substr(1), 10);
    if (!channel || *channel > kMostChannel) return Decoded::bad("channel is not readable");
    const auto id = asc::number(cursor.next(), 16);
    if (!id || !ascDirection(cursor.next(), frame.direction)) return Decoded::noFrame("LIN event");
    const auto length = asc::number(cursor.next(), 10);
    if (*id > 0x3F || !length || *length > 8) return Decoded::bad("LIN fields are not readable");
    if (!payload(cursor, 16, *length, frame)) {
        return Decoded::bad("fewer data bytes than announced");
    }
    frame.kind = FrameKind::Lin;
    frame.channel = static_cast<uint16_t>(*channel);
    frame.id = *id;
    frame.dlc = static_cast<uint8_t>(*length);
    frame.checksum = static_cast<uint16_t>(hexValueOf(cursor, "checksum").value_or(0));
    if (valueOf(cursor, "CSM") == "enhanced") frame.flags = kLinEnhancedChecksum;
    return Decoded::frame();
}

Decoded AscLineDecoder::ethernetLine(asc::Cursor& cursor, TraceFrame& frame) {
    const auto channel = asc::number(cursor.next(), 10);
    if (!channel || *channel > kMostChannel) return Decoded::bad("channel is not readable");
    if (!ascDirection(cursor.next(), frame.direction)) return Decoded::noFrame("other event");
    const std::string_view text = cursor.next();
    const size_t colon = text.find(':');
    if (colon == std::string_view::npos) return Decoded::bad("Ethernet frame is not readable");
    const auto length = asc::number(text.substr(0, colon), 16);
    const std::string_view digits = text.substr(colon + 1);
    if (!length || *length > kMostEthernetBytes || digits.size() != 2 * size_t{*length}) {
        return Decoded::bad("Ethernet length and data disagree");
    }
    m_data.clear();
    for (size_t i = 0; i < digits.size(); i += 2) {
        const uint8_t high = asc::kDigits[static_cast<uint8_t>(digits[i])];
        const uint8_t low = asc::kDigits[static_cast<uint8_t>(digits[i + 1])];
        if (high == asc::kNoDigit || low == asc::kNoDigit) {
            return Decoded::bad("Ethernet frame is not readable");
        }
        m_data.push_back(static_cast<uint8_t>(high << 4U | low));
    }
    frame.kind = FrameKind::Ethernet;
    frame.channel = static_cast<uint16_t>(*channel);
    frame.data = m_data;
    return Decoded::frame();
}

// Received slots only, in the form that is written here; the other forms changed between versions.
Decoded AscLineDecoder::flexRayLine(asc::Cursor& cursor, TraceFrame& frame) {
    const auto channel = asc::number(cursor.next(), 10);
    if (!channel || *channel > kMostChannel || cursor.next() != kAscFlexRayReceive) {
        return Decoded::noFrame("FlexRay event");
    }
    const auto mask = asc::number(cursor.next(), 16);
    const auto slot = asc::number(cursor.next(), 16);
    const auto cycle = asc::number(cursor.next(), 10);
    const bool direction = ascDirection(cursor.next(), frame.direction);
    const auto flags = asc::number(cursor.next(), 16);
    const auto crc = asc::number(cursor.next(), 16);
    const auto length = asc::number(cursor.next(), 10);
    if (!mask || !slot || !cycle || *cycle > 63 || !direction || !flags || !crc || !length ||
        *length > kMostFlexRayBytes) {
        return Decoded::noFrame("FlexRay event");
    }
    if (!payload(cursor, 16, *length, frame)) {
        return Decoded::bad("fewer data bytes than announced");
    }
    frame.kind = FrameKind::FlexRay;
    frame.channel = static_cast<uint16_t>(*channel);
    frame.id = *slot;
    frame.flags = *flags;
    frame.channelMask = static_cast<uint8_t>(*mask & 3U);
    frame.cycle = static_cast<uint8_t>(*cycle);
    frame.headerCrc = static_cast<uint16_t>(*crc);
    return Decoded::frame();
}

}  // namespace quill::traceformats
