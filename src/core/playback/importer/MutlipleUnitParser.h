#pragma once

#include "core/playback/importer/StandardFrameParser.h"

namespace playback {

// Base of the parsers that need several units for a frame: those before it tell what its times, its
// bus or its byte order are, so every unit must be seen, in the file's order.
class MutlipleUnitParser : public StandardFrameParser {
public:
    void parseUnits(const quill::traceformats::UnitBatch& units,
                    tracestorage::FrameBatch& frames) final;

protected:
    // Reads one unit, changes what later units mean, and answers where its times count from.
    [[nodiscard]] virtual quill::traceformats::Decoded followUnit(
        std::span<const uint8_t> unit, quill::traceformats::TraceFrame& frame,
        int64_t& startNs) = 0;
    // Place of a unit as users look for it; the byte position unless a format counts otherwise.
    [[nodiscard]] virtual uint64_t placeOf(uint64_t bytePosition) const { return bytePosition; }
};

}  // namespace playback
