#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rvconverter/RecordHandle.h"

namespace rv {

// Counters of one conversion. Each record that is accepted ends as written, dropped or skipped.
struct ConvertStatistics {
    uint64_t accepted = 0;   // entries handed over, empty ones included
    uint64_t skipped = 0;    // entries without a record, and records that the format cannot hold
    uint64_t converted = 0;  // records turned into the output format
    uint64_t written = 0;    // records whose bytes are in the file
    uint64_t dropped = 0;    // records lost: input overrun, or the file could not be written
    uint64_t bytes = 0;      // size of the file
};

// One trace file in the making. Two loops run on threads of the caller, both until the end of input
// was signalled and all is done. The order of the virtual operations is the library's interface.
class ConvertContext {
public:
    // Converts accepted records in memory; returns after endOfInput() when none is left.
    virtual void convertFrames() = 0;

    // Records accepted and not yet converted.
    [[nodiscard]] virtual uint64_t pendingRecords() const = 0;

    // Takes the list whole. Never waits for conversion: beyond the bound of waiting input the list
    // is dropped, counted and marked as a loss in the file.
    virtual void acceptRecords(std::vector<RecordHandle>&& records) = 0;

    // No more records will follow.
    virtual void endOfInput() = 0;

    // Writes converted frames to the file; returns when convertFrames() has ended and all is
    // written. A write that fails costs the frames of that piece and never stops the loop.
    virtual void persistFrames() = 0;

    // Frames that are in the file.
    [[nodiscard]] virtual uint64_t exportedFrames() const = 0;

    [[nodiscard]] virtual ConvertStatistics statistics() const = 0;

    // Ends loops that still run, completes the file and releases it. May be called twice.
    virtual void close() = 0;

    // First failure of this conversion ("write: No space left on device"); empty without one.
    [[nodiscard]] virtual std::string errorText() const = 0;

    virtual ~ConvertContext() = default;
};

}  // namespace rv
