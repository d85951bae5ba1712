#include "core/playback/importer/BlfObjectFrameParser.h"

#include <string_view>

namespace playback {

void BlfObjectFrameParser::setHeader(const quill::traceformats::TraceHeader& header) {
    m_startNs = header.startNs;
}

quill::traceformats::Decoded BlfObjectFrameParser::parseUnit(
    std::span<const uint8_t> unit, quill::traceformats::TraceFrame& frame) {
    return m_decoder.decode(unit, frame);
}

std::string BlfObjectFrameParser::kindText(const char* text, uint32_t number) const {
    const char* name = quill::traceformats::blfTypeName(number);
    if (name != nullptr && std::string_view(text) == "object type") return name;
    if (number == 0 || std::string_view(text) == "object type") {
        return SimpleUnitParser::kindText(text, number);
    }
    return std::string(text) + " (" + (name != nullptr ? name : std::to_string(number)) + ")";
}

}  // namespace playback
