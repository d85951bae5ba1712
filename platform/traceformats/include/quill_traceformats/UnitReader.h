#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "quill_traceformats/DamageLog.h"
#include "quill_traceformats/RawUnit.h"

namespace quill::traceformats {

// Facts of a file's header that its units need to become frames.
struct TraceHeader {
    int64_t startNs = 0;  // start of measurement since 1970-01-01; 0 when the file tells none
    bool bigEndian = false;
    // ASC
    bool decimal = false;
    bool relativeTimes = false;
    uint64_t headerLines = 0;  // lines before the first unit
    // PCAP
    bool nanoseconds = false;
    uint32_t recordHeaderBytes = 16;
    uint32_t linkType = 0;
    uint32_t snapLength = 0;
    // BLF, as written; after a crash of the writer they are stale
    uint32_t objectCount = 0;
    uint32_t apiNumber = 0;
};

// Cuts a trace file into units. One thread; never throws on bad bytes.
class UnitReader {
public:
    UnitReader() = default;
    virtual ~UnitReader() = default;
    UnitReader(const UnitReader&) = delete;
    UnitReader& operator=(const UnitReader&) = delete;

    // Reads the file's header; false when the file is not of the format.
    [[nodiscard]] virtual bool readHeader(TraceHeader& header) = 0;
    // Appends up to `maximum` units; fewer only when bytes or units run short for the moment, none
    // at the end. The time of one call is bounded.
    virtual void nextUnits(UnitBatch& batch, size_t maximum) = 0;
    [[nodiscard]] virtual bool atEnd() = 0;
    [[nodiscard]] const DamageLog& damage() const { return m_damage; }

protected:
    DamageLog m_damage;
};

}  // namespace quill::traceformats
