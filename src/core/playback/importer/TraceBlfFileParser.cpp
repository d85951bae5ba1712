#include "core/playback/importer/TraceBlfFileParser.h"

#include "quill_traceformats/BlfReader.h"

namespace playback {

TraceBlfFileParser::TraceBlfFileParser(std::wstring path, uint32_t option)
    : TraceFileParser(std::move(path), L"rb", option) {}

std::optional<quill::traceformats::TraceHeader> TraceBlfFileParser::parseHeader() {
    return readHeaderWith(std::make_unique<quill::traceformats::BlfReader>(source()));
}

void TraceBlfFileParser::parseNextUnits(quill::traceformats::UnitBatch& batch) { fillBatch(batch); }

bool TraceBlfFileParser::atEnd() { return readerAtEnd(); }

}  // namespace playback
