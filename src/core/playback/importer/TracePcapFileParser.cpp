#include "core/playback/importer/TracePcapFileParser.h"

#include "quill_traceformats/PcapReader.h"

namespace playback {

TracePcapFileParser::TracePcapFileParser(std::wstring path, uint32_t option)
    : TraceFileParser(std::move(path), L"rb", option) {}

std::optional<quill::traceformats::TraceHeader> TracePcapFileParser::parseHeader() {
    return readHeaderWith(std::make_unique<quill::traceformats::PcapReader>(source()));
}

void TracePcapFileParser::parseNextUnits(quill::traceformats::UnitBatch& batch) {
    fillBatch(batch);
}

bool TracePcapFileParser::atEnd() { return readerAtEnd(); }

}  // namespace playback
