#pragma once

#include "quill_traceformats/SlicedInput.h"
#include "quill_traceformats/UnitReader.h"

namespace quill::traceformats {

// Cuts a PCAPNG file into blocks: sections, interfaces and packets become units in the file's
// order, so that whoever decodes them sees an interface before its packets. Other blocks are
// skipped. Interfaces of one section may differ in link type, which the packet library refuses.
class PcapngReader final : public UnitReader {
public:
    explicit PcapngReader(ByteSource& source) : m_input(source) {}

    [[nodiscard]] bool readHeader(TraceHeader& header) override;
    void nextUnits(UnitBatch& batch, size_t maximum) override;
    [[nodiscard]] bool atEnd() override { return m_input.exhausted(); }

    static constexpr uint32_t kSection = 0x0A0D0D0A;
    static constexpr uint32_t kInterface = 1;
    static constexpr uint32_t kOldPacket = 2;
    static constexpr uint32_t kSimplePacket = 3;
    static constexpr uint32_t kEnhancedPacket = 6;

private:
    [[nodiscard]] bool plausible(std::span<const uint8_t> bytes) const;
    void findNextBlock(const char* reason);
    [[nodiscard]] bool takeBlock(UnitBatch& batch, size_t& count);

    SlicedInput m_input;
    bool m_bigEndian = false;
};

}  // namespace quill::traceformats
