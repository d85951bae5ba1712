#include "core/playback/importer/AscLineFrameParser.h"

namespace playback {

void AscLineFrameParser::setHeader(const quill::traceformats::TraceHeader& header) {
    m_decoder = quill::traceformats::AscLineDecoder(header);
    m_line = header.headerLines;
}

quill::traceformats::Decoded AscLineFrameParser::followUnit(std::span<const uint8_t> unit,
                                                            quill::traceformats::TraceFrame& frame,
                                                            int64_t& startNs) {
    ++m_line;
    const std::string_view line(reinterpret_cast<const char*>(unit.data()), unit.size());
    const auto decoded = m_decoder.decode(line, frame);
    startNs = m_decoder.startNs();
    return decoded;
}

uint64_t AscLineFrameParser::placeOf(uint64_t) const { return m_line; }

}  // namespace playback
