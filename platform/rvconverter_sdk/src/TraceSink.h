#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Block.h"
#include "BlockPipeline.h"
#include "quill_traceformats/TraceFrame.h"

namespace rv {

// One output format: how events become bytes, how bytes are packed, how they reach the file. What
// the conversion loop calls is const; the file operations belong to the persistence loop.
class TraceSink {
public:
    virtual ~TraceSink() = default;

    // Creates the file, readable from then on; false with a reason and no file otherwise.
    [[nodiscard]] virtual bool create(const std::string& utf8Path, uint64_t startNs,
                                      std::string& reason) = 0;

    // Bytes at which a block is handed on.
    [[nodiscard]] virtual size_t blockSize() const = 0;

    // Room that encode() takes at most for the frame; 0 when the format cannot hold it.
    [[nodiscard]] virtual size_t roomFor(const quill::traceformats::TraceFrame& frame) const = 0;

    // Writes the event, its time since the start of measurement, to the front of `out`, which has
    // as many bytes as roomFor() said, and returns how many were written.
    virtual size_t encode(const quill::traceformats::TraceFrame& frame,
                          std::span<uint8_t> out) const = 0;

    // Packers for the threads of the pipeline.
    [[nodiscard]] virtual std::vector<BlockPipeline::Pack> makePackers() const = 0;

    // Packs a small block on the spot.
    virtual void packPlain(Block& block) const = 0;

    // Writes a packed block whole or not at all.
    [[nodiscard]] virtual bool write(const Block& block) = 0;

    // Writes what ends the file and closes it; false when that fails.
    virtual bool complete() = 0;

    [[nodiscard]] virtual uint64_t fileSize() const = 0;
    [[nodiscard]] virtual std::string errorText() const = 0;
};

}  // namespace rv
