#pragma once

#include <string_view>
#include <vector>

#include "quill_traceformats/Decoded.h"
#include "quill_traceformats/TraceFrame.h"
#include "quill_traceformats/UnitReader.h"

namespace quill::traceformats {

namespace asc {
class Cursor;
}

// Turns ASC lines into frames, in the file's order: relative times are added up over all events,
// and a trigger block starts time anew. Times count from startNs. A frame's data point into the
// decoder and are good until the next call.
class AscLineDecoder {
public:
    explicit AscLineDecoder(const TraceHeader& header);

    [[nodiscard]] Decoded decode(std::string_view line, TraceFrame& frame);
    // Start of the block that the last line stands in, since 1970; 0 when the file has no date.
    [[nodiscard]] int64_t startNs() const { return m_header.startNs; }

private:
    [[nodiscard]] Decoded untimedLine(std::string_view line);
    [[nodiscard]] static bool lossLine(std::string_view line, TraceFrame& frame);
    [[nodiscard]] Decoded flexRayLine(asc::Cursor& cursor, TraceFrame& frame);
    [[nodiscard]] Decoded classicLine(std::string_view channel, asc::Cursor& cursor,
                                      TraceFrame& frame);
    [[nodiscard]] Decoded fdLine(asc::Cursor& cursor, TraceFrame& frame);
    [[nodiscard]] Decoded linLine(std::string_view channel, asc::Cursor& cursor, TraceFrame& frame);
    [[nodiscard]] Decoded ethernetLine(asc::Cursor& cursor, TraceFrame& frame);
    [[nodiscard]] Decoded errorFrame(asc::Cursor& cursor, TraceFrame& frame) const;
    [[nodiscard]] bool identifier(std::string_view token, TraceFrame& frame) const;
    // Reads `count` payload bytes; false when the line has fewer.
    [[nodiscard]] bool payload(asc::Cursor& cursor, unsigned base, size_t count, TraceFrame& frame);

    TraceHeader m_header;
    unsigned m_base;
    uint64_t m_lastNs = 0;  // relative files: time of the event before
    std::vector<uint8_t> m_data;
};

}  // namespace quill::traceformats
