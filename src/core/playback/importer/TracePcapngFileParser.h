#pragma once

#include "core/playback/importer/TraceFileParser.h"

namespace playback {

// PCAPNG: a unit is a section, interface or packet block.
class TracePcapngFileParser final : public TraceFileParser {
public:
    explicit TracePcapngFileParser(std::wstring path);

    [[nodiscard]] std::optional<quill::traceformats::TraceHeader> parseHeader() override;
    void parseNextUnits(quill::traceformats::UnitBatch& batch) override;
    [[nodiscard]] bool atEnd() override;
    [[nodiscard]] const char* formatName() const override { return "PCAPNG"; }
};

}  // namespace playback
