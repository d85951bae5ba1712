#include "core/playback/importer/PcapPacketParser.h"

namespace playback {

void PcapPacketParser::setHeader(const quill::traceformats::TraceHeader& header) {
    m_decoder = quill::traceformats::PcapPacketDecoder(header);
}

quill::traceformats::Decoded PcapPacketParser::parseUnit(std::span<const uint8_t> unit,
                                                         quill::traceformats::TraceFrame& frame) {
    return m_decoder.decode(unit, frame);
}

}  // namespace playback
