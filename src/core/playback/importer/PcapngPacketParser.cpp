#include "core/playback/importer/PcapngPacketParser.h"

namespace playback {

// Each section block brings its own byte order, so the file's header has nothing to add.
void PcapngPacketParser::setHeader(const quill::traceformats::TraceHeader&) {}

quill::traceformats::Decoded PcapngPacketParser::followUnit(std::span<const uint8_t> unit,
                                                            quill::traceformats::TraceFrame& frame,
                                                            int64_t& startNs) {
    startNs = 0;
    return m_decoder.decode(unit, frame);
}

}  // namespace playback
