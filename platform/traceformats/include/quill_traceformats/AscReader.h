#pragma once

#include "quill_traceformats/SlicedInput.h"
#include "quill_traceformats/UnitReader.h"

namespace quill::traceformats {

// Cuts an ASC file into lines without their line ends. Every line behind the header becomes a unit:
// relative times must be added up over all events, frames or not.
class AscReader final : public UnitReader {
public:
    explicit AscReader(ByteSource& source) : m_input(source) {}

    // True when the file begins with header lines or with an event.
    [[nodiscard]] bool readHeader(TraceHeader& header) override;
    void nextUnits(UnitBatch& batch, size_t maximum) override;
    [[nodiscard]] bool atEnd() override { return m_input.exhausted(); }

    // Longest line that is read; an Ethernet frame of 64 KiB in hexadecimal fits.
    static constexpr size_t kLongestLine = 256 * 1024;

private:
    // Length of the next line and of its line end; nothing at the end of the file. A line that is
    // too long answers its first part with an end of 0.
    struct LineSpan {
        size_t text = 0;
        size_t end = 0;
    };
    [[nodiscard]] LineSpan nextLine();
    void skipLongLine();

    SlicedInput m_input;
    uint64_t m_lines = 0;
};

}  // namespace quill::traceformats
