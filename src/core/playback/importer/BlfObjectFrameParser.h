#pragma once

#include "core/playback/importer/SimpleUnitParser.h"
#include "quill_traceformats/BlfFrameDecoder.h"

namespace playback {

// BLF objects: every one has its own header with kind and time stamp.
class BlfObjectFrameParser final : public SimpleUnitParser {
public:
    void setHeader(const quill::traceformats::TraceHeader& header) override;

protected:
    [[nodiscard]] quill::traceformats::Decoded parseUnit(
        std::span<const uint8_t> unit, quill::traceformats::TraceFrame& frame) override;
    [[nodiscard]] std::string kindText(const char* text, uint32_t number) const override;

private:
    quill::traceformats::BlfFrameDecoder m_decoder;
};

}  // namespace playback
