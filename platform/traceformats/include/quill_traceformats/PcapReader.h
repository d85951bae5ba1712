#pragma once

#include "quill_traceformats/SlicedInput.h"
#include "quill_traceformats/UnitReader.h"

namespace quill::traceformats {

// Cuts a PCAP file into packets; a unit is a record header with its packet. Both byte orders,
// microseconds, nanoseconds and the modified record header. The packet library's own loop is not
// used: it ends at the first damaged record and copies every packet.
class PcapReader final : public UnitReader {
public:
    explicit PcapReader(ByteSource& source) : m_input(source) {}

    [[nodiscard]] bool readHeader(TraceHeader& header) override;
    void nextUnits(UnitBatch& batch, size_t maximum) override;
    [[nodiscard]] bool atEnd() override { return m_input.exhausted(); }

private:
    [[nodiscard]] uint32_t word(std::span<const uint8_t> bytes, size_t offset) const;
    [[nodiscard]] bool plausible(std::span<const uint8_t> bytes) const;
    void findNextRecord(const char* reason);

    SlicedInput m_input;
    TraceHeader m_header;
    uint32_t m_largest = 0;  // captured bytes above this are a damaged length
    uint32_t m_lastSeconds = 0;
};

}  // namespace quill::traceformats
