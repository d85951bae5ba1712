#include "quill_traceformats/PcapngBlockDecoder.h"

#include <algorithm>
#include <optional>

#include "quill_traceformats/PcapPacketDecoder.h"
#include "quill_traceformats/PcapngReader.h"
#include "quill_traceformats/byte_order.h"

namespace quill::traceformats {
namespace {
constexpr size_t kBlockFrame = 12;  // type and the two lengths
constexpr size_t kMostInterfaces = 65535;
constexpr uint64_t kNsPerSecond = 1'000'000'000U;

// A count of 10^-power seconds as nanoseconds.
std::optional<uint64_t> fromDecimal(uint64_t count, unsigned power) {
    for (; power > 9 && count > 0; --power) count /= 10;
    for (; power < 9 && count > 0; ++power) {
        if (count > kLargestTimeNs / 10) return std::nullopt;
        count *= 10;
    }
    return count;
}

// A count of 2^-power seconds as nanoseconds.
std::optional<uint64_t> fromBinary(uint64_t count, unsigned power) {
    uint64_t seconds = power > 63 ? 0 : count >> power;
    if (seconds > kLargestTimeNs / kNsPerSecond) return std::nullopt;
    uint64_t fraction = power > 63 ? count : count & ((uint64_t{1} << power) - 1);
    // The product with 10^9 needs 30 bits of room.
    for (; power > 34; --power) fraction >>= 1U;
    return seconds * kNsPerSecond + (fraction * kNsPerSecond >> power);
}
}  // namespace

void PcapngBlockDecoder::readOptions(std::span<const uint8_t> options, Interface& interface) const {
    while (options.size() >= 4) {
        const uint16_t code = bytes::any16(options.data(), m_bigEndian);
        const size_t length = bytes::any16(options.data() + 2, m_bigEndian);
        const size_t padded = 4 + (length + 3) / 4 * 4;
        if (code == 0 || 4 + length > options.size()) return;
        const uint8_t* value = options.data() + 4;
        if (code == 9 && length >= 1) interface.resolution = value[0];
        if (code == 14 && length >= 8) {
            const uint64_t high = bytes::any32(value + (m_bigEndian ? 0 : 4), m_bigEndian);
            const uint64_t low = bytes::any32(value + (m_bigEndian ? 4 : 0), m_bigEndian);
            interface.offsetSeconds = static_cast<int64_t>(high << 32U | low);
        }
        options = options.subspan(std::min(padded, options.size()));
    }
}

void PcapngBlockDecoder::addInterface(std::span<const uint8_t> body) {
    if (m_interfaces.size() >= kMostInterfaces) return;
    Interface interface;
    if (body.size() >= 8) {
        interface.linkType = bytes::any16(body.data(), m_bigEndian);
        interface.snapLength = bytes::any32(body.data() + 4, m_bigEndian);
        readOptions(body.subspan(8), interface);
    }
    m_interfaces.push_back(interface);
}

// Body from the time's upper half on.
Decoded PcapngBlockDecoder::timedPacket(std::span<const uint8_t> body, uint32_t number,
                                        TraceFrame& frame) const {
    if (number >= m_interfaces.size()) return Decoded::bad("packet of an unknown interface");
    const Interface& interface = m_interfaces[number];
    const uint64_t count = uint64_t{bytes::any32(body.data(), m_bigEndian)} << 32U |
                           bytes::any32(body.data() + 4, m_bigEndian);
    const uint32_t captured = bytes::any32(body.data() + 8, m_bigEndian);
    const auto data = body.subspan(16);
    if (captured > data.size()) return Decoded::bad("captured length exceeds its block");
    const unsigned power = interface.resolution & 0x7FU;
    const auto time =
        (interface.resolution & 0x80U) != 0 ? fromBinary(count, power) : fromDecimal(count, power);
    constexpr auto kMostSeconds = static_cast<int64_t>(kLargestTimeNs / 2 / kNsPerSecond);
    if (!time || *time > kLargestTimeNs || interface.offsetSeconds > kMostSeconds ||
        interface.offsetSeconds < -kMostSeconds) {
        return Decoded::bad("time stamp is impossible");
    }
    const int64_t shifted =
        static_cast<int64_t>(*time) + interface.offsetSeconds * static_cast<int64_t>(kNsPerSecond);
    frame.timeNs = static_cast<uint64_t>(std::max<int64_t>(shifted, 0));
    frame.channel = static_cast<uint16_t>(number + 1);
    return decodePacket(interface.linkType, data.first(captured), frame);
}

// A simple packet has no time at all; it is filed at 0.
Decoded PcapngBlockDecoder::simplePacket(std::span<const uint8_t> body, TraceFrame& frame) const {
    if (m_interfaces.empty()) return Decoded::bad("packet of an unknown interface");
    if (body.size() < 4) return Decoded::bad("packet block is too short");
    const uint32_t original = bytes::any32(body.data(), m_bigEndian);
    const uint32_t snap = m_interfaces.front().snapLength;
    const size_t captured = snap == 0 ? original : std::min(original, snap);
    const auto data = body.subspan(4);
    if (captured > data.size()) return Decoded::bad("captured length exceeds its block");
    frame.channel = 1;
    return decodePacket(m_interfaces.front().linkType, data.first(captured), frame);
}

Decoded PcapngBlockDecoder::decode(std::span<const uint8_t> block, TraceFrame& frame) {
    if (block.size() < kBlockFrame) return Decoded::bad("block is too short");
    frame = TraceFrame{};
    const auto body = block.subspan(8, block.size() - kBlockFrame);
    if (bytes::little32(block.data()) == PcapngReader::kSection) {
        m_bigEndian = body.size() >= 4 && body[0] == 0x1A;
        m_interfaces.clear();
        return Decoded::context();
    }
    switch (bytes::any32(block.data(), m_bigEndian)) {
        case PcapngReader::kInterface:
            addInterface(body);
            return Decoded::context();
        case PcapngReader::kEnhancedPacket:
            if (body.size() < 20) return Decoded::bad("packet block is too short");
            return timedPacket(body.subspan(4), bytes::any32(body.data(), m_bigEndian), frame);
        case PcapngReader::kOldPacket:
            if (body.size() < 20) return Decoded::bad("packet block is too short");
            return timedPacket(body.subspan(4), bytes::any16(body.data(), m_bigEndian), frame);
        case PcapngReader::kSimplePacket:
            return simplePacket(body, frame);
        default:
            return Decoded::noFrame("block");
    }
}

}  // namespace quill::traceformats
