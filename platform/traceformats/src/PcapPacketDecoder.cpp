#include "quill_traceformats/PcapPacketDecoder.h"

#include <algorithm>

#include "quill_traceformats/byte_order.h"

namespace quill::traceformats {
namespace {
constexpr size_t kSocketCanHeader = 8;
constexpr size_t kLinHeader = 8;
constexpr size_t kEthernetHeader = 14;

Decoded socketCan(std::span<const uint8_t> packet, TraceFrame& frame) {
    if (packet.size() < kSocketCanHeader)
        return Decoded::bad("CAN packet is shorter than its header");
    const uint32_t id = bytes::big32(packet.data());
    const uint8_t length = packet[4];
    const uint8_t fdFlags = packet[5];
    const auto data = packet.subspan(kSocketCanHeader);
    // Without the FD bit a payload beyond 8 bytes tells an FD frame as well: older captures lack
    // it.
    const bool fd = (fdFlags & 4U) != 0 || length > 8;
    const bool extended = (id & 0x80000000U) != 0;
    const bool remote = (id & 0x40000000U) != 0 && !fd;
    if (length > (fd ? 64 : 8)) return Decoded::bad("CAN length is impossible");
    if (!remote && data.size() < length) return Decoded::bad("CAN packet is cut off");
    frame.kind = (id & 0x20000000U) != 0 ? FrameKind::CanError : FrameKind::Can;
    frame.id = id & (extended ? 0x1FFFFFFFU : 0x7FFU);
    frame.flags = (extended ? kCanExtended : 0U) | (remote ? kCanRemote : 0U);
    if (fd) {
        frame.flags |= kCanFd | ((fdFlags & 1U) != 0 ? kCanBitRateSwitch : 0U) |
                       ((fdFlags & 2U) != 0 ? kCanErrorState : 0U);
    }
    if (frame.kind == FrameKind::CanError) frame.id = 0;  // its bits tell the error, not a frame
    frame.dlc = dlcFromLength(length);
    frame.data = remote ? std::span<const uint8_t>{} : data.first(length);
    return Decoded::frame();
}

// Revision, 3 reserved, length and type, protected identifier, checksum, errors, data.
Decoded lin(std::span<const uint8_t> packet, TraceFrame& frame) {
    if (packet.size() < kLinHeader) return Decoded::bad("LIN packet is shorter than its header");
    const uint8_t kinds = packet[4];
    if ((kinds & 0x0CU) != 0) return Decoded::noFrame("LIN event");
    const size_t length = kinds >> 4U;
    const auto data = packet.subspan(kLinHeader);
    if (length > 8 || data.size() < length) return Decoded::bad("LIN packet is cut off");
    if (packet[7] != 0) return Decoded::noFrame("LIN error");
    frame.kind = FrameKind::Lin;
    frame.id = packet[5] & 0x3FU;
    frame.checksum = packet[6];
    frame.flags = (kinds & 3U) == 2 ? kLinEnhancedChecksum : 0U;
    frame.dlc = static_cast<uint8_t>(length);
    frame.data = data.first(length);
    return Decoded::frame();
}
}  // namespace

Decoded decodePacket(uint32_t linkType, std::span<const uint8_t> packet, TraceFrame& frame) {
    switch (linkType) {
        case kLinkEthernet:
            if (packet.size() < kEthernetHeader) {
                return Decoded::bad("Ethernet packet is shorter than its header");
            }
            frame.kind = FrameKind::Ethernet;
            frame.data = packet;
            return Decoded::frame();
        case kLinkSocketCan:
            return socketCan(packet, frame);
        case kLinkLin:
            return lin(packet, frame);
        default:
            return Decoded::noFrame("link type", linkType);
    }
}

Decoded PcapPacketDecoder::decode(std::span<const uint8_t> record, TraceFrame& frame) const {
    if (record.size() < m_header.recordHeaderBytes) return Decoded::bad("packet has no header");
    const bool big = m_header.bigEndian;
    const uint64_t seconds = bytes::any32(record.data(), big);
    const uint64_t fraction = bytes::any32(record.data() + 4, big);
    frame = TraceFrame{};
    frame.timeNs = seconds * 1'000'000'000U + fraction * (m_header.nanoseconds ? 1U : 1000U);
    frame.channel = 1;
    return decodePacket(m_header.linkType, record.subspan(m_header.recordHeaderBytes), frame);
}

}  // namespace quill::traceformats
