#pragma once

#include "core/playback/importer/StandardFrameParser.h"

namespace playback {

// Base of the parsers whose every unit stands for itself: one unit, at most one frame, and no unit
// changes what another one means.
class SimpleUnitParser : public StandardFrameParser {
public:
    void parseUnits(const quill::traceformats::UnitBatch& units,
                    tracestorage::FrameBatch& frames) final;

protected:
    // Reads one unit; the frame's time counts from startNs.
    [[nodiscard]] virtual quill::traceformats::Decoded parseUnit(
        std::span<const uint8_t> unit, quill::traceformats::TraceFrame& frame) = 0;
    int64_t m_startNs = 0;
};

}  // namespace playback
