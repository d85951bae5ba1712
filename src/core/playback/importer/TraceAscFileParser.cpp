#include "core/playback/importer/TraceAscFileParser.h"

#include "quill_traceformats/AscReader.h"

namespace playback {

TraceAscFileParser::TraceAscFileParser(std::wstring path, uint32_t option)
    : TraceFileParser(std::move(path), L"r", option) {}

std::optional<quill::traceformats::TraceHeader> TraceAscFileParser::parseHeader() {
    return readHeaderWith(std::make_unique<quill::traceformats::AscReader>(source()));
}

void TraceAscFileParser::parseNextUnits(quill::traceformats::UnitBatch& batch) { fillBatch(batch); }

bool TraceAscFileParser::atEnd() { return readerAtEnd(); }

}  // namespace playback
