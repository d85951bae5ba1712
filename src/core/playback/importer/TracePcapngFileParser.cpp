#include "core/playback/importer/TracePcapngFileParser.h"

#include "quill_traceformats/PcapngReader.h"

namespace playback {

TracePcapngFileParser::TracePcapngFileParser(std::wstring path)
    : TraceFileParser(std::move(path), L"rb") {}

std::optional<quill::traceformats::TraceHeader> TracePcapngFileParser::parseHeader() {
    return readHeaderWith(std::make_unique<quill::traceformats::PcapngReader>(source()));
}

void TracePcapngFileParser::parseNextUnits(quill::traceformats::UnitBatch& batch) {
    fillBatch(batch);
}

bool TracePcapngFileParser::atEnd() { return readerAtEnd(); }

}  // namespace playback
