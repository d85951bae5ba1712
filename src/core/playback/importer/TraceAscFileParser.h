#pragma once

#include "core/playback/importer/TraceFileParser.h"

namespace playback {

// ASC: a unit is a line.
class TraceAscFileParser final : public TraceFileParser {
public:
    TraceAscFileParser(std::wstring path, uint32_t option);

    [[nodiscard]] std::optional<quill::traceformats::TraceHeader> parseHeader() override;
    void parseNextUnits(quill::traceformats::UnitBatch& batch) override;
    [[nodiscard]] bool atEnd() override;
    [[nodiscard]] const char* formatName() const override { return "ASC"; }
};

}  // namespace playback
