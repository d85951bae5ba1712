#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "quill_traceformats/ByteSource.h"
#include "quill_traceformats/RawUnit.h"

namespace quill::traceformats {

// Reads a source into shared buffers and cuts units out of them without a copy. Only the incomplete
// piece at a buffer's end is copied, into the next buffer.
class SlicedInput {
public:
    explicit SlicedInput(ByteSource& source, size_t bufferBytes = kBufferBytes);
    ~SlicedInput();
    SlicedInput(const SlicedInput&) = delete;
    SlicedInput& operator=(const SlicedInput&) = delete;

    // All bytes at hand from the read position on, at least `wanted` unless the source ends before.
    // Valid until the next call of any operation.
    [[nodiscard]] std::span<const uint8_t> ahead(size_t wanted) {
        if (m_end - m_begin < wanted) refill(wanted);
        return {m_buffer->bytes() + m_begin, m_end - m_begin};
    }
    // Makes the next `length` bytes, which must be at hand, a unit and moves behind them.
    void cut(size_t length, UnitBatch& batch) {
        batch.append(*m_buffer, m_begin, length);
        m_begin += length;
    }
    // Moves on, beyond what is at hand too; the bytes skipped, fewer at the end of the source.
    uint64_t skip(uint64_t length);
    [[nodiscard]] uint64_t position() const { return m_buffer->origin() + m_begin; }
    // True when not one byte follows.
    [[nodiscard]] bool exhausted() { return ahead(1).empty(); }

    static constexpr size_t kBufferBytes = 256 * 1024;

private:
    void refill(size_t wanted);

    ByteSource& m_source;
    size_t m_bufferBytes;
    UnitBuffer* m_buffer;
    size_t m_begin = 0;
    size_t m_end = 0;
};

}  // namespace quill::traceformats
