#include "core/playback/importer/SimpleUnitParser.h"

namespace playback {

void SimpleUnitParser::parseUnits(const quill::traceformats::UnitBatch& units,
                                  tracestorage::FrameBatch& frames) {
    quill::traceformats::TraceFrame frame;
    for (const auto& unit : units) {
        const auto decoded = parseUnit(unit.bytes(), frame);
        take(decoded, frame, m_startNs, unit.position(), frames);
    }
}

}  // namespace playback
