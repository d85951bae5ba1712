#pragma once

#include "core/playback/importer/SimpleUnitParser.h"
#include "quill_traceformats/PcapPacketDecoder.h"

namespace playback {

// PCAP packets: link type and time unit are the file's.
class PcapPacketParser final : public SimpleUnitParser {
public:
    void setHeader(const quill::traceformats::TraceHeader& header) override;

protected:
    [[nodiscard]] quill::traceformats::Decoded parseUnit(
        std::span<const uint8_t> unit, quill::traceformats::TraceFrame& frame) override;

private:
    quill::traceformats::PcapPacketDecoder m_decoder{quill::traceformats::TraceHeader{}};
};

}  // namespace playback
