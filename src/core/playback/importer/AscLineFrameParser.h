#pragma once

#include "core/playback/importer/MutlipleUnitParser.h"
#include "quill_traceformats/AscLineDecoder.h"

namespace playback {

// ASC lines: relative times add up over all of them, and trigger blocks start time anew.
class AscLineFrameParser final : public MutlipleUnitParser {
public:
    void setHeader(const quill::traceformats::TraceHeader& header) override;

protected:
    [[nodiscard]] quill::traceformats::Decoded followUnit(std::span<const uint8_t> unit,
                                                          quill::traceformats::TraceFrame& frame,
                                                          int64_t& startNs) override;
    // Number of the line.
    [[nodiscard]] uint64_t placeOf(uint64_t bytePosition) const override;

private:
    quill::traceformats::AscLineDecoder m_decoder{quill::traceformats::TraceHeader{}};
    uint64_t m_line = 0;
};

}  // namespace playback
