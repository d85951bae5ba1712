#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/tracestorage/ImportStorage.h"
#include "quill_traceformats/Decoded.h"
#include "quill_traceformats/TraceFrame.h"
#include "quill_traceformats/UnitReader.h"

namespace playback {

// Base of the frame parsers: turns batches of units into batches of stored frames. One thread.
class StandardFrameParser {
public:
    StandardFrameParser() = default;
    virtual ~StandardFrameParser() = default;
    StandardFrameParser(const StandardFrameParser&) = delete;
    StandardFrameParser& operator=(const StandardFrameParser&) = delete;

    // Facts of the file that its units need; called once, before the first batch.
    virtual void setHeader(const quill::traceformats::TraceHeader& header) = 0;
    // Appends the frames of the units in their order. Units without a frame are counted by kind,
    // units that cannot be read are dropped, the first of each reason with a log line.
    virtual void parseUnits(const quill::traceformats::UnitBatch& units,
                            tracestorage::FrameBatch& frames) = 0;

    [[nodiscard]] uint64_t dropped() const { return m_dropped; }
    [[nodiscard]] std::vector<tracestorage::SkippedKind> skipped() const;
    // What was dropped and where, at most 1000 entries.
    [[nodiscard]] const std::vector<tracestorage::ImportNote>& notes() const { return m_notes; }

protected:
    // Files one decoded unit: stores its frame or counts what it was. The frame's time counts from
    // `startNs` since 1970.
    void take(const quill::traceformats::Decoded& decoded,
              const quill::traceformats::TraceFrame& frame, int64_t startNs, uint64_t position,
              tracestorage::FrameBatch& frames);
    // Text for a kind with a number; formats know names for their numbers.
    [[nodiscard]] virtual std::string kindText(const char* text, uint32_t number) const;

private:
    using Kind = std::pair<const char*, uint32_t>;
    void drop(const Kind& reason, uint64_t position);

    uint64_t m_dropped = 0;
    std::map<Kind, uint64_t> m_skipped;
    std::map<Kind, uint64_t> m_reasons;
    std::vector<tracestorage::ImportNote> m_notes;
};

}  // namespace playback
