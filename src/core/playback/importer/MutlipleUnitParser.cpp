#include "core/playback/importer/MutlipleUnitParser.h"

namespace playback {

void MutlipleUnitParser::parseUnits(const quill::traceformats::UnitBatch& units,
                                    tracestorage::FrameBatch& frames) {
    quill::traceformats::TraceFrame frame;
    int64_t startNs = 0;
    for (const auto& unit : units) {
        const auto decoded = followUnit(unit.bytes(), frame, startNs);
        take(decoded, frame, startNs, placeOf(unit.position()), frames);
    }
}

}  // namespace playback
