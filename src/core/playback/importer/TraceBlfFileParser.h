#pragma once

#include "core/playback/importer/TraceFileParser.h"

namespace playback {

// BLF: a unit is an object, whichever container it lies in.
class TraceBlfFileParser final : public TraceFileParser {
public:
    TraceBlfFileParser(std::wstring path, uint32_t option);

    [[nodiscard]] std::optional<quill::traceformats::TraceHeader> parseHeader() override;
    void parseNextUnits(quill::traceformats::UnitBatch& batch) override;
    [[nodiscard]] bool atEnd() override;
    [[nodiscard]] const char* formatName() const override { return "BLF"; }
};

}  // namespace playback
