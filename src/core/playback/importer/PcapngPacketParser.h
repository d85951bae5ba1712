#pragma once

#include "core/playback/importer/MutlipleUnitParser.h"
#include "quill_traceformats/PcapngBlockDecoder.h"

namespace playback {

// PCAPNG blocks: sections and interfaces tell what the packets behind them are.
class PcapngPacketParser final : public MutlipleUnitParser {
public:
    void setHeader(const quill::traceformats::TraceHeader& header) override;

protected:
    [[nodiscard]] quill::traceformats::Decoded followUnit(std::span<const uint8_t> unit,
                                                          quill::traceformats::TraceFrame& frame,
                                                          int64_t& startNs) override;

private:
    quill::traceformats::PcapngBlockDecoder m_decoder;
};

}  // namespace playback
