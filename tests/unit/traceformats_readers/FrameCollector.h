#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "quill_traceformats/DamageLog.h"
#include "quill_traceformats/TraceFrame.h"
#include "quill_traceformats/UnitReader.h"

namespace quill::traceformats::test {

// A frame that owns its payload.
struct OwnedFrame {
    TraceFrame frame;
    std::vector<uint8_t> data;
};

// All that a trace yields when it is read to its end.
struct Collected {
    bool header = false;
    TraceHeader facts;
    std::vector<OwnedFrame> frames;
    uint64_t units = 0;
    uint64_t skipped = 0;
    uint64_t dropped = 0;
    std::vector<DamageLog::Entry> damage;
};

enum class Format { Blf, Asc, Pcap, Pcapng };

// Reads a file in memory; `unitsPerBatch` changes nothing but the cuts between batches.
[[nodiscard]] Collected collect(Format format, std::span<const uint8_t> bytes,
                                size_t unitsPerBatch = 100);

// Bytes of a file; empty when it cannot be opened.
[[nodiscard]] std::optional<std::vector<uint8_t>> wholeFile(const std::string& path);

// A corpus file beside the project; empty when it is not there.
[[nodiscard]] std::optional<std::vector<uint8_t>> corpusFile(const std::string& name);

}  // namespace quill::traceformats::test
