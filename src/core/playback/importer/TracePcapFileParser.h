#pragma once

#include "core/playback/importer/TraceFileParser.h"

namespace playback {

// PCAP: a unit is a packet with its record header.
class TracePcapFileParser final : public TraceFileParser {
public:
    TracePcapFileParser(std::wstring path, uint32_t option);

    [[nodiscard]] std::optional<quill::traceformats::TraceHeader> parseHeader() override;
    void parseNextUnits(quill::traceformats::UnitBatch& batch) override;
    [[nodiscard]] bool atEnd() override;
    [[nodiscard]] const char* formatName() const override { return "PCAP"; }
};

}  // namespace playback
