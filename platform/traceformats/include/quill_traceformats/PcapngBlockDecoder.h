#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "quill_traceformats/Decoded.h"
#include "quill_traceformats/TraceFrame.h"

namespace quill::traceformats {

// Turns units of PcapngReader into frames; times since 1970, channel = interface number + 1. Keeps
// the byte order and the interfaces of the section that it is in.
class PcapngBlockDecoder {
public:
    [[nodiscard]] Decoded decode(std::span<const uint8_t> block, TraceFrame& frame);

private:
    struct Interface {
        uint16_t linkType = 0;
        uint32_t snapLength = 0;
        uint8_t resolution = 6;  // power of ten, or of two when bit 7 is set
        int64_t offsetSeconds = 0;
    };
    void addInterface(std::span<const uint8_t> body);
    void readOptions(std::span<const uint8_t> options, Interface& interface) const;
    [[nodiscard]] Decoded timedPacket(std::span<const uint8_t> body, uint32_t interface,
                                      TraceFrame& frame) const;
    [[nodiscard]] Decoded simplePacket(std::span<const uint8_t> body, TraceFrame& frame) const;

    bool m_bigEndian = false;
    std::vector<Interface> m_interfaces;
};

}  // namespace quill::traceformats
