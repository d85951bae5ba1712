#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "quill_traceformats/Decoded.h"
#include "quill_traceformats/TraceFrame.h"
#include "quill_traceformats/UnitReader.h"

namespace quill::traceformats {

inline constexpr uint32_t kLinkEthernet = 1;
inline constexpr uint32_t kLinkLin = 212;
inline constexpr uint32_t kLinkSocketCan = 227;

// One captured packet of a link type as a frame; its time and channel are the caller's. The frame's
// data point into the packet.
[[nodiscard]] Decoded decodePacket(uint32_t linkType, std::span<const uint8_t> packet,
                                   TraceFrame& frame);

// Turns units of PcapReader into frames; times since 1970, channel 1.
class PcapPacketDecoder {
public:
    explicit PcapPacketDecoder(const TraceHeader& header) : m_header(header) {}
    [[nodiscard]] Decoded decode(std::span<const uint8_t> record, TraceFrame& frame) const;

private:
    TraceHeader m_header;
};

}  // namespace quill::traceformats
